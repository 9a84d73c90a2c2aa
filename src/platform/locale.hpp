#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>

#include "orvogeneric/types.hpp"

namespace orvo::platform {

// What the user's regional settings say about numbers and dates, in the platform's own terms
// (Windows picture strings such as "M/d/yyyy" and "h:mm:ss tt"), so that the conversions above
// can be written once against Windows semantics.
struct RegionalSettings {
  std::string localeName;  // e.g. "en_US", "de_DE"
  std::uint32_t lcid = 0x0409;
  String decimalSeparator = u".";
  String thousandSeparator = u",";
  std::int32_t groupSize = 3;  // digits per group ("3;0")
  String listSeparator = u",";
  String currencySymbol = u"$";
  std::int32_t currencyPositiveMode = 0;  // 0 "$1", 1 "1$", 2 "$ 1", 3 "1 $"
  std::int32_t currencyNegativeMode = 0;  // as LOCALE_INEGCURR: 0 "($1)", 8 "-1 $" ...
  std::int32_t currencyDigits = 2;
  std::array<String, 12> monthNames;
  std::array<String, 12> abbrevMonthNames;
  std::array<String, 7> dayNames;  // Sunday first
  std::array<String, 7> abbrevDayNames;
  String shortDate = u"M/d/yyyy";
  String longDate = u"dddd, MMMM d, yyyy";
  String timeFormat = u"h:mm:ss tt";  // the long time format
  String am = u"AM";
  String pm = u"PM";
  // The locale's default code pages (0 and 1 for a Unicode-only locale); the one the system
  // converts with is systemAnsiCodePage() in codepage.hpp.
  std::uint32_t ansiCodePage = 1252;
  std::uint32_t oemCodePage = 437;
};

// The user's locale name on POSIX: LC_ALL, then the category variable (LC_NUMERIC, LC_TIME, or
// LC_CTYPE for the system locale), then LANG; unset, empty, "C" and "POSIX" mean English
// (United States). The encoding and modifier parts ("de_DE.UTF-8@euro") are dropped.
std::string userLocaleName(const char* categoryVariable = "LC_NUMERIC");

// Settings of a named locale ("de_DE", "fr-FR"); unknown names fall back to en_US data.
std::shared_ptr<const RegionalSettings> regionalSettingsFor(const std::string& localeName);

// The user's settings, read from the environment on each call and cached per locale name, so a
// test that changes LC_ALL sees the new locale while a host pays for ICU only once.
std::shared_ptr<const RegionalSettings> userRegionalSettings();

}  // namespace orvo::platform
