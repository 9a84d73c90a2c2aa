#include <string_view>
#include <vector>

#include "runtime/strings.hpp"
#include "text/strings.hpp"

namespace orvo::text {

namespace {

// Runs of spaces as single spaces: what replacing "  " by " " until nothing changes leaves.
template <class Sink>
void forEachSpaceSeparated(std::u16string_view s, Sink sink) {
  std::size_t start = 0;
  while (true) {
    const std::size_t space = s.find(u' ', start);
    if (space == std::u16string_view::npos) {
      sink(s.substr(start));
      return;
    }
    sink(s.substr(start, space - start));
    start = s.find_first_not_of(u' ', space);
    if (start == std::u16string_view::npos) {
      sink(std::u16string_view());
      return;
    }
  }
}

}  // namespace

std::int32_t StringCount(const String& StringToSearch, const String& StringToCount) {
  // The count of pieces a Split would give, less one, without making the pieces.
  if (StringToSearch.empty() || StringToCount.empty()) return 0;
  std::int64_t count = 0;
  for (std::size_t at = StringToSearch.find(StringToCount); at != String::npos;
       at = StringToSearch.find(StringToCount, at + StringToCount.size())) {
    ++count;
  }
  return static_cast<std::int32_t>(count);
}

String ReplaceMultipleSpaces(const String& text) {
  String out;
  out.reserve(text.size());
  bool first = true;
  forEachSpaceSeparated(text, [&](std::u16string_view word) {
    if (!first) out += u' ';
    out += word;
    first = false;
  });
  return out;
}

Variant SplitOnSpaces(const String& text, std::int32_t* NumWords, VBool TrimFirst) {
  const std::u16string_view s = nonZero(TrimFirst) ? runtime::trimView(text) : text;
  PackedStrings words;
  if (!s.empty()) forEachSpaceSeparated(s, [&](std::u16string_view w) { words.push_back(w); });
  if (NumWords != nullptr) *NumWords = static_cast<std::int32_t>(words.size());
  return Variant(SafeArray(0, std::move(words)));
}

std::int32_t LenTrim(const String& CharString) {
  return static_cast<std::int32_t>(runtime::trimView(CharString).size());
}

}  // namespace orvo::text
