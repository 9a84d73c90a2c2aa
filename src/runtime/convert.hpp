#pragma once

#include <cstdint>

#include "orvogeneric/variant.hpp"
#include "platform/locale.hpp"

// Variant coercion as an automation host does it: what CStr, CDbl and friends do with each
// variant type, with the user's regional settings where text is involved.
namespace orvo::runtime {

// Text of a value: numbers by the default conversions with the regional decimal separator,
// Boolean "True"/"False", dates by the general date form, Empty "". Null raises 94, objects,
// arrays and error values raise Type mismatch (13).
String CStr(const Variant& value, const platform::RegionalSettings& rs);

// Numeric value: strings are parsed as the platform parses numeric text in the regional settings
// (decimal and grouping separators, sign, exponent, currency symbol, "&H" prefixes); text that is
// not a number raises Type mismatch (13). Boolean True is -1. Empty is 0; Null raises 94.
double CDbl(const Variant& value, const platform::RegionalSettings& rs);
std::int16_t CIntV(const Variant& value, const platform::RegionalSettings& rs);
std::int32_t CLngV(const Variant& value, const platform::RegionalSettings& rs);
float CSngV(const Variant& value, const platform::RegionalSettings& rs);
std::uint8_t CByteV(const Variant& value, const platform::RegionalSettings& rs);
// Text converts with all its digits, halves to even at the fourth decimal.
Currency CCur(const Variant& value, const platform::RegionalSettings& rs);
// Text is read as a date and/or time in the regional settings (Type mismatch when it is not
// one); numbers are serials, Overflow (6) outside the date range.
Date CDate(const Variant& value, const platform::RegionalSettings& rs);
// Numbers: non-zero is True; text "True"/"False" (any case) or a number.
VBool CBool(const Variant& value, const platform::RegionalSettings& rs);

// Whether text reads as a number in the regional settings (the language's IsNumeric).
bool IsNumeric(const Variant& value, const platform::RegionalSettings& rs);

// The variant ordering of comparison operators: numbers by value, strings by code units,
// a number against numeric text by value. Returns <0, 0, >0. Null raises 94.
int compareVariants(const Variant& a, const Variant& b, const platform::RegionalSettings& rs);

}  // namespace orvo::runtime
