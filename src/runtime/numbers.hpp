#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "orvogeneric/types.hpp"

// Number <-> text as the platform's default variant conversions do it.
namespace orvo::runtime {

// The default conversion of a Double to text: 15 significant digits, trailing zeros dropped,
// plain notation for decimal exponents -4..14 after rounding, otherwise "d.ddE+XX" with at
// least two exponent digits; the given decimal separator and never a grouping mark.
// Infinities and NaNs read as the platform's C runtime spells them ("1.#INF", "-1.#IND").
String doubleToText(double value, std::u16string_view decimalSeparator = u".");
// The same for Single with 7 significant digits.
String singleToText(float value, std::u16string_view decimalSeparator = u".");
// Currency: up to four decimals, trailing zeros dropped.
String currencyToText(Currency value, std::u16string_view decimalSeparator = u".");

// The language's Val: prefix parse, locale-independent ("." only). Blanks, tabs and line feeds
// are skipped anywhere; "&H"/"&O" whole numbers typed like the language's literals (a value
// that fits 16 bits is an Integer, &HFFFF = -1; 32 bits a Long, &HFFFFFFFF = -1); "E" or "D"
// exponents; stops at the first character that does not continue the number; no number gives
// 0. Overflow (6) beyond the double range (tiny values such as 1E-512 give 0) or beyond 32 bits
// for "&H"/"&O".
double Val(std::u16string_view text);

// Rounding conversions: nearest, halves to even; Overflow (6) out of range.
std::int16_t CInt(double value);
std::int32_t CLng(double value);
std::uint8_t CByte(double value);
// To single precision; Overflow (6) when the magnitude is beyond the single range.
float CSng(double value);
// Halves to even at the given number of decimals (the language's Round), a half judged on the
// 15-digit text as the platform's number text does (2.675 is a half). Negative decimals raise
// Invalid procedure call (5).
double RoundHalfEven(double value, int decimals = 0);

}  // namespace orvo::runtime
