#pragma once

#include <algorithm>
#include <cctype>
#include <string_view>

namespace orvo::automation {

// Automation names compare without regard to case; they are ASCII, so no locale is involved.
inline bool sameName(std::string_view a, std::string_view b) noexcept {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
           return std::toupper(static_cast<unsigned char>(x)) ==
                  std::toupper(static_cast<unsigned char>(y));
         });
}

}  // namespace orvo::automation
