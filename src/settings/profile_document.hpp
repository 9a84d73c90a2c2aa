#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "orvogeneric/types.hpp"
#include "platform/codepage.hpp"
#include "runtime/strings.hpp"

// A settings file's bytes as the platform reads them, classified line by line and indexed by
// section and key names, so that a lookup costs a hash and a few comparisons and a write knows
// the exact bytes of the line it replaces.
namespace orvo::settings::privateprofile {

namespace detail {

// How the platform reads a settings file: a BOM says UTF-16 or UTF-8; anything else is 8-bit
// text in the system's ANSI code page (UTF-16 without a BOM is not recognised).
enum class Encoding { Ansi, Utf8, Utf16Le, Utf16Be };

// The blanks the platform trims from lines, names and values: space and the controls from
// tab to carriage return; a no-break space is not one.
constexpr bool isBlank(std::uint32_t c) noexcept { return c == 0x20 || (c >= 0x09 && c <= 0x0D); }

enum class LineKind : std::uint8_t { Blank, Other, Comment, Section, Key };

// One line of the file in code units of its encoding (bytes, or UTF-16 units after the BOM).
// A line ends at CR LF, LF or CR; next is where the following line starts.
struct Line {
  std::uint32_t begin = 0;
  std::uint32_t end = 0;
  std::uint32_t next = 0;
  std::uint32_t nameBegin = 0;  // section name, or key name
  std::uint32_t nameEnd = 0;
  std::uint32_t valueBegin = 0;  // keys only: the value, blanks trimmed
  std::uint32_t valueEnd = 0;
  // Where the line lies in the file's bytes (the BOM included), for the writer.
  std::uint32_t byteBegin = 0;
  std::uint32_t byteEnd = 0;
  std::uint32_t byteNext = 0;
  LineKind kind = LineKind::Blank;
};

template <class U>
std::size_t classify(const U* p, std::size_t size, std::size_t pos, Line& line) {
  line.begin = pos;
  std::size_t end = pos;
  if constexpr (sizeof(U) == 1) {
    // Lines are short and the terminators rare: the two searches run at memory speed.
    const void* lf = std::memchr(p + pos, '\n', size - pos);
    const std::size_t limit =
        lf != nullptr ? static_cast<std::size_t>(static_cast<const U*>(lf) - p) : size;
    const void* cr = std::memchr(p + pos, '\r', limit - pos);
    end = cr != nullptr ? static_cast<std::size_t>(static_cast<const U*>(cr) - p) : limit;
  } else {
    while (end < size && p[end] != u'\n' && p[end] != u'\r') ++end;
  }
  line.end = end;
  line.next = end;
  if (end < size)
    line.next = (p[end] == '\r' && end + 1 < size && p[end + 1] == '\n') ? end + 2 : end + 1;

  std::size_t b = pos;
  std::size_t e = end;
  while (b < e && isBlank(static_cast<std::uint32_t>(p[b]))) ++b;
  while (e > b && isBlank(static_cast<std::uint32_t>(p[e - 1]))) --e;
  if (b == e) {
    line.kind = LineKind::Blank;
    return line.next;
  }
  if (p[b] == '[') {
    std::size_t close = e;
    while (close > b + 1 && p[close - 1] != ']') --close;
    if (close > b + 1) {
      // The name runs to the last "]"; whatever follows it is ignored.
      std::size_t nb = b + 1;
      std::size_t ne = close - 1;
      while (nb < ne && isBlank(static_cast<std::uint32_t>(p[nb]))) ++nb;
      while (ne > nb && isBlank(static_cast<std::uint32_t>(p[ne - 1]))) --ne;
      line.kind = LineKind::Section;
      line.nameBegin = nb;
      line.nameEnd = ne;
      return line.next;
    }
  }
  if (p[b] == ';') {
    line.kind = LineKind::Comment;
    return line.next;
  }
  std::size_t eq = b;
  while (eq < e && p[eq] != '=') ++eq;
  if (eq == e) {
    line.kind = LineKind::Other;
    return line.next;
  }
  std::size_t ne = eq;
  while (ne > b && isBlank(static_cast<std::uint32_t>(p[ne - 1]))) --ne;
  std::size_t vb = eq + 1;
  while (vb < e && isBlank(static_cast<std::uint32_t>(p[vb]))) ++vb;
  line.kind = LineKind::Key;
  line.nameBegin = b;
  line.nameEnd = ne;
  line.valueBegin = vb;
  line.valueEnd = e;
  return line.next;
}

inline char16_t upperFast(char16_t c) noexcept {
  if (c < 0x80) return c >= u'a' && c <= u'z' ? static_cast<char16_t>(c - 32) : c;
  return runtime::upperUnit(c);
}

// Offsets within a file are 32-bit: a settings file of a gigabyte is refused as unreadable.
constexpr std::size_t kLargestFile = std::size_t{1} << 30;

inline std::uint64_t hashUnits(std::u16string_view upper) noexcept {
  std::uint64_t h = 1469598103934665603ULL;
  for (const char16_t c : upper) {
    h = (h ^ c) * 1099511628211ULL;
  }
  return h;
}

inline String upper(std::u16string_view s) {
  String out(s);
  for (char16_t& c : out) c = upperFast(c);
  return out;
}

// A file's bytes as the platform reads them, with the index of its sections and keys.
class Document {
 public:
  Document(std::string raw, std::uint32_t ansiCodePage) : raw_(std::move(raw)), acp_(ansiCodePage) {
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
      return;
    }
    if (encoding_ != Encoding::Ansi) dependsOnCodePage_ = false;
    if (wide()) {
      // Code units in host order; an odd last byte is no character.
      units_.resize((raw_.size() - bom_) / 2);
      for (std::size_t i = 0; i < units_.size(); ++i) {
        const auto lo = b[bom_ + 2 * i + (encoding_ == Encoding::Utf16Le ? 0 : 1)];
        const auto hi = b[bom_ + 2 * i + (encoding_ == Encoding::Utf16Le ? 1 : 0)];
        units_[i] = static_cast<char16_t>(lo | (hi << 8));
      }
    }
    index();
  }

  [[nodiscard]] const std::string& raw() const noexcept { return raw_; }
  [[nodiscard]] std::uint32_t ansiCodePage() const noexcept { return acp_; }
  // Whether the text depends on the ANSI code page: an 8-bit file with bytes beyond ASCII.
  [[nodiscard]] bool dependsOnCodePage() const noexcept { return dependsOnCodePage_; }
  [[nodiscard]] bool wide() const noexcept {
    return encoding_ == Encoding::Utf16Le || encoding_ == Encoding::Utf16Be;
  }
  // Whether names and values are found in converted text rather than in the bytes.
  [[nodiscard]] bool decoded() const noexcept { return wide() || byLines_; }

  // The line index of the first section of that name (already upper-cased), or -1.
  [[nodiscard]] std::ptrdiff_t findSection(std::u16string_view upperName) const {
    const std::uint64_t h = hashUnits(upperName);
    for (const Section& s : sections_) {
      if (s.hash == h && nameEquals(lines_[s.header], upperName)) {
        return static_cast<std::ptrdiff_t>(&s - sections_.data());
      }
    }
    return -1;
  }

  // The line of the first key of that name in the section, or -1.
  [[nodiscard]] std::ptrdiff_t findKey(std::size_t section, std::u16string_view upperName) const {
    if (keySlots_.empty()) return -1;
    const std::uint64_t h = hashUnits(upperName) ^ (section * 0x9E3779B97F4A7C15ULL);
    const std::size_t mask = keySlots_.size() - 1;
    for (std::size_t i = h & mask;; i = (i + 1) & mask) {
      const KeySlot& slot = keySlots_[i];
      if (slot.line == kEmpty) return -1;
      if (slot.hash == h && slot.section == section && nameEquals(lines_[slot.line], upperName)) {
        return slot.line;
      }
    }
  }

  [[nodiscard]] const Line& line(std::size_t i) const { return lines_[i]; }
  [[nodiscard]] std::size_t lineCount() const noexcept { return lines_.size(); }
  [[nodiscard]] std::size_t sectionHeader(std::size_t s) const { return sections_[s].header; }
  // The line after the section's last line.
  [[nodiscard]] std::size_t sectionEnd(std::size_t s) const {
    return s + 1 < sections_.size() ? sections_[s + 1].header : lines_.size();
  }
  [[nodiscard]] std::size_t sectionCount() const noexcept { return sections_.size(); }

  // A piece of the file as text.
  [[nodiscard]] String text(std::size_t begin, std::size_t end) const {
    if (decoded()) return String(units_.data() + begin, units_.data() + end);
    const std::uint8_t* p = bytes();
    if (std::all_of(p + begin, p + end, [](std::uint8_t c) { return c < 0x80; })) {
      return String(p + begin, p + end);
    }
    String out(end - begin, u'\0');
    const platform::Converter converter(encoding_ == Encoding::Utf8 ? platform::kCodePageUtf8
                                                                    : acp_);
    out.resize(converter.toWide(std::span(p + begin, end - begin), out.data()));
    return out;
  }

  // Text in the file's encoding, and where the units of the index lie in the bytes.
  [[nodiscard]] std::string encode(std::u16string_view text) const {
    std::string out;
    if (wide()) {
      out.resize(text.size() * 2);
      for (std::size_t i = 0; i < text.size(); ++i) {
        const auto lo = static_cast<char>(text[i] & 0xFF);
        const auto hi = static_cast<char>(text[i] >> 8);
        out[2 * i] = encoding_ == Encoding::Utf16Le ? lo : hi;
        out[2 * i + 1] = encoding_ == Encoding::Utf16Le ? hi : lo;
      }
      return out;
    }
    return platform::wideToMultiByte(encoding_ == Encoding::Utf8 ? platform::kCodePageUtf8 : acp_,
                                     text);
  }
  // Whether the content after the BOM is empty or ends with a line terminator. A UTF-16 file
  // of odd length does not: it ends in half a unit, which text added after it completes.
  [[nodiscard]] bool endsWithTerminator() const noexcept {
    if (wide() && raw_.size() % 2 != 0) return false;
    return lines_.empty() || lines_.back().next != lines_.back().end;
  }

 private:
  static constexpr std::uint32_t kEmpty = 0xFFFFFFFFU;
  struct Section {
    std::uint64_t hash;
    std::size_t header;
  };
  struct KeySlot {
    std::uint64_t hash = 0;
    std::size_t section = 0;
    std::uint32_t line = kEmpty;
  };

  static bool isDoubleByte(std::uint32_t cp) noexcept {
    return cp == 932 || cp == 936 || cp == 949 || cp == 950;
  }

  // Lines no read looks at (blank ones; comments and other text, alike to every caller) are
  // kept as one entry per run, so that a file of a million blank lines costs one entry.
  void push(Line line) {
    if (line.kind == LineKind::Comment) line.kind = LineKind::Other;
    if (!lines_.empty() && (line.kind == LineKind::Blank || line.kind == LineKind::Other) &&
        lines_.back().kind == line.kind) {
      Line& run = lines_.back();
      run.end = line.end;
      run.next = line.next;
      run.byteEnd = line.byteEnd;
      run.byteNext = line.byteNext;
      return;
    }
    lines_.push_back(line);
  }

  template <class U>
  void scan(const U* p, std::size_t size) {
    const std::size_t unitBytes = wide() ? 2 : 1;
    std::size_t pos = 0;
    while (pos < size) {
      Line line;
      pos = classify(p, size, pos, line);
      line.byteBegin = bom_ + line.begin * unitBytes;
      line.byteEnd = bom_ + line.end * unitBytes;
      line.byteNext = bom_ + line.next * unitBytes;
      push(line);
    }
  }

  void decodeByLines() {
    byLines_ = true;
    const std::uint8_t* p = bytes();
    const std::size_t size = raw_.size();
    units_.resize(size);
    const platform::Converter converter(acp_);
    std::size_t pos = 0;
    std::size_t unit = 0;
    while (pos < size) {
      std::size_t end = pos;
      while (end < size && p[end] != '\n' && p[end] != '\r') ++end;
      const std::size_t next = end == size                                                ? end
                               : (p[end] == '\r' && end + 1 < size && p[end + 1] == '\n') ? end + 2
                                                                                          : end + 1;
      const std::size_t count =
          converter.toWide(std::span(p + pos, end - pos), units_.data() + unit);
      Line line;
      classify(units_.data(), unit + count, unit, line);
      line.next = next == end ? line.end : line.end + 1;  // only whether a terminator follows
      line.byteBegin = pos;
      line.byteEnd = end;
      line.byteNext = next;
      push(line);
      unit += count;
      pos = next;
    }
    units_.resize(unit);
    index();
  }

  void index() {
    lines_.reserve(raw_.size() / 40 + 4);  // a guess that spares most regrowth of the lines
    // Text decoded line by line has its lines already.
    if (!byLines_) {
      if (wide()) {
        scan(units_.data(), units_.size());
      } else {
        scan(bytes(), raw_.size() - bom_);
      }
    }
    std::size_t keys = 0;
    for (std::size_t i = 0; i < lines_.size(); ++i) {
      if (lines_[i].kind == LineKind::Section) {
        sections_.push_back({nameHash(lines_[i]), i});
      } else if (lines_[i].kind == LineKind::Key) {
        ++keys;
      }
    }
    if (keys == 0 || keys > kEmpty / 4) return;
    std::size_t slots = 16;
    while (slots < keys * 2) slots *= 2;
    keySlots_.resize(slots);
    // Keys before the first section belong to none: the platform keeps such lines but never
    // finds a key among them.
    std::size_t section = 0;
    bool inSection = false;
    for (std::size_t i = 0; i < lines_.size(); ++i) {
      const Line& l = lines_[i];
      if (l.kind == LineKind::Section) {
        section = inSection ? section + 1 : 0;
        inSection = true;
        continue;
      }
      if (l.kind != LineKind::Key || !inSection) continue;
      const std::uint64_t h = nameHash(l) ^ (section * 0x9E3779B97F4A7C15ULL);
      for (std::size_t s = h & (slots - 1);; s = (s + 1) & (slots - 1)) {
        KeySlot& slot = keySlots_[s];
        if (slot.line == kEmpty) {
          slot = {h, section, static_cast<std::uint32_t>(i)};
          break;
        }
        // The first of duplicate keys is the one found.
        if (slot.hash == h && slot.section == section && sameName(lines_[slot.line], l)) break;
      }
    }
  }

  [[nodiscard]] const std::uint8_t* bytes() const noexcept {
    return reinterpret_cast<const std::uint8_t*>(raw_.data()) + bom_;
  }
  [[nodiscard]] bool asciiName(const Line& l) const noexcept {
    return decoded() || std::all_of(bytes() + l.nameBegin, bytes() + l.nameEnd,
                                    [](std::uint8_t c) { return c < 0x80; });
  }

  // The hash of the upper-cased name, as hashUnits gives it for the decoded text; most names
  // are ASCII and are hashed where they lie.
  [[nodiscard]] std::uint64_t nameHash(const Line& l) const {
    if (!asciiName(l)) return hashUnits(upper(text(l.nameBegin, l.nameEnd)));
    std::uint64_t h = 1469598103934665603ULL;
    for (std::size_t i = l.nameBegin; i < l.nameEnd; ++i) {
      const char16_t c = decoded() ? units_[i] : static_cast<char16_t>(bytes()[i]);
      h = (h ^ upperFast(c)) * 1099511628211ULL;
    }
    return h;
  }

  [[nodiscard]] bool sameName(const Line& a, const Line& b) const {
    return upper(text(a.nameBegin, a.nameEnd)) == upper(text(b.nameBegin, b.nameEnd));
  }

  [[nodiscard]] bool nameEquals(const Line& l, std::u16string_view upperName) const {
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

  std::string raw_;
  std::uint32_t acp_;
  Encoding encoding_ = Encoding::Ansi;
  std::size_t bom_ = 0;
  bool byLines_ = false;
  bool dependsOnCodePage_ = false;
  std::u16string units_;  // the converted text, when decoded()
  std::vector<Line> lines_;
  std::vector<Section> sections_;
  std::vector<KeySlot> keySlots_;
};

}  // namespace detail

}  // namespace orvo::settings::privateprofile
