#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "orvogeneric/types.hpp"

// The scalar forms that orvo's JSON reader and writer share: dates, currency amounts and
// numbers as JSON text, the excerpt of bad input a message quotes, and the errors a bad value
// raises.
namespace orvo::cli::json {

inline constexpr std::size_t kQuoteLimit = 40;  // bytes of bad input a message repeats

// At most kQuoteLimit bytes of the input, cut on a character boundary, as readable text.
std::string excerpt(std::string_view text);
[[noreturn]] void badArgument(const std::string& why);
[[noreturn]] void overflow(const std::string& why);

// "YYYY-MM-DD" or "YYYY-MM-DDTHH:MM:SS" to the automation date, and back as {"date": ...}.
Date parseDate(std::u16string_view text);
void appendDate(std::string& out, Date date);
// "[-+]digits[.digits]" with at most four decimals, and back as {"currency": ...}.
Currency parseCurrency(std::u16string_view text);
void appendCurrency(std::string& out, Currency c);
void appendNumber(std::string& out, double v);

// A JSON number's text as a double, whatever the process locale says; beyond the range of a
// double it is infinite (as "1e999" is written for it) or zero.
double parseNumber(std::string_view token);

}  // namespace orvo::cli::json
