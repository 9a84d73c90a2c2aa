#pragma once

#include <compare>
#include <cstdint>
#include <string>

#include "orvogeneric/enums.hpp"
#include "orvogeneric/export.hpp"

namespace orvo {

// Text at the interface is UTF-16, exactly as the applications pass it: lengths, positions and
// comparisons are in code units.
using String = std::u16string;

// The automation boolean. True is all bits set (-1). Several operations compare with True
// rather than testing for non-zero, so a non-canonical 1 must survive the trip.
enum class VBool : std::int16_t { False = 0, True = -1 };

constexpr VBool toVBool(bool b) noexcept { return b ? VBool::True : VBool::False; }
// Equality with the canonical true value: 1 is *not* true here.
constexpr bool isTrue(VBool b) noexcept { return b == VBool::True; }
// The language's own test in an If statement: any non-zero value.
constexpr bool nonZero(VBool b) noexcept { return b != VBool::False; }
constexpr std::int16_t value(VBool b) noexcept { return static_cast<std::int16_t>(b); }

// Signed 64-bit fixed point with four decimals.
struct Currency {
  std::int64_t scaled = 0;  // value * 10000
  static constexpr std::int64_t scale = 10000;
  constexpr auto operator<=>(const Currency&) const = default;
  // Rounds to the nearest 1/10000 with halves to even; raises Overflow (6) out of range.
  ORVO_API static Currency fromDouble(double value);
  [[nodiscard]] constexpr double toDouble() const noexcept {
    return static_cast<double>(scaled) / static_cast<double>(scale);
  }
};

// The automation date: days since 1899-12-30, the time of day as the fraction.
struct Date {
  double serial = 0;
  constexpr auto operator<=>(const Date&) const = default;
};

struct RECT {
  std::int32_t Left = 0;
  std::int32_t Top = 0;
  std::int32_t Right = 0;
  std::int32_t Bottom = 0;
  constexpr bool operator==(const RECT&) const = default;
};

// UTF-8 conveniences; the model stays UTF-16. Unpaired surrogates become U+FFFD in UTF-8.
ORVO_API std::string toUtf8(std::u16string_view text);
ORVO_API String fromUtf8(std::string_view text);
// File names, command-line arguments and environment values as the system hands them: bytes
// that are mostly UTF-8. A byte that is not part of valid UTF-8 becomes a lone surrogate
// U+DC80..U+DCFF and turns back into the same byte, so that any name the system gave reaches
// it again byte for byte.
ORVO_API String fromSystemBytes(std::string_view bytes);
ORVO_API std::string toSystemBytes(std::u16string_view text);

}  // namespace orvo
