#pragma once

#include <cstdint>

#include "orvogeneric/calendar.hpp"
#include "orvogeneric/types.hpp"

// Date serials: days since 1899-12-30, time as the fraction. Negative serials keep the time as
// a positive fraction of the day counted away from zero, as the automation date does.
namespace orvo::runtime {

struct DateParts {
  int year = 1899;
  int month = 12;
  int day = 30;
  int hour = 0;
  int minute = 0;
  int second = 0;
  int weekday = 7;  // 1 = Sunday ... 7 = Saturday
  int dayOfYear = 364;
};

// DateSerial: months and days outside their range carry (month 13 is January of the next year,
// day 0 the last day of the month before). Years 0-29 mean 2000-2029, 30-99 mean 1930-1999.
// A result outside 100-01-01..9999-12-31 raises Invalid procedure call (5).
Date DateSerial(int year, int month, int day);
Date TimeSerial(int hour, int minute, int second);
// Splits a serial into calendar parts, rounding to the nearest second (23:59:59.6 is midnight of
// the next day). Serials outside 100-01-01..9999-12-31 raise Invalid procedure call (5).
DateParts splitDate(Date date);
// The current local date and time.
Date Now();

// The calendar arithmetic is public (hosts and orvo print any serial); the runtime names it too.
using orvo::civilFromDays;
using orvo::daysFromCivil;

}  // namespace orvo::runtime
