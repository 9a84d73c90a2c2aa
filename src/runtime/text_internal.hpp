#pragma once

#include <optional>
#include <string_view>

#include "orvogeneric/types.hpp"
#include "platform/locale.hpp"
#include "runtime/dates.hpp"
#include "runtime/decimal.hpp"

// Pieces of the text conversions that Format and the variant coercions share.
namespace orvo::runtime::detail {

enum class ParseStatus { ok, notNumber, overflow };

struct ParsedNumber {
  ParseStatus status = ParseStatus::notNumber;
  Decimal value;
};

// Numeric text as the platform's variant coercion reads it in the regional settings: blanks
// around, a sign or parentheses before or after, the currency symbol, grouping marks, one
// decimal separator, an exponent, or an "&H"/"&O" whole number (unsigned: "&HFFFF" is 65535).
ParsedNumber parseNumber(std::u16string_view text, const platform::RegionalSettings& rs);

// A date and/or time written in the regional settings ("11/15/2026 4:53:11 AM", "15.11.2026",
// "2026-11-15", "15 November 2026", "4:53 PM"); nullopt when it is not one.
std::optional<double> parseDateText(std::u16string_view text, const platform::RegionalSettings& rs);

// A Windows date or time picture ("M/d/yyyy", "dddd, MMMM d, yyyy", "h:mm:ss tt").
String formatPicture(std::u16string_view picture, const DateParts& parts,
                     const platform::RegionalSettings& rs);

// The general date form: short date and long time, without the date when the serial's day is 0
// and without the time when it has no fraction (serial 0 itself shows its time).
String generalDateText(double serial, const platform::RegionalSettings& rs);

// What "/" and ":" stand for in a Format pattern: the separators of the locale's own pictures.
String dateSeparator(const platform::RegionalSettings& rs);
String timeSeparator(const platform::RegionalSettings& rs);

// Simple case folding for the ASCII and Latin-1 letters that patterns and names use.
char16_t foldCase(char16_t c) noexcept;
bool equalsIgnoreCase(std::u16string_view a, std::u16string_view b) noexcept;

}  // namespace orvo::runtime::detail
