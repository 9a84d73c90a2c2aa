#pragma once

#include <string_view>

#include "orvogeneric/variant.hpp"
#include "platform/locale.hpp"

namespace orvo::runtime {

// The platform's Format of a value with a pattern, first day of week Sunday and first week the
// one containing 1 January. Number patterns: "0", "#", ".", ",", "E+"/"E-"/"e+"/"e-", "%",
// quoted and backslash literals, up to four ";" sections; the named formats ("General Number",
// "Currency", "Fixed", "Standard", "Percent", "Scientific", "Yes/No", "True/False", "On/Off",
// "General Date", "Long Date", "Medium Date", "Short Date", "Long Time", "Medium Time",
// "Short Time"); date patterns (d, dd, ddd, dddd, ddddd, dddddd, w, ww, m, mm, mmm, mmmm, q, y,
// yy, yyyy, h, hh, n, nn, s, ss, ttttt, AM/PM, am/pm, A/P, a/p, AMPM, ":" and "/"). Text
// values are parsed as numbers or dates in the regional settings when the pattern needs one;
// an empty pattern gives the plain text of the value. Null gives an empty string.
String Format(const Variant& value, std::u16string_view pattern,
              const platform::RegionalSettings& rs);

}  // namespace orvo::runtime
