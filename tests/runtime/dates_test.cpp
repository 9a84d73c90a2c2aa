#include "runtime/dates.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <ctime>
#include <limits>

#include "runtime/convert.hpp"
#include "runtime/golden_cases.hpp"
#include "support/test_support.hpp"

namespace orvo::test {
namespace {

using namespace runtime_golden;
namespace rt = orvo::runtime;

// --- the recording: the general date text of a Date ------------------------------------------

TEST(DatesGolden, EveryRecordedDateRow) {
  std::vector<GoldenCase> dates;
  for (const GoldenCase& c : numberToTextCases()) {
    if (c.type == "DATE") dates.push_back(c);
  }
  ASSERT_GE(dates.size(), 60U);
  const std::vector<KnownDeviation> deviations = {
      {"wine-german-short-date",
       "Wine's German short date is CLDR's d.M.yyyy; Windows writes dd.MM.yyyy.",
       [](const GoldenCase& c) {
         return c.locale == "1031" && padGermanShortDates(c.expected) != c.expected;
       },
       [](const GoldenCase& c) { return padGermanShortDates(c.expected); }},
  };
  const GoldenTally tally = runGolden(dates, deviations, [](const GoldenCase& c) {
    return rt::CStr(variantFor(c), settingsFor(c.locale));
  });
  const std::map<std::string, int> expected = {{"wine-german-short-date", 12}};
  EXPECT_EQ(tally.deviations, expected);
  EXPECT_EQ(tally.checked + tally.deviated(), static_cast<int>(dates.size()));
  RecordProperty("golden_checked", tally.checked);
  RecordProperty("golden_wine_deviations", tally.deviated());
}

// --- DateSerial ------------------------------------------------------------------------------

struct Ymd {
  int y, m, d;
};

Ymd ymdOf(Date date) {
  const rt::DateParts p = rt::splitDate(date);
  return {p.year, p.month, p.day};
}

TEST(DatesDateSerial, KnownSerials) {
  struct Case {
    int y, m, d;
    double serial;
  };
  const Case table[] = {
      {1899, 12, 30, 0},     {1899, 12, 31, 1},    {1900, 1, 1, 2},         {1900, 3, 1, 61},
      {2000, 1, 1, 36526},   {2000, 2, 29, 36585}, {2023, 3, 16, 45001},    {2026, 1, 5, 46027},
      {2026, 11, 15, 46341}, {100, 1, 1, -657434}, {9999, 12, 31, 2958465}, {1899, 12, 29, -1},
  };
  for (const Case& c : table) {
    EXPECT_EQ(rt::DateSerial(c.y, c.m, c.d).serial, c.serial) << c.y << "-" << c.m << "-" << c.d;
  }
}

TEST(DatesDateSerial, MonthsAndDaysCarry) {
  struct Case {
    int y, m, d;
    Ymd expected;
  };
  const Case table[] = {
      {2026, 13, 1, {2027, 1, 1}},   {2026, 3, 0, {2026, 2, 28}},   {2024, 3, 0, {2024, 2, 29}},
      {2026, 1, 0, {2025, 12, 31}},  {2026, 0, 1, {2025, 12, 1}},   {2026, -1, 15, {2025, 11, 15}},
      {2026, -12, 1, {2024, 12, 1}}, {2026, -13, 1, {2024, 11, 1}}, {2026, 25, 1, {2028, 1, 1}},
      {2026, 2, 29, {2026, 3, 1}},   {2026, 1, 366, {2027, 1, 1}},  {2026, 1, -30, {2025, 12, 1}},
      {1900, 2, 29, {1900, 3, 1}},   {2000, 2, 29, {2000, 2, 29}},  {2026, 12, 32, {2027, 1, 1}},
  };
  for (const Case& c : table) {
    const Ymd got = ymdOf(rt::DateSerial(c.y, c.m, c.d));
    EXPECT_EQ(got.y, c.expected.y) << c.y << "," << c.m << "," << c.d;
    EXPECT_EQ(got.m, c.expected.m) << c.y << "," << c.m << "," << c.d;
    EXPECT_EQ(got.d, c.expected.d) << c.y << "," << c.m << "," << c.d;
  }
}

TEST(DatesDateSerial, TwoDigitYearsPivotAtThirty) {
  struct Case {
    int year;
    int expected;
  };
  const Case table[] = {{0, 2000}, {26, 2026}, {29, 2029}, {30, 1930}, {99, 1999}, {100, 100}};
  for (const Case& c : table) {
    EXPECT_EQ(ymdOf(rt::DateSerial(c.year, 6, 1)).y, c.expected) << c.year;
  }
  // The pivot applies to the given year before months carry.
  EXPECT_EQ(ymdOf(rt::DateSerial(29, 13, 1)).y, 2030);
}

TEST(DatesDateSerial, OutOfRangeIsInvalidProcedureCall) {
  struct Case {
    int y, m, d;
  };
  const Case table[] = {{10000, 1, 1},
                        {9999, 12, 32},
                        {100, 1, 0},
                        {-1, 1, 1},
                        {2026, 1, 2147483647},
                        {2147483647, 1, 1},
                        {-2147483647 - 1, 1, 1},
                        {2026, -2147483647 - 1, 1},
                        {9999, 13, 1}};
  for (const Case& c : table) {
    EXPECT_EQ(errorNumber([&] { (void)rt::DateSerial(c.y, c.m, c.d); }), 5)
        << c.y << "," << c.m << "," << c.d;
  }
}

// --- TimeSerial ------------------------------------------------------------------------------

TEST(DatesTimeSerial, TimesCarryIntoDays) {
  struct Case {
    int h, m, s;
    double serial;
  };
  const Case table[] = {
      {12, 0, 0, 0.5},
      {6, 0, 0, 0.25},
      {24, 0, 0, 1.0},
      {0, 90, 0, 1.5 / 24},
      {0, 0, 86400, 1.0},
      // Before midnight of day 0 the serial keeps its day and a forward time: 18:00 on
      // 12/29/1899 is -1.75.
      {-6, 0, 0, -1.75},
      {-24, 0, 0, -1.0},
      {-36, 0, 0, -2.5},
  };
  for (const Case& c : table) {
    EXPECT_DOUBLE_EQ(rt::TimeSerial(c.h, c.m, c.s).serial, c.serial)
        << c.h << ":" << c.m << ":" << c.s;
  }
  const rt::DateParts p = rt::splitDate(rt::TimeSerial(0, 0, -1));
  EXPECT_EQ(p.year, 1899);
  EXPECT_EQ(p.month, 12);
  EXPECT_EQ(p.day, 29);
  EXPECT_EQ(p.hour, 23);
  EXPECT_EQ(p.minute, 59);
  EXPECT_EQ(p.second, 59);
  EXPECT_EQ(errorNumber([] { (void)rt::TimeSerial(2147483647, 2147483647, 0); }), 5);
}

// --- splitDate -------------------------------------------------------------------------------

TEST(DatesSplitDate, PartsOfKnownSerials) {
  struct Case {
    double serial;
    rt::DateParts parts;
  };
  const Case table[] = {
      {0.0, {1899, 12, 30, 0, 0, 0, 7, 364}},
      {46341.2036, {2026, 11, 15, 4, 53, 11, 1, 319}},
      {36585.99999, {2000, 2, 29, 23, 59, 59, 3, 60}},
      {-1.25, {1899, 12, 29, 6, 0, 0, 6, 363}},
      {-1.75, {1899, 12, 29, 18, 0, 0, 6, 363}},
      {-0.25, {1899, 12, 30, 6, 0, 0, 7, 364}},
      {61.5, {1900, 3, 1, 12, 0, 0, 5, 60}},
      {-657434.5, {100, 1, 1, 12, 0, 0, 6, 1}},
      {2958465.99998, {9999, 12, 31, 23, 59, 58, 6, 365}},
      // Rounding to the second carries into the next day, for negative serials forward too.
      {0.99999999, {1899, 12, 31, 0, 0, 0, 1, 365}},
      {-1.99999999, {1899, 12, 30, 0, 0, 0, 7, 364}},
      {45000.99999999, {2023, 3, 16, 0, 0, 0, 5, 75}},
      {1.0 / 172800, {1899, 12, 30, 0, 0, 1, 7, 364}},
  };
  for (const Case& c : table) {
    const rt::DateParts p = rt::splitDate(Date{c.serial});
    EXPECT_EQ(p.year, c.parts.year) << c.serial;
    EXPECT_EQ(p.month, c.parts.month) << c.serial;
    EXPECT_EQ(p.day, c.parts.day) << c.serial;
    EXPECT_EQ(p.hour, c.parts.hour) << c.serial;
    EXPECT_EQ(p.minute, c.parts.minute) << c.serial;
    EXPECT_EQ(p.second, c.parts.second) << c.serial;
    EXPECT_EQ(p.weekday, c.parts.weekday) << c.serial;
    EXPECT_EQ(p.dayOfYear, c.parts.dayOfYear) << c.serial;
  }
}

TEST(DatesSplitDate, EveryDayOfFourCenturiesRoundTrips) {
  // DateSerial and splitDate are inverse over a full 400-year cycle, leap rules included.
  int previousWeekday = rt::splitDate(rt::DateSerial(1799, 12, 31)).weekday;
  for (double serial = rt::DateSerial(1800, 1, 1).serial;
       serial <= rt::DateSerial(2199, 12, 31).serial; serial += 1) {
    const rt::DateParts p = rt::splitDate(Date{serial});
    ASSERT_EQ(rt::DateSerial(p.year, p.month, p.day).serial, serial);
    ASSERT_EQ(p.weekday, previousWeekday % 7 + 1) << serial;
    ASSERT_EQ(rt::DateSerial(p.year, 1, p.dayOfYear).serial, serial);
    previousWeekday = p.weekday;
  }
}

TEST(DatesSplitDate, OutsideTheDateRangeIsInvalidProcedureCall) {
  const double table[] = {2958466.0,
                          -657435.0,
                          1e300,
                          -1e300,
                          std::numeric_limits<double>::quiet_NaN(),
                          std::numeric_limits<double>::infinity()};
  for (double serial : table) {
    EXPECT_EQ(errorNumber([&] { (void)rt::splitDate(Date{serial}); }), 5) << serial;
  }
}

TEST(DatesNow, IsTheLocalClock) {
  const std::time_t before = std::time(nullptr);
  const rt::DateParts p = rt::splitDate(rt::Now());
  const std::time_t after = std::time(nullptr);
  std::tm a{};
  std::tm b{};
  localtime_r(&before, &a);
  localtime_r(&after, &b);
  // Either clock reading may straddle a day change; the date must equal one of them.
  const bool matches =
      (p.year == a.tm_year + 1900 && p.month == a.tm_mon + 1 && p.day == a.tm_mday) ||
      (p.year == b.tm_year + 1900 && p.month == b.tm_mon + 1 && p.day == b.tm_mday);
  EXPECT_TRUE(matches);
}

}  // namespace
}  // namespace orvo::test
