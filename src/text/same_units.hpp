#pragma once

#include <cstring>
#include <string_view>

// Whether two texts hold the same code units. The standard comparison of char16_t strings walks
// them a unit at a time; a lookup that recognises the file it was given last compares its whole
// path on every call, and memcmp does that a vector at a time.
namespace orvo::text {

inline bool sameUnits(std::u16string_view a, std::u16string_view b) noexcept {
  return a.size() == b.size() &&
         (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(char16_t)) == 0);
}

}  // namespace orvo::text
