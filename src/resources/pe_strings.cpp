#include "resources/pe_strings.hpp"

#include <algorithm>
#include <string>
#include <utility>

#include "orvogeneric/satellite.hpp"
#include "platform/file.hpp"

namespace orvo::resources {

namespace {

constexpr std::uint32_t kStringType = 6;  // RT_STRING
constexpr std::uint32_t kHighBit = 0x80000000U;
constexpr std::uint32_t kLastBlock = 4096;  // block b holds ids (b-1)*16 .. (b-1)*16+15
constexpr std::size_t kStringsPerBlock = 16;

struct Failed {
  PeFailure failure;
  const char* detail;
};

[[noreturn]] void fail(PeFailure failure, const char* detail) { throw Failed{failure, detail}; }

// Little-endian reads from a span whose every access is checked first.
class Bytes {
 public:
  explicit Bytes(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}
  [[nodiscard]] std::size_t size() const noexcept { return bytes_.size(); }
  [[nodiscard]] bool has(std::uint64_t offset, std::uint64_t count) const noexcept {
    return offset <= bytes_.size() && count <= bytes_.size() - offset;
  }
  [[nodiscard]] std::uint16_t u16(std::uint64_t offset, PeFailure failure,
                                  const char* detail) const {
    if (!has(offset, 2)) fail(failure, detail);
    return static_cast<std::uint16_t>(bytes_[offset] | (bytes_[offset + 1] << 8));
  }
  [[nodiscard]] std::uint32_t u32(std::uint64_t offset, PeFailure failure,
                                  const char* detail) const {
    if (!has(offset, 4)) fail(failure, detail);
    return static_cast<std::uint32_t>(bytes_[offset]) |
           (static_cast<std::uint32_t>(bytes_[offset + 1]) << 8) |
           (static_cast<std::uint32_t>(bytes_[offset + 2]) << 16) |
           (static_cast<std::uint32_t>(bytes_[offset + 3]) << 24);
  }
  [[nodiscard]] Bytes slice(std::uint64_t offset, std::uint64_t count) const {
    return Bytes(bytes_.subspan(static_cast<std::size_t>(offset), static_cast<std::size_t>(count)));
  }

 private:
  std::span<const std::uint8_t> bytes_;
};

struct Section {
  std::uint32_t address = 0;  // relative virtual address
  std::uint32_t rawSize = 0;
  std::uint32_t rawOffset = 0;
};

// The file bytes behind count bytes at a relative virtual address, or nullopt when they are not
// all inside one section's data. Bytes a section only has in memory (beyond its raw data) are
// not served: a resource compiler never places directories or strings there.
std::optional<Bytes> atAddress(const Bytes& file, const std::vector<Section>& sections,
                               std::uint32_t address, std::uint64_t count) {
  for (const Section& s : sections) {
    if (address < s.address) continue;
    const std::uint64_t into = address - s.address;
    if (into >= s.rawSize || count > s.rawSize - into) continue;
    return file.slice(std::uint64_t{s.rawOffset} + into, count);
  }
  return std::nullopt;
}

// One level of the resource tree: its entries' 8-byte records, checked to lie in the section.
struct Directory {
  std::uint64_t first = 0;
  std::uint32_t count = 0;
};

Directory directoryAt(const Bytes& region, std::uint64_t offset) {
  constexpr const char* kWhere = "a resource directory lies outside the resource section";
  const std::uint32_t named = region.u16(offset + 12, PeFailure::Malformed, kWhere);
  const std::uint32_t ids = region.u16(offset + 14, PeFailure::Malformed, kWhere);
  const Directory d{offset + 16, named + ids};
  if (!region.has(d.first, std::uint64_t{d.count} * 8)) fail(PeFailure::Malformed, kWhere);
  return d;
}

}  // namespace

// Collects strings block by block; the table is ordered once at the end.
class TableBuilder {
 public:
  explicit TableBuilder(std::size_t poolLimit) : poolLimit_(poolLimit) {}

  void addBlock(std::uint16_t language, std::uint32_t block, const Bytes& data) {
    std::uint64_t at = 0;
    for (std::size_t i = 0; i < kStringsPerBlock; ++i) {
      const std::uint32_t length = data.u16(at, PeFailure::Malformed,
                                            "a string table block ends before its sixteen strings");
      at += 2;
      if (length == 0) continue;
      constexpr const char* kPast = "a string runs past the end of its string table block";
      if (!data.has(at, std::uint64_t{length} * 2)) fail(PeFailure::Malformed, kPast);
      // Blocks that share their bytes could make the table grow far beyond the file.
      if (length > poolLimit_ - table_.pool_.size()) {
        fail(PeFailure::Malformed, "string table blocks overlap");
      }
      const auto offset = static_cast<std::uint32_t>(table_.pool_.size());
      for (std::uint32_t k = 0; k < length; ++k) {
        table_.pool_.push_back(static_cast<char16_t>(
            data.u16(at + std::uint64_t{k} * 2, PeFailure::Malformed, kPast)));
      }
      at += std::uint64_t{length} * 2;
      table_.entries_.push_back(StringTable::Entry{
          language, static_cast<std::uint16_t>((block - 1) * kStringsPerBlock + i), offset,
          length});
    }
  }

  StringTable finish(std::uint16_t machine, bool pe32Plus) {
    auto& entries = table_.entries_;
    const auto key = [](const StringTable::Entry& e) { return std::pair(e.language, e.id); };
    std::stable_sort(entries.begin(), entries.end(),
                     [&](const auto& a, const auto& b) { return key(a) < key(b); });
    // A block listed twice for a language: the first one listed is the one kept.
    entries.erase(std::unique(entries.begin(), entries.end(),
                              [&](const auto& a, const auto& b) { return key(a) == key(b); }),
                  entries.end());
    table_.machine_ = machine;
    table_.pe32Plus_ = pe32Plus;
    return std::move(table_);
  }

 private:
  StringTable table_;
  std::size_t poolLimit_;
};

namespace {

StringTable parse(const Bytes& file) {
  if (file.size() < 2 || file.u16(0, PeFailure::NotPeImage, "no MZ header") != 0x5A4D) {
    fail(PeFailure::NotPeImage, "no MZ header");
  }
  const std::uint64_t pe = file.u32(0x3C, PeFailure::Truncated, "the DOS header is cut short");
  if (file.u32(pe, PeFailure::Truncated, "the PE signature lies beyond the end of the file") !=
      0x00004550) {
    fail(PeFailure::NotPeImage, "no PE signature where the DOS header points");
  }
  constexpr const char* kCoff = "the COFF header is cut short";
  const std::uint16_t machine = file.u16(pe + 4, PeFailure::Truncated, kCoff);
  const std::uint32_t sectionCount = file.u16(pe + 6, PeFailure::Truncated, kCoff);
  const std::uint32_t optionalSize = file.u16(pe + 20, PeFailure::Truncated, kCoff);
  const std::uint64_t optional = pe + 24;
  if (!file.has(optional, optionalSize)) {
    fail(PeFailure::Truncated, "the optional header is cut short");
  }
  const Bytes header = file.slice(optional, optionalSize);
  constexpr const char* kShort = "the optional header is too small for its fields";
  const std::uint16_t magic = header.u16(0, PeFailure::Malformed, kShort);
  if (magic != 0x10B && magic != 0x20B) fail(PeFailure::Malformed, "unknown optional header");
  const bool pe32Plus = magic == 0x20B;
  // The loader maps the headers whole; a file shorter than they say cannot be loaded.
  if (header.u32(60, PeFailure::Malformed, kShort) > file.size()) {
    fail(PeFailure::Truncated, "the headers are cut short");
  }
  const std::uint64_t directories = pe32Plus ? 112 : 96;
  const std::uint32_t directoryCount = header.u32(directories - 4, PeFailure::Malformed, kShort);

  const std::uint64_t table = optional + optionalSize;
  constexpr const char* kSections = "the section table is cut short";
  if (!file.has(table, std::uint64_t{sectionCount} * 40)) {
    fail(PeFailure::Truncated, kSections);
  }
  std::vector<Section> sections;
  sections.reserve(sectionCount);
  for (std::uint32_t i = 0; i < sectionCount; ++i) {
    const std::uint64_t at = table + std::uint64_t{i} * 40;
    const Section s{file.u32(at + 12, PeFailure::Truncated, kSections),
                    file.u32(at + 16, PeFailure::Truncated, kSections),
                    file.u32(at + 20, PeFailure::Truncated, kSections)};
    if (!file.has(s.rawOffset, s.rawSize)) {
      fail(PeFailure::Truncated, "a section's data lies beyond the end of the file");
    }
    sections.push_back(s);
  }

  constexpr std::uint64_t kResourceEntry = 2;
  if (directoryCount <= kResourceEntry) fail(PeFailure::NoResources, "no resource directory");
  const std::uint64_t entry = directories + kResourceEntry * 8;
  const std::uint32_t resourceAddress = header.u32(entry, PeFailure::Malformed, kShort);
  const std::uint32_t resourceSize = header.u32(entry + 4, PeFailure::Malformed, kShort);
  if (resourceAddress == 0 || resourceSize == 0) {
    fail(PeFailure::NoResources, "no resource directory");
  }
  // Directory offsets count from the resource directory's start and may reach anywhere in the
  // rest of its section.
  std::optional<Bytes> region;
  for (const Section& s : sections) {
    if (resourceAddress >= s.address && resourceAddress - s.address < s.rawSize) {
      const std::uint32_t into = resourceAddress - s.address;
      region = file.slice(std::uint64_t{s.rawOffset} + into, s.rawSize - into);
      break;
    }
  }
  if (!region) fail(PeFailure::Malformed, "the resource directory lies outside every section");

  constexpr const char* kEntry = "a resource directory entry lies outside the resource section";
  TableBuilder builder(file.size() / 2);
  const Directory types = directoryAt(*region, 0);
  std::optional<std::uint32_t> strings;
  for (std::uint32_t i = 0; i < types.count && !strings; ++i) {
    const std::uint64_t at = types.first + std::uint64_t{i} * 8;
    if (region->u32(at, PeFailure::Malformed, kEntry) == kStringType) {
      strings = region->u32(at + 4, PeFailure::Malformed, kEntry);
    }
  }
  if (!strings) return builder.finish(machine, pe32Plus);
  if ((*strings & kHighBit) == 0) fail(PeFailure::Malformed, "the string type is not a directory");

  // Each language entry stands for eight bytes of its own in a file a compiler wrote; more
  // visits than that means directories shared between blocks, which could repeat the walk
  // without end.
  std::uint64_t visitsLeft = region->size() / 8;
  const Directory blocks = directoryAt(*region, *strings & ~kHighBit);
  for (std::uint32_t i = 0; i < blocks.count; ++i) {
    const std::uint64_t at = blocks.first + std::uint64_t{i} * 8;
    const std::uint32_t block = region->u32(at, PeFailure::Malformed, kEntry);
    const std::uint32_t target = region->u32(at + 4, PeFailure::Malformed, kEntry);
    // Named blocks and numbers beyond the 16-bit string ids are never reached by an id.
    if (block == 0 || block > kLastBlock) continue;
    if ((target & kHighBit) == 0) fail(PeFailure::Malformed, "a string block is not a directory");
    const Directory languages = directoryAt(*region, target & ~kHighBit);
    for (std::uint32_t j = 0; j < languages.count; ++j) {
      if (visitsLeft-- == 0) fail(PeFailure::Malformed, "resource directories are shared");
      const std::uint64_t entryAt = languages.first + std::uint64_t{j} * 8;
      const std::uint32_t language = region->u32(entryAt, PeFailure::Malformed, kEntry);
      const std::uint32_t dataEntry = region->u32(entryAt + 4, PeFailure::Malformed, kEntry);
      if (language > 0xFFFF) continue;
      if ((dataEntry & kHighBit) != 0) {
        fail(PeFailure::Malformed, "a language entry is a directory, not data");
      }
      constexpr const char* kData = "a resource data entry lies outside the resource section";
      const std::uint32_t address = region->u32(dataEntry, PeFailure::Malformed, kData);
      const std::uint32_t size =
          region->u32(std::uint64_t{dataEntry} + 4, PeFailure::Malformed, kData);
      const auto data = atAddress(file, sections, address, size);
      if (!data) fail(PeFailure::Malformed, "a string table block lies outside every section");
      builder.addBlock(static_cast<std::uint16_t>(language), block, *data);
    }
  }
  return builder.finish(machine, pe32Plus);
}

}  // namespace

std::string_view describe(PeFailure failure) {
  switch (failure) {
    case PeFailure::Unreadable:
      return "cannot be read";
    case PeFailure::NotPeImage:
      return "not a PE image";
    case PeFailure::Truncated:
      return "truncated PE image";
    case PeFailure::Malformed:
      return "malformed PE image";
    case PeFailure::NoResources:
      return "no resource section";
  }
  return "unknown failure";
}

std::optional<std::u16string_view> StringTable::find(std::uint16_t language,
                                                     std::uint16_t id) const {
  const auto it = std::lower_bound(
      entries_.begin(), entries_.end(), std::pair(language, id),
      [](const Entry& e, const auto& key) { return std::pair(e.language, e.id) < key; });
  if (it == entries_.end() || it->language != language || it->id != id) return std::nullopt;
  return text(*it);
}

std::vector<std::uint16_t> StringTable::languages() const {
  std::vector<std::uint16_t> out;
  for (const Entry& e : entries_) {
    if (out.empty() || out.back() != e.language) out.push_back(e.language);
  }
  return out;
}

std::span<const StringTable::Entry> StringTable::strings(std::uint16_t language) const {
  const auto [first, last] =
      std::equal_range(entries_.begin(), entries_.end(), Entry{language, 0, 0, 0},
                       [](const Entry& a, const Entry& b) { return a.language < b.language; });
  return {first, last};
}

PeStringsResult readPeStrings(std::span<const std::uint8_t> bytes) {
  PeStringsResult result;
  try {
    result.table = parse(Bytes(bytes));
  } catch (const Failed& f) {
    result.failure = f.failure;
    result.detail = f.detail;
  }
  return result;
}

PeStringsResult readPeStringsFile(std::u16string_view path) {
  PeStringsResult result;
  result.failure = PeFailure::Unreadable;
  platform::File file;
  if (!file.open(path, {platform::Access::Read, platform::Disposition::OpenExisting,
                        platform::Share::Read, true})) {
    result.detail = "cannot be opened (Windows error " + std::to_string(file.lastError()) + ")";
    return result;
  }
  const auto size = file.size();
  if (!size) {
    result.detail = "its size cannot be read";
    return result;
  }
  if (*size > kMaxSatelliteBytes) {
    result.detail = "larger than any satellite library";
    return result;
  }
  std::vector<std::uint8_t> bytes(static_cast<std::size_t>(*size));
  std::size_t filled = 0;
  while (filled < bytes.size()) {
    const std::int64_t n = file.read(std::span(bytes).subspan(filled));
    if (n < 0) {
      result.detail = "reading failed (Windows error " + std::to_string(file.lastError()) + ")";
      return result;
    }
    if (n == 0) break;  // shrank while being read: what was read is the file
    filled += static_cast<std::size_t>(n);
  }
  bytes.resize(filled);
  return readPeStrings(bytes);
}

}  // namespace orvo::resources

namespace orvo {

std::optional<std::vector<SatelliteString>> SatelliteStrings(const String& file, String* failure) {
  const auto result = resources::readPeStringsFile(file);
  if (!result) {
    if (failure != nullptr) {
      *failure = fromUtf8(std::string(resources::describe(result.failure)) + ": " + result.detail);
    }
    return std::nullopt;
  }
  std::vector<SatelliteString> out;
  out.reserve(result.table->entries().size());
  for (const auto& e : result.table->entries()) {
    out.push_back(SatelliteString{e.language, e.id, String(result.table->text(e))});
  }
  return out;
}

}  // namespace orvo
