#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "orvogeneric/types.hpp"

// The string primitives of the applications' language with their exact rules: Trim removes
// blanks (U+0020) only, comparisons are binary on UTF-16 code units, positions are 1-based.
namespace orvo::runtime {

String Trim(std::u16string_view s);
String LTrim(std::u16string_view s);
String RTrim(std::u16string_view s);
std::u16string_view trimView(std::u16string_view s) noexcept;

// Simple one-to-one case mapping of each code point (length preserved; no locale tailoring,
// no expansions such as sharp s to "SS"), which is what the platform's upper-casing does.
String UCase(std::u16string_view s);
// The same mapping of one code unit, for comparing names without copying them; a surrogate is
// its own upper case.
char16_t upperUnit(char16_t c) noexcept;
String LCase(std::u16string_view s);

// 1-based position of find in s from start (1-based), 0 when absent. An empty find gives start
// when start <= len(s) + 1... as the language defines it.
std::int32_t InStr(std::int32_t start, std::u16string_view s, std::u16string_view find) noexcept;
std::int32_t InStrRev(std::u16string_view s, std::u16string_view find) noexcept;

// A whole number as decimal text, as the language's Str without its leading blank.
String DecimalText(std::int64_t n);

// Every occurrence, left to right, non-overlapping; an empty find returns s unchanged.
String Replace(std::u16string_view s, std::u16string_view find, std::u16string_view with);

// Split: an empty s gives no elements (bounds 0 to -1); an empty delimiter gives s whole.
std::vector<String> Split(std::u16string_view s, std::u16string_view delimiter);

// Left/Mid/Right clamp to the string like the language's functions (no error for long counts).
String Left(std::u16string_view s, std::int64_t count);
String Right(std::u16string_view s, std::int64_t count);
String Mid(std::u16string_view s, std::int64_t start, std::int64_t count = -1);

}  // namespace orvo::runtime
