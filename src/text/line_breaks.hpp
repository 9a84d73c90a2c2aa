#pragma once

#include <cstddef>
#include <cstdint>

// Where lines end in text held in memory. CR and LF both end a line, so a search for one of
// them alone would cross every line ended by the other: a file of CR-only lines read that way
// costs the square of its length.
namespace orvo::text {

// The first CR or LF in p[0, n), or n.
std::size_t findLineBreak(const std::uint8_t* p, std::size_t n) noexcept;
// The same in UTF-16 units in host order.
std::size_t findLineBreak(const char16_t* p, std::size_t n) noexcept;

}  // namespace orvo::text
