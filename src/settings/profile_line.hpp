#pragma once

#include <cstddef>
#include <cstdint>
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

inline constexpr std::uint64_t kHashSeed = 1469598103934665603ULL;

constexpr std::uint64_t hashStep(std::uint64_t h, char16_t upperUnit) noexcept {
  return (h ^ upperUnit) * 1099511628211ULL;
}

inline std::uint64_t hashUnits(std::u16string_view upper) noexcept {
  std::uint64_t h = kHashSeed;
  for (const char16_t c : upper) h = hashStep(h, c);
  return h;
}

inline String upper(std::u16string_view s) {
  String out(s);
  for (char16_t& c : out) c = upperFast(c);
  return out;
}

}  // namespace orvo::settings::privateprofile::detail
