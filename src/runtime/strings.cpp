#include "runtime/strings.hpp"

#include <unicode/uchar.h>
#include <unicode/utf16.h>

#include <algorithm>
#include <string>

#include "runtime/errors.hpp"

namespace orvo::runtime {

namespace {

constexpr char16_t kBlank = u' ';

template <class Map>
String mapCodePoints(std::u16string_view s, Map map) {
  String out;
  out.reserve(s.size());
  const auto length = static_cast<std::int32_t>(s.size());
  std::int32_t i = 0;
  while (i < length) {
    UChar32 c = 0;
    U16_NEXT(s.data(), i, length, c);
    // A lone surrogate comes back from U16_NEXT as itself and maps to itself; appending it as
    // one code unit keeps unpaired halves exactly as the caller passed them.
    const UChar32 mapped = map(c);
    if (U_IS_BMP(mapped)) {
      out.push_back(static_cast<char16_t>(mapped));
    } else {
      out.push_back(static_cast<char16_t>(U16_LEAD(mapped)));
      out.push_back(static_cast<char16_t>(U16_TRAIL(mapped)));
    }
  }
  return out;
}

}  // namespace

std::u16string_view trimView(std::u16string_view s) noexcept {
  const auto first = s.find_first_not_of(kBlank);
  if (first == std::u16string_view::npos) return {};
  const auto last = s.find_last_not_of(kBlank);
  return s.substr(first, last - first + 1);
}

String Trim(std::u16string_view s) { return String(trimView(s)); }

String LTrim(std::u16string_view s) {
  const auto first = s.find_first_not_of(kBlank);
  if (first == std::u16string_view::npos) return {};
  return String(s.substr(first));
}

String RTrim(std::u16string_view s) {
  const auto last = s.find_last_not_of(kBlank);
  if (last == std::u16string_view::npos) return {};
  return String(s.substr(0, last + 1));
}

String UCase(std::u16string_view s) {
  // Paths and keys are mostly ASCII, which needs no look into the character tables.
  if (std::all_of(s.begin(), s.end(), [](char16_t c) { return c < 0x80; })) {
    String out(s);
    for (char16_t& c : out) c = upperUnit(c);
    return out;
  }
  return mapCodePoints(s, [](UChar32 c) { return u_toupper(c); });
}

char16_t upperUnit(char16_t c) noexcept {
  if (c < 0x80) return c >= u'a' && c <= u'z' ? static_cast<char16_t>(c - 32) : c;
  if (c >= 0xD800 && c <= 0xDFFF) return c;
  return static_cast<char16_t>(u_toupper(c));
}

String LCase(std::u16string_view s) {
  return mapCodePoints(s, [](UChar32 c) { return u_tolower(c); });
}

std::int32_t InStr(std::int32_t start, std::u16string_view s, std::u16string_view find) noexcept {
  // The language rejects a start below 1 with error 5; callers here never pass one, and the
  // signature promises not to throw, so such a start searches from the beginning.
  if (start < 1) start = 1;
  const auto from = static_cast<std::size_t>(start - 1);
  if (s.empty() || from > s.size()) return 0;
  if (find.empty()) return start;
  const auto pos = s.find(find, from);
  return pos == std::u16string_view::npos ? 0 : static_cast<std::int32_t>(pos + 1);
}

std::int32_t InStrRev(std::u16string_view s, std::u16string_view find) noexcept {
  if (s.empty()) return 0;
  if (find.empty()) return static_cast<std::int32_t>(s.size());
  const auto pos = s.rfind(find);
  return pos == std::u16string_view::npos ? 0 : static_cast<std::int32_t>(pos + 1);
}

String DecimalText(std::int64_t n) {
  const std::string digits = std::to_string(n);
  return String(digits.begin(), digits.end());
}

String Replace(std::u16string_view s, std::u16string_view find, std::u16string_view with) {
  if (find.empty()) return String(s);
  String out;
  out.reserve(s.size());
  std::size_t from = 0;
  while (true) {
    const auto pos = s.find(find, from);
    if (pos == std::u16string_view::npos) break;
    out.append(s.substr(from, pos - from));
    out.append(with);
    from = pos + find.size();
  }
  out.append(s.substr(from));
  return out;
}

std::vector<String> Split(std::u16string_view s, std::u16string_view delimiter) {
  std::vector<String> parts;
  if (s.empty()) return parts;
  if (delimiter.empty()) {
    parts.emplace_back(s);
    return parts;
  }
  std::size_t from = 0;
  while (true) {
    const auto pos = s.find(delimiter, from);
    if (pos == std::u16string_view::npos) break;
    parts.emplace_back(s.substr(from, pos - from));
    from = pos + delimiter.size();
  }
  parts.emplace_back(s.substr(from));
  return parts;
}

String Left(std::u16string_view s, std::int64_t count) {
  if (count < 0) raise(errInvalidProcedureCall);
  return String(s.substr(0, static_cast<std::size_t>(std::min<std::int64_t>(
                                count, static_cast<std::int64_t>(s.size())))));
}

String Right(std::u16string_view s, std::int64_t count) {
  if (count < 0) raise(errInvalidProcedureCall);
  const auto n =
      static_cast<std::size_t>(std::min<std::int64_t>(count, static_cast<std::int64_t>(s.size())));
  return String(s.substr(s.size() - n));
}

String Mid(std::u16string_view s, std::int64_t start, std::int64_t count) {
  // count -1 stands for the language's omitted Length argument: the rest of the string.
  if (start < 1 || count < -1) raise(errInvalidProcedureCall);
  const auto size = static_cast<std::int64_t>(s.size());
  if (start > size) return {};
  const std::int64_t available = size - (start - 1);
  const std::int64_t n = count == -1 ? available : std::min(count, available);
  return String(s.substr(static_cast<std::size_t>(start - 1), static_cast<std::size_t>(n)));
}

}  // namespace orvo::runtime
