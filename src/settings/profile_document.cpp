#include "settings/profile_document.hpp"

#include <algorithm>
#include <bit>
#include <climits>
#include <span>
#include <utility>

#include "platform/codepage.hpp"
#include "text/ascii_run.hpp"
#include "text/line_scan.hpp"

namespace orvo::settings::privateprofile::detail {

namespace {

bool isDoubleByte(std::uint32_t cp) noexcept {
  return cp == 932 || cp == 936 || cp == 949 || cp == 950;
}

// Below this the index is always built: what it costs is small beside any process.
constexpr std::size_t kAlwaysIndexed = std::size_t{64} << 10;

// FNV leaves names that differ in their last characters close together in the high bits the
// table's slot is taken from: every bit is mixed into every other before the slot is chosen.
std::uint32_t fold(std::uint64_t h) noexcept {
  h ^= h >> 33;
  h *= 0xFF51AFD7ED558CCDULL;
  h ^= h >> 33;
  h *= 0xC4CEB9FE1A85EC53ULL;
  h ^= h >> 33;
  return static_cast<std::uint32_t>(h);
}

// Keys of the same name in different sections are told apart by their section's number.
std::uint32_t slotHash(std::uint64_t nameHash, std::size_t section) noexcept {
  return fold(nameHash ^ (section * 0x9E3779B97F4A7C15ULL));
}

}  // namespace

Document::Document(std::string raw, std::uint32_t ansiCodePage)
    : raw_(std::move(raw)), acp_(ansiCodePage) {
  dependsOnCodePage_ =
      !text::allAscii(reinterpret_cast<const std::uint8_t*>(raw_.data()), raw_.size());
  const auto* b = reinterpret_cast<const unsigned char*>(raw_.data());
  if (raw_.size() >= 2 && b[0] == 0xFF && b[1] == 0xFE) {
    encoding_ = Encoding::Utf16Le;
    bom_ = 2;
  } else if (raw_.size() >= 2 && b[0] == 0xFE && b[1] == 0xFF) {
    encoding_ = Encoding::Utf16Be;
    bom_ = 2;
  } else if (raw_.size() >= 3 && b[0] == 0xEF && b[1] == 0xBB && b[2] == 0xBF) {
    encoding_ = Encoding::Utf8;
    bom_ = 3;
  }
  if (encoding_ == Encoding::Ansi && isDoubleByte(acp_) && dependsOnCodePage_) {
    // A trail byte of a double-byte page can be "[", "]" or "\\": such a file is read as the
    // platform reads it, converted first. Its line ends are single bytes all the same.
    decodeByLines();
  } else {
    if (encoding_ != Encoding::Ansi) dependsOnCodePage_ = false;
    if (wide()) {
      // Code units in host order; an odd last byte is no character.
      units_.resize((raw_.size() - bom_) / 2);
      const std::size_t lo = encoding_ == Encoding::Utf16Le ? 0 : 1;
      for (std::size_t i = 0; i < units_.size(); ++i) {
        units_[i] = static_cast<char16_t>(b[bom_ + 2 * i + lo] | (b[bom_ + 2 * i + 1 - lo] << 8));
      }
    }
  }
  index();
}

// Everything but the bytes, which the caller gives.
Document::Document(std::string raw, const Document& before)
    : raw_(std::move(raw)),
      acp_(before.acp_),
      encoding_(before.encoding_),
      bom_(before.bom_),
      byLines_(before.byLines_),
      dependsOnCodePage_(before.dependsOnCodePage_),
      sectionsIndexed_(before.sectionsIndexed_),
      sections_(before.sections_),
      sectionNames_(before.sectionNames_),
      keys_(before.keys_) {}

bool Document::canMoveAlong(const LineEdit& edit, std::size_t newSize) const {
  // Converted line by line, the text does not follow the bytes unit for unit; half a UTF-16
  // unit at the end shifts everything written after it.
  if (byLines_ || (wide() && raw_.size() % 2 != 0) || newSize >= kLargestFile) return false;
  return encoding_ != Encoding::Ansi || !isDoubleByte(acp_) ||
         text::allAscii(reinterpret_cast<const std::uint8_t*>(edit.insertedBytes.data()),
                        edit.insertedBytes.size());
}

std::shared_ptr<const Document> Document::edited(std::string raw, const LineEdit& edit) const {
  const bool highBytes = !text::allAscii(
      reinterpret_cast<const std::uint8_t*>(edit.insertedBytes.data()), edit.insertedBytes.size());
  const std::size_t inserted = wide() ? edit.inserted.size() : edit.insertedBytes.size();
  auto next = std::shared_ptr<Document>(new Document(std::move(raw), *this));
  next->dependsOnCodePage_ = dependsOnCodePage_ || (encoding_ == Encoding::Ansi && highBytes);
  if (wide()) {
    next->units_.reserve(units_.size() - edit.removed + inserted);
    next->units_.append(units_, 0, edit.at);
    next->units_.append(edit.inserted);
    next->units_.append(units_, edit.at + edit.removed);
  }
  const std::size_t from = edit.at + edit.removed;
  const auto move = [&](std::uint32_t& offset) {
    if (offset >= from) offset = static_cast<std::uint32_t>(offset - edit.removed + inserted);
  };
  for (auto& section : next->sections_) move(section.header);
  // Offsets are below 2^32 (kLargestFile), so moving them by the difference modulo 2^32 is
  // exact.
  next->keys_.moveValuesFrom(static_cast<std::uint32_t>(from),
                             static_cast<std::uint32_t>(inserted - edit.removed));
  std::size_t keySection = edit.section;
  if (edit.newSectionAt && next->sectionsIndexed_) {
    const Line header = next->lineAt(*edit.newSectionAt);
    next->sections_.push_back(
        {fold(next->nameHash(header)), static_cast<std::uint32_t>(header.begin)});
    keySection = next->sections_.size() - 1;
    if (!next->sectionNames_.empty()) {
      next->sectionNames_.makeRoomForOne();
      next->insertSectionName(keySection);
    }
  }
  if (edit.newKeyAt && !next->keys_.empty()) {
    next->keys_.makeRoomForOne();
    next->insertKey(next->lineAt(*edit.newKeyAt), keySection);
  }
  // A table grown past the file's bound is let go: lookups read the file through instead.
  if (!next->withinMemoryBound()) {
    next->keys_.release();
    next->sectionNames_.release();
  }
  if (!next->withinMemoryBound()) {
    next->sections_ = {};
    next->sectionsIndexed_ = false;
  }
  return next;
}

Line Document::lineAt(std::size_t pos) const {
  return decoded() ? classify(units_.data(), units_.size(), pos)
                   : classify(bytes(), raw_.size() - bom_, pos);
}

// Each line is converted on its own, as the platform does, so that a lead byte at the end of a
// line never takes the terminator as its trail; the terminators are copied as they stand, so
// that the text has the same lines as the bytes.
void Document::decodeByLines() {
  byLines_ = true;
  const std::uint8_t* p = bytes();
  const std::size_t size = raw_.size();
  units_.resize(size);
  const platform::Converter converter(acp_);
  std::size_t pos = 0;
  std::size_t unit = 0;
  while (pos < size) {
    const std::size_t end = lineEnd(p, size, pos);
    const std::size_t next = afterTerminator(p, size, end);
    unit += converter.toWide(std::span(p + pos, end - pos), units_.data() + unit);
    for (std::size_t i = end; i < next; ++i) units_[unit++] = static_cast<char16_t>(p[i]);
    pos = next;
  }
  units_.resize(unit);
  if (unit <= size / 2) units_.shrink_to_fit();
}

std::size_t Document::lineCount() const noexcept {
  const std::size_t size = textSize();
  if (size == 0) return 0;
  const text::UnitForm form{static_cast<std::uint8_t>(decoded() ? 2 : 1),
                            std::endian::native == std::endian::big};
  const auto* p = decoded() ? reinterpret_cast<const std::uint8_t*>(units_.data()) : bytes();
  const auto scan = text::scanLineEnds(p, size * form.width, form, false, UINT64_MAX);
  return static_cast<std::size_t>(scan.ends) + (scan.lastWasBreak ? 0 : 1);
}

void Document::index() {
  const std::size_t size = textSize();
  const std::size_t budget = memoryBound() > heldText() ? memoryBound() - heldText() : 0;
  // A quarter more slots than needed where the bound allows, so that keys a writer adds seldom
  // grow the table.
  const auto roomy = [](std::size_t names) {
    return SlotTable::slotsFor(names) + SlotTable::slotsFor(names) / 4;
  };
  // Usually there is room for a key table as if every line were a key and for every line being
  // a section, and one pass over the lines builds the index. Only a file of very short lines
  // is counted by kind first, so that its tables are no larger than they must be.
  const std::size_t lines = lineCount();
  std::size_t sectionCount = lines;
  std::size_t keyCount = lines;
  const bool onePass =
      roomy(lines) * sizeof(SlotTable::Slot) + 2 * lines * sizeof(SectionEntry) <= budget;
  if (!onePass) {
    sectionCount = 0;
    keyCount = 0;
    for (std::size_t pos = 0; pos < size;) {
      const Line l = lineAt(pos);
      if (l.kind == LineKind::Section) {
        ++sectionCount;
      } else if (l.kind == LineKind::Key && sectionCount > 0) {
        ++keyCount;
      }
      pos = l.next;
    }
    if (sectionCount * sizeof(SectionEntry) > budget) return;
    sections_.reserve(sectionCount);
  }
  std::size_t left = budget - sectionCount * sizeof(SectionEntry);
  if (roomy(keyCount) * sizeof(SlotTable::Slot) <= left) {
    keys_.reset(roomy(keyCount));
  } else if (SlotTable::slotsFor(keyCount) * sizeof(SlotTable::Slot) <= left) {
    keys_.reset(SlotTable::slotsFor(keyCount));
  }
  for (std::size_t pos = 0; pos < size;) {
    const Line l = lineAt(pos);
    if (l.kind == LineKind::Section) {
      sections_.push_back({fold(nameHash(l)), static_cast<std::uint32_t>(l.begin)});
    } else if (l.kind == LineKind::Key && !sections_.empty() && !keys_.empty()) {
      // Keys before the first section belong to none: the platform keeps such lines but
      // never finds a key among them.
      insertKey(l, sections_.size() - 1);
    }
    pos = l.next;
  }
  if (onePass) sections_.shrink_to_fit();
  sectionsIndexed_ = true;
  // Sections by name too, where that stays within the bound; else they are searched in order.
  left = budget - sections_.capacity() * sizeof(SectionEntry) - keys_.bytes();
  if (SlotTable::slotsFor(sections_.size()) * sizeof(SlotTable::Slot) <= left) {
    sectionNames_.reset(SlotTable::slotsFor(sections_.size()));
    for (std::size_t i = 0; i < sections_.size(); ++i) insertSectionName(i);
  }
}

std::size_t Document::heldText() const noexcept {
  return raw_.capacity() + units_.capacity() * sizeof(char16_t);
}

std::size_t Document::memoryBound() const noexcept {
  return std::max(4 * raw_.size(), kAlwaysIndexed);
}

bool Document::withinMemoryBound() const noexcept {
  return heldText() + sections_.capacity() * sizeof(SectionEntry) + sectionNames_.bytes() +
             keys_.bytes() <=
         memoryBound();
}

void Document::insertKey(const Line& line, std::size_t section) {
  const std::uint32_t header = sections_[section].header;
  // Keys are added in file order, so a key after the header is in this section.
  keys_.insert(
      slotHash(nameHash(line), section), static_cast<std::uint32_t>(line.begin),
      [&](std::uint32_t other) { return other > header && sameName(lineAt(other), line); });
}

void Document::insertSectionName(std::size_t number) {
  const Line header = lineAt(sections_[number].header);
  sectionNames_.insert(
      sections_[number].hash, static_cast<std::uint32_t>(number),
      [&](std::uint32_t other) { return sameName(lineAt(sections_[other].header), header); });
}

SectionRef Document::sectionAt(std::size_t number) const {
  return {number, sections_[number].header,
          number + 1 < sections_.size() ? sections_[number + 1].header : textSize()};
}

std::optional<SectionRef> Document::findSection(std::u16string_view upperName) const {
  if (!sectionNames_.empty()) {
    const auto number = sectionNames_.find(fold(hashUnits(upperName)), [&](std::uint32_t n) {
      return nameEquals(lineAt(sections_[n].header), upperName);
    });
    if (!number) return std::nullopt;
    return sectionAt(*number);
  }
  if (sectionsIndexed_) {
    const std::uint32_t h = fold(hashUnits(upperName));
    for (std::size_t i = 0; i < sections_.size(); ++i) {
      if (sections_[i].hash == h && nameEquals(lineAt(sections_[i].header), upperName)) {
        return sectionAt(i);
      }
    }
    return std::nullopt;
  }
  const std::size_t size = textSize();
  std::optional<SectionRef> found;
  for (std::size_t pos = 0; pos < size;) {
    const Line l = lineAt(pos);
    if (l.kind == LineKind::Section) {
      if (found) {
        found->end = l.begin;
        return found;
      }
      if (nameEquals(l, upperName)) found = SectionRef{0, l.begin, size};
    }
    pos = l.next;
  }
  return found;
}

std::optional<Line> Document::findKey(const SectionRef& section,
                                      std::u16string_view upperName) const {
  if (!keys_.empty()) {
    std::optional<Line> found;
    keys_.find(slotHash(hashUnits(upperName), section.number), [&](std::uint32_t at) {
      if (at <= section.header || at >= section.end) return false;
      const Line l = lineAt(at);
      if (!nameEquals(l, upperName)) return false;
      found = l;
      return true;
    });
    return found;
  }
  for (std::size_t pos = lineAt(section.header).next; pos < section.end;) {
    const Line l = lineAt(pos);
    if (l.kind == LineKind::Key && nameEquals(l, upperName)) return l;
    pos = l.next;
  }
  return std::nullopt;
}

std::size_t Document::byteOf(std::size_t pos) const {
  if (!byLines_) return bom_ + pos * (wide() ? 2 : 1);
  if (pos >= units_.size()) return raw_.size();
  // Converted text has the lines of the bytes, one for one, but not their lengths.
  std::size_t lines = 0;
  for (std::size_t u = 0; u < pos; ++lines) {
    u = afterTerminator(units_.data(), units_.size(), lineEnd(units_.data(), units_.size(), u));
  }
  std::size_t b = 0;
  for (; lines > 0; --lines)
    b = afterTerminator(bytes(), raw_.size(), lineEnd(bytes(), raw_.size(), b));
  return b;
}

ByteLine Document::bytesOf(const Line& line) const {
  if (!byLines_) {
    const std::size_t unit = wide() ? 2 : 1;
    return {bom_ + line.begin * unit, bom_ + line.end * unit, bom_ + line.next * unit};
  }
  const std::size_t begin = byteOf(line.begin);
  const std::size_t end = lineEnd(bytes(), raw_.size(), begin);
  return {begin, end, afterTerminator(bytes(), raw_.size(), end)};
}

String Document::text(std::size_t begin, std::size_t end) const {
  if (decoded()) return String(units_.data() + begin, units_.data() + end);
  const std::uint8_t* p = bytes();
  if (text::allAscii(p + begin, end - begin)) {
    return String(p + begin, p + end);
  }
  String out(end - begin, u'\0');
  const platform::Converter converter(encoding_ == Encoding::Utf8 ? platform::kCodePageUtf8 : acp_);
  out.resize(converter.toWide(std::span(p + begin, end - begin), out.data()));
  return out;
}

std::string Document::encode(std::u16string_view text) const {
  if (wide()) {
    std::string out(text.size() * 2, '\0');
    const std::size_t lo = encoding_ == Encoding::Utf16Le ? 0 : 1;
    for (std::size_t i = 0; i < text.size(); ++i) {
      out[2 * i + lo] = static_cast<char>(text[i] & 0xFF);
      out[2 * i + 1 - lo] = static_cast<char>(text[i] >> 8);
    }
    return out;
  }
  return platform::wideToMultiByte(encoding_ == Encoding::Utf8 ? platform::kCodePageUtf8 : acp_,
                                   text);
}

bool Document::endsWithTerminator() const noexcept {
  if (wide() && raw_.size() % 2 != 0) return false;
  const std::size_t size = textSize();
  if (size == 0) return true;
  const char16_t last = decoded() ? units_[size - 1] : bytes()[size - 1];
  return last == u'\r' || last == u'\n';
}

std::size_t Document::memoryUse() const noexcept {
  return sizeof(*this) + raw_.capacity() + units_.capacity() * sizeof(char16_t) +
         sections_.capacity() * sizeof(SectionEntry) + sectionNames_.bytes() + keys_.bytes();
}

bool Document::asciiName(const Line& l) const noexcept {
  return decoded() || std::all_of(bytes() + l.nameBegin, bytes() + l.nameEnd,
                                  [](std::uint8_t c) { return c < 0x80; });
}

std::uint64_t Document::nameHash(const Line& l) const {
  if (decoded()) {
    NameHasher h;
    for (std::size_t i = l.nameBegin; i < l.nameEnd; ++i) h.add(upperFast(units_[i]));
    return h.value();
  }
  // Most names are ASCII and are hashed where they lie; a name with other bytes is converted
  // first.
  if (const auto ascii = hashAsciiBytes(bytes() + l.nameBegin, l.nameEnd - l.nameBegin)) {
    return *ascii;
  }
  return hashUnits(upper(text(l.nameBegin, l.nameEnd)));
}

bool Document::sameName(const Line& a, const Line& b) const {
  return upper(text(a.nameBegin, a.nameEnd)) == upper(text(b.nameBegin, b.nameEnd));
}

bool Document::nameEquals(const Line& l, std::u16string_view upperName) const {
  const std::size_t n = l.nameEnd - l.nameBegin;
  if (decoded()) {
    if (n != upperName.size()) return false;
    const char16_t* u = units_.data() + l.nameBegin;
    for (std::size_t i = 0; i < n; ++i) {
      if (upperFast(u[i]) != upperName[i]) return false;
    }
    return true;
  }
  // Up to its first byte above ASCII a name's bytes are its units, so a difference there is
  // final; from that byte on only the converted name can be compared.
  const std::uint8_t* p = bytes() + l.nameBegin;
  const std::size_t common = std::min(n, upperName.size());
  for (std::size_t i = 0; i < common; ++i) {
    const std::uint8_t c = p[i];
    if (c >= 0x80) return upper(text(l.nameBegin, l.nameEnd)) == upperName;
    const auto up = static_cast<char16_t>(c >= 'a' && c <= 'z' ? c - 32 : c);
    if (up != upperName[i]) return false;
  }
  if (n == upperName.size()) return true;
  // Equal so far, of different lengths: equal only if the rest converts to what is missing.
  return !asciiName(l) && upper(text(l.nameBegin, l.nameEnd)) == upperName;
}

}  // namespace orvo::settings::privateprofile::detail
