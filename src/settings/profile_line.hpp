#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

#include "orvogeneric/types.hpp"
#include "runtime/strings.hpp"
#include "text/line_breaks.hpp"

// One line of a settings file as the platform reads it: what kind of line it is and where its
// name and value lie. Lines are classified again whenever they are looked at, so that a parsed
// file keeps no record per line and its memory follows its sections and keys, not its length.
namespace orvo::settings::privateprofile::detail {

// How the platform reads a settings file: a BOM says UTF-16 or UTF-8; anything else is 8-bit
// text in the system's ANSI code page (UTF-16 without a BOM is not recognised).
enum class Encoding { Ansi, Utf8, Utf16Le, Utf16Be };

// The blanks the platform trims from lines, names and values: space and the controls from
// tab to carriage return; a no-break space is not one.
constexpr bool isBlank(std::uint32_t c) noexcept { return c == 0x20 || (c >= 0x09 && c <= 0x0D); }

enum class LineKind : std::uint8_t { Blank, Other, Comment, Section, Key };

// A line in code units of the text (bytes, or UTF-16 units). A line ends at CR LF, LF or CR;
// next is where the following line starts, equal to end for a last line without terminator.
struct Line {
  std::size_t begin = 0;
  std::size_t end = 0;
  std::size_t next = 0;
  std::size_t nameBegin = 0;  // section name, or key name
  std::size_t nameEnd = 0;
  std::size_t valueBegin = 0;  // keys only: the value, blanks trimmed
  std::size_t valueEnd = 0;
  LineKind kind = LineKind::Blank;
};

// Where the terminator of the line starting at pos lies.
template <class U>
std::size_t lineEnd(const U* p, std::size_t size, std::size_t pos) noexcept {
  return pos + text::findLineBreak(p + pos, size - pos);
}

// Where the line after the terminator at end starts.
template <class U>
std::size_t afterTerminator(const U* p, std::size_t size, std::size_t end) noexcept {
  if (end >= size) return end;
  return (p[end] == '\r' && end + 1 < size && p[end + 1] == '\n') ? end + 2 : end + 1;
}

template <class U>
Line classify(const U* p, std::size_t size, std::size_t pos) {
  Line line;
  line.begin = pos;
  const std::size_t end = lineEnd(p, size, pos);
  line.end = end;
  line.next = afterTerminator(p, size, end);

  std::size_t b = pos;
  std::size_t e = end;
  while (b < e && isBlank(static_cast<std::uint32_t>(p[b]))) ++b;
  while (e > b && isBlank(static_cast<std::uint32_t>(p[e - 1]))) --e;
  if (b == e) return line;
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
      return line;
    }
  }
  if (p[b] == ';') {
    line.kind = LineKind::Comment;
    return line;
  }
  std::size_t eq = b;
  while (eq < e && p[eq] != '=') ++eq;
  if (eq == e) {
    line.kind = LineKind::Other;
    return line;
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
  return line;
}

inline char16_t upperFast(char16_t c) noexcept {
  if (c < 0x80) return c >= u'a' && c <= u'z' ? static_cast<char16_t>(c - 32) : c;
  return runtime::upperUnit(c);
}

// Names are hashed four UTF-16 units a step, so that the chain of multiplications is a quarter
// of the name long; the table's fold mixes every bit afterwards.
class NameHasher {
 public:
  void add(char16_t upperUnit) noexcept {
    word_ |= std::uint64_t{upperUnit} << (16 * filled_);
    if (++filled_ == 4) flush();
  }
  // Four units at once (or fewer, the rest of the word zero), when nothing is pending.
  void addWord(std::uint64_t units, unsigned count) noexcept {
    word_ = units;
    filled_ = count;
    flush();
  }
  [[nodiscard]] std::uint64_t value() noexcept {
    if (filled_ != 0) flush();
    return h_ ^ length_;
  }

 private:
  void flush() noexcept {
    h_ = (h_ ^ word_) * 0x9E3779B97F4A7C15ULL;
    h_ ^= h_ >> 29;
    length_ += filled_;
    word_ = 0;
    filled_ = 0;
  }
  std::uint64_t h_ = 0x243F6A8885A308D3ULL;
  std::uint64_t word_ = 0;
  std::uint64_t length_ = 0;
  unsigned filled_ = 0;
};

// The first count (1 to 4) bytes at p as one little-endian word, the rest zero. A copy of a
// variable length into a word on the stack is compiled to byte stores followed by one wide load,
// which the processor cannot forward: that stall was most of the cost of hashing a name.
inline std::uint32_t leadingBytes(const std::uint8_t* p, std::size_t count) noexcept {
  if (std::endian::native == std::endian::little && count >= 4) {
    std::uint32_t four = 0;
    std::memcpy(&four, p, sizeof four);
    return four;
  }
  std::uint32_t word = 0;
  for (std::size_t k = 0; k < count && k < 4; ++k) word |= std::uint32_t{p[k]} << (8 * k);
  return word;
}

// The hash of bytes read as units, upper-cased, as NameHasher gives it; nullopt when a byte is
// not ASCII. Four bytes a step: widened into four units and upper-cased together.
inline std::optional<std::uint64_t> hashAsciiBytes(const std::uint8_t* p, std::size_t n) noexcept {
  NameHasher h;
  std::uint32_t seen = 0;
  for (std::size_t i = 0; i < n; i += 4) {
    const std::size_t count = n - i < 4 ? n - i : 4;
    const std::uint32_t four = leadingBytes(p + i, count);
    seen |= four;
    std::uint64_t units = four;
    units = (units | (units << 16)) & 0x0000FFFF0000FFFFULL;
    units = (units | (units << 8)) & 0x00FF00FF00FF00FFULL;
    // A unit from "a" to "z" (below 0x80): adding 0x1F carries into bit 7 from "a" up, adding
    // 0x05 from "{" up; the difference marks the letters, and 0x20 comes off them.
    const std::uint64_t letters =
        (units + 0x001F001F001F001FULL) & ~(units + 0x0005000500050005ULL) & 0x0080008000800080ULL;
    h.addWord(units - (letters >> 2), static_cast<unsigned>(count));
  }
  if ((seen & 0x80808080U) != 0) return std::nullopt;
  return h.value();
}

inline std::uint64_t hashUnits(std::u16string_view upper) noexcept {
  NameHasher h;
  if constexpr (std::endian::native == std::endian::little) {
    // Four units are one word with the first unit lowest, as the hasher packs them.
    for (std::size_t i = 0; i < upper.size(); i += 4) {
      const std::size_t count = upper.size() - i < 4 ? upper.size() - i : 4;
      std::uint64_t units = 0;
      // Assembled from the units themselves, not copied into a word on the stack: see
      // leadingBytes.
      for (std::size_t k = 0; k < count; ++k) units |= std::uint64_t{upper[i + k]} << (16 * k);
      h.addWord(units, static_cast<unsigned>(count));
    }
  } else {
    for (const char16_t c : upper) h.add(c);
  }
  return h.value();
}

inline String upper(std::u16string_view s) {
  String out(s);
  for (char16_t& c : out) c = upperFast(c);
  return out;
}

}  // namespace orvo::settings::privateprofile::detail
