#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// The string tables of a satellite library, read from the bytes of its PE image rather than by
// loading it: no code of the file ever runs, and the same reader works on every platform. Every
// offset, count and relative address in the file is checked against the bytes at hand before it
// is followed.
namespace orvo::resources {

// Why a file gives no string table.
enum class PeFailure : std::uint8_t {
  Unreadable,   // the file could not be opened or read
  NotPeImage,   // no MZ header, or no PE signature where the header points
  Truncated,    // the headers or sections claim bytes beyond the end of the file
  Malformed,    // a structure points outside its section, or contradicts itself
  NoResources,  // a well-formed image without a resource section
};

// A short English text for a failure ("not a PE image", ...).
std::string_view describe(PeFailure failure);

// Every string of every language in one image, held in one pool of UTF-16 code units.
class StringTable {
 public:
  struct Entry {
    std::uint16_t language = 0;  // the LANGID the resource compiler recorded
    std::uint16_t id = 0;
    std::uint32_t offset = 0;  // into the pool
    std::uint32_t length = 0;  // code units, never 0: an empty slot is a missing string
  };

  // The text of one string in one language; nullopt when that language has no such string.
  [[nodiscard]] std::optional<std::u16string_view> find(std::uint16_t language,
                                                        std::uint16_t id) const;
  // The languages that have at least one string table block, ascending.
  [[nodiscard]] std::vector<std::uint16_t> languages() const;
  // All strings, ordered by language then id.
  [[nodiscard]] std::span<const Entry> entries() const noexcept { return entries_; }
  // The strings of one language, ordered by id.
  [[nodiscard]] std::span<const Entry> strings(std::uint16_t language) const;
  [[nodiscard]] std::u16string_view text(const Entry& entry) const {
    return std::u16string_view(pool_).substr(entry.offset, entry.length);
  }

  // The image's COFF machine (0x14C i386, 0x8664 x86-64, ...) and whether its optional header
  // is the 64-bit form: a 32-bit process can load only a PE32 satellite, the caller decides.
  [[nodiscard]] std::uint16_t machine() const noexcept { return machine_; }
  [[nodiscard]] bool pe32Plus() const noexcept { return pe32Plus_; }

 private:
  friend class TableBuilder;
  std::u16string pool_;
  std::vector<Entry> entries_;
  std::uint16_t machine_ = 0;
  bool pe32Plus_ = false;
};

// A table, or why there is none (with a detail for people: which structure failed).
struct PeStringsResult {
  std::optional<StringTable> table;
  PeFailure failure = PeFailure::Malformed;
  std::string detail;
  [[nodiscard]] explicit operator bool() const noexcept { return table.has_value(); }
};

// Reads the string tables of the image in bytes.
PeStringsResult readPeStrings(std::span<const std::uint8_t> bytes);

// Reads the file at path (either separator) whole, then its string tables. Files larger than
// kMaxSatelliteBytes are refused as Unreadable without being read.
inline constexpr std::int64_t kMaxSatelliteBytes = std::int64_t{1} << 30;
PeStringsResult readPeStringsFile(std::u16string_view path);

}  // namespace orvo::resources
