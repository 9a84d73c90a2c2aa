#include "settings/profile_document.hpp"

#include <algorithm>
#include <span>

#include "platform/codepage.hpp"

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
      std::any_of(raw_.begin(), raw_.end(), [](char c) { return (c & 0x80) != 0; });
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

void Document::index() {
  const std::size_t size = textSize();
  std::size_t sectionCount = 0;
  std::size_t keyCount = 0;
  for (std::size_t pos = 0; pos < size;) {
    const Line l = lineAt(pos);
    if (l.kind == LineKind::Section) {
      ++sectionCount;
    } else if (l.kind == LineKind::Key && sectionCount > 0) {
      ++keyCount;
    }
    pos = l.next;
  }
  const std::size_t held = raw_.capacity() + units_.capacity() * sizeof(char16_t);
  const std::size_t allowed = 4 * raw_.size() + kAlwaysIndexed;
  std::size_t budget = allowed > held ? allowed - held : 0;
  if (sectionCount * sizeof(SectionEntry) > budget) return;
  budget -= sectionCount * sizeof(SectionEntry);
  sections_.reserve(sectionCount);
  // Two slots for every three keys at most, so that a miss ends after a few probes.
  const std::size_t slots = keyCount == 0 ? 0 : keyCount + keyCount / 2 + 1;
  if (slots * sizeof(KeySlot) <= budget) keySlots_.resize(slots);
  for (std::size_t pos = 0; pos < size;) {
    const Line l = lineAt(pos);
    if (l.kind == LineKind::Section) {
      sections_.push_back({fold(nameHash(l)), static_cast<std::uint32_t>(l.begin)});
    } else if (l.kind == LineKind::Key && !sections_.empty() && !keySlots_.empty()) {
      // Keys before the first section belong to none: the platform keeps such lines but
      // never finds a key among them.
      insertKey(l, sections_.size() - 1);
    }
    pos = l.next;
  }
  sectionsIndexed_ = true;
}

std::size_t Document::slotOf(std::uint32_t hash) const noexcept {
  return static_cast<std::size_t>((std::uint64_t{hash} * keySlots_.size()) >> 32);
}

void Document::insertKey(const Line& line, std::size_t section) {
  const std::uint32_t h = slotHash(nameHash(line), section);
  const std::uint32_t header = sections_[section].header;
  for (std::size_t s = slotOf(h);; s = s + 1 == keySlots_.size() ? 0 : s + 1) {
    KeySlot& slot = keySlots_[s];
    if (slot.line == kEmpty) {
      slot = {h, static_cast<std::uint32_t>(line.begin)};
      return;
    }
    // The first of duplicate keys is the one found; keys are added in file order, so a key
    // after the header is in this section.
    if (slot.hash == h && slot.line > header && sameName(lineAt(slot.line), line)) return;
  }
}

SectionRef Document::sectionAt(std::size_t number) const {
  return {number, sections_[number].header,
          number + 1 < sections_.size() ? sections_[number + 1].header : textSize()};
}

std::optional<SectionRef> Document::findSection(std::u16string_view upperName) const {
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
  if (!keySlots_.empty()) {
    const std::uint32_t h = slotHash(hashUnits(upperName), section.number);
    for (std::size_t s = slotOf(h);; s = s + 1 == keySlots_.size() ? 0 : s + 1) {
      const KeySlot& slot = keySlots_[s];
      if (slot.line == kEmpty) return std::nullopt;
      if (slot.hash == h && slot.line > section.header && slot.line < section.end) {
        const Line l = lineAt(slot.line);
        if (nameEquals(l, upperName)) return l;
      }
    }
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
  if (std::all_of(p + begin, p + end, [](std::uint8_t c) { return c < 0x80; })) {
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
         sections_.capacity() * sizeof(SectionEntry) + keySlots_.capacity() * sizeof(KeySlot);
}

bool Document::asciiName(const Line& l) const noexcept {
  return decoded() || std::all_of(bytes() + l.nameBegin, bytes() + l.nameEnd,
                                  [](std::uint8_t c) { return c < 0x80; });
}

std::uint64_t Document::nameHash(const Line& l) const {
  // Most names are ASCII and are hashed where they lie.
  if (!asciiName(l)) return hashUnits(upper(text(l.nameBegin, l.nameEnd)));
  std::uint64_t h = kHashSeed;
  for (std::size_t i = l.nameBegin; i < l.nameEnd; ++i) {
    h = hashStep(h, upperFast(decoded() ? units_[i] : static_cast<char16_t>(bytes()[i])));
  }
  return h;
}

bool Document::sameName(const Line& a, const Line& b) const {
  return upper(text(a.nameBegin, a.nameEnd)) == upper(text(b.nameBegin, b.nameEnd));
}

bool Document::nameEquals(const Line& l, std::u16string_view upperName) const {
  if (asciiName(l)) {
    if (l.nameEnd - l.nameBegin != upperName.size()) return false;
    for (std::size_t i = 0; i < upperName.size(); ++i) {
      const char16_t c = decoded() ? units_[l.nameBegin + i] : bytes()[l.nameBegin + i];
      if (upperFast(c) != upperName[i]) return false;
    }
    return true;
  }
  return upper(text(l.nameBegin, l.nameEnd)) == upperName;
}

}  // namespace orvo::settings::privateprofile::detail
