#include <string_view>

#include "frame/traps.hpp"
#include "platform/codepage.hpp"
#include "text/strings.hpp"

namespace orvo::text {

std::int32_t LenB_ANSI(const String& CharString) {
  return static_cast<std::int32_t>(
      platform::wideToMultiByte(platform::systemAnsiCodePage(), CharString).size());
}

void CorrectDLLStringForDBCS(String& ToCorrect) {
  frame::trap(u"CorrectDLLStringForDBCS", [&] {
    const std::size_t n = ToCorrect.size();
    const std::uint32_t cp = platform::systemAnsiCodePage();
    auto bytesOf = [&](std::size_t length) {
      return platform::wideToMultiByte(cp, std::u16string_view(ToCorrect).substr(0, length)).size();
    };
    // Dropping characters from the end one at a time until the bytes fit is a search for the
    // longest prefix that fits; the byte count never shrinks as the prefix grows, so halving
    // finds the same prefix without converting the text once per character.
    std::size_t keep = n;
    if (bytesOf(n) > n) {
      std::size_t lo = 0;
      std::size_t hi = n;  // bytesOf(lo) <= n < bytesOf(hi)
      while (hi - lo > 1) {
        const std::size_t mid = lo + (hi - lo) / 2;
        (bytesOf(mid) <= n ? lo : hi) = mid;
      }
      keep = lo;
    }
    String corrected = ToCorrect.substr(0, keep);
    corrected.append(n - keep, u' ');
    ToCorrect = std::move(corrected);
  });
}

}  // namespace orvo::text
