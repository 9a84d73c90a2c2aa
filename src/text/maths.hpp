#pragma once

#include <cstdint>

#include "orvogeneric/types.hpp"
#include "orvogeneric/variant.hpp"

// The numeric procedures behind MathsUtilities: comparisons of measured values to a number of
// significant figures, and whole-number searches in arrays.
namespace orvo::text {

// Ceiling as a Long; Overflow (6) outside the 32-bit range.
std::int32_t RoundUp(double value);
// Both values to 14 significant figures, then to NumSigFigs, then compared exactly.
VBool bEqualDouble(double Double1, double Double2, std::int32_t NumSigFigs = 14);
// Rounded to 12 decimals, so that exact powers of ten give whole numbers.
double Log10(double Number);
// NumSigFigs must be 1 to 14; halves go to the even neighbour.
double dSigFigs(double value, std::int32_t NumSigFigs);
// Rounded to a Long (halves to even) first, so 2.5 counts as even.
VBool IsEven(Currency value);
// Index (when given) receives the position of the first match. A backward search only ever
// looks at an array of exactly one element.
VBool bIntegerInArray(std::int16_t Find, const Variant& vArray, std::int32_t* Index = nullptr,
                      VBool Forwards = VBool::True);
VBool bLongInArray(std::int32_t Find, const Variant& vArray, std::int32_t* Index = nullptr,
                   VBool Forwards = VBool::True);

}  // namespace orvo::text
