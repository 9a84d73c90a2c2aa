#include "runtime/dates.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <climits>
#include <ctime>
#include <limits>

#include "runtime/convert.hpp"
#include "runtime/golden_cases.hpp"
#include "support/test_support.hpp"

namespace orvo::test {
namespace {

using namespace runtime_golden;
namespace rt = orvo::runtime;

// The general date text of a Date, as recorded.
TEST(DatesGolden, EveryRecordedDateRow) {
  std::vector<GoldenCase> dates = goldenCases("number_to_text.tsv");
  std::erase_if(dates, [](const GoldenCase& c) { return c.type != "DATE"; });
  const std::vector<KnownDeviation> deviations = {
      {"wine-german-short-date",
       "Wine's German short date is CLDR's d.M.yyyy; Windows writes dd.MM.yyyy.", 12,
       [](const GoldenCase& c) {
         return c.locale == "1031" && padGermanShortDates(c.expected) != c.expected;
       },
       [](const GoldenCase& c) { return padGermanShortDates(c.expected); }},
  };
  runGolden(dates, deviations,
            [](const GoldenCase& c) { return rt::CStr(variantFor(c), settingsFor(c.locale)); });
}

std::array<int, 3> ymdOf(Date date) {
  const rt::DateParts p = rt::splitDate(date);
  return {p.year, p.month, p.day};
}

TEST(DatesDateSerial, MonthsAndDaysCarryAndTwoDigitYearsPivot) {
  struct Case {
    int y, m, d;
    std::array<int, 3> expected;
  };
  const Case table[] = {
      {2026, 13, 1, {2027, 1, 1}},  {2026, 3, 0, {2026, 2, 28}},   {2024, 3, 0, {2024, 2, 29}},
      {2026, 0, 1, {2025, 12, 1}},  {2026, -13, 1, {2024, 11, 1}}, {2026, 25, 1, {2028, 1, 1}},
      {2026, 1, 366, {2027, 1, 1}}, {2026, 1, -30, {2025, 12, 1}}, {1900, 2, 29, {1900, 3, 1}},
      {2000, 2, 29, {2000, 2, 29}}, {0, 6, 1, {2000, 6, 1}},       {29, 6, 1, {2029, 6, 1}},
      {30, 6, 1, {1930, 6, 1}},     {99, 6, 1, {1999, 6, 1}},      {100, 6, 1, {100, 6, 1}},
      {29, 13, 1, {2030, 1, 1}},  // the pivot applies before months carry
  };
  for (const Case& c : table) {
    EXPECT_EQ(ymdOf(rt::DateSerial(c.y, c.m, c.d)), c.expected) << c.y << "," << c.m << "," << c.d;
  }
  // Serials at day 0 and the ends of the range; outside it Invalid procedure call (5).
  EXPECT_EQ(rt::DateSerial(1899, 12, 30).serial, 0);
  EXPECT_EQ(rt::DateSerial(100, 1, 1).serial, -657434);
  EXPECT_EQ(rt::DateSerial(9999, 12, 31).serial, 2958465);
  const std::array<int, 3> outside[] = {{10000, 1, 1},   {9999, 12, 32},  {9999, 13, 1},
                                        {100, 1, 0},     {-1, 1, 1},      {2026, 1, INT_MAX},
                                        {INT_MAX, 1, 1}, {INT_MIN, 1, 1}, {2026, INT_MIN, 1}};
  for (const auto& [y, m, d] : outside) {
    EXPECT_EQ(errorNumber([&] { (void)rt::DateSerial(y, m, d); }), 5) << y << "," << m << "," << d;
  }
}

TEST(DatesTimeSerial, TimesCarryIntoDays) {
  struct Case {
    int h, m, s;
    double serial;
  };
  const Case table[] = {
      {12, 0, 0, 0.5},
      {24, 0, 0, 1.0},
      {0, 90, 0, 1.5 / 24},
      {0, 0, 86400, 1.0},
      // Before day 0 the serial keeps its day and a forward time: 18:00 on 12/29/1899 is -1.75.
      {-6, 0, 0, -1.75},
      {-24, 0, 0, -1.0},
      {-36, 0, 0, -2.5},
      {0, 0, -1, -1 - 86399 / 86400.0}};
  for (const Case& c : table) {
    EXPECT_DOUBLE_EQ(rt::TimeSerial(c.h, c.m, c.s).serial, c.serial)
        << c.h << ":" << c.m << ":" << c.s;
  }
  EXPECT_EQ(errorNumber([] { (void)rt::TimeSerial(INT_MAX, INT_MAX, 0); }), 5);
}

TEST(DatesSplitDate, PartsOfKnownSerials) {
  // Year, month, day, hour, minute, second, weekday (1 = Sunday), day of the year.
  const std::pair<double, std::array<int, 8>> table[] = {
      {0.0, {1899, 12, 30, 0, 0, 0, 7, 364}},
      {-1.75, {1899, 12, 29, 18, 0, 0, 6, 363}},
      {36585.99999, {2000, 2, 29, 23, 59, 59, 3, 60}},
      {2958465.99998, {9999, 12, 31, 23, 59, 58, 6, 365}},
      {45000.99999999, {2023, 3, 16, 0, 0, 0, 5, 75}},  // rounding carries into the next day
  };
  for (const auto& [serial, expected] : table) {
    const rt::DateParts p = rt::splitDate(Date{serial});
    EXPECT_EQ(
        (std::array{p.year, p.month, p.day, p.hour, p.minute, p.second, p.weekday, p.dayOfYear}),
        expected)
        << serial;
  }
  for (const double serial : {1e300, -1e300, std::numeric_limits<double>::quiet_NaN(),
                              std::numeric_limits<double>::infinity()}) {
    EXPECT_EQ(errorNumber([&] { (void)rt::splitDate(Date{serial}); }), 5) << serial;
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

TEST(DatesNow, IsTheLocalClock) {
  auto localSerial = [] {
    const std::time_t now = std::time(nullptr);
    std::tm t{};
    localtime_r(&now, &t);
    return rt::DateSerial(t.tm_year + 1900, t.tm_mon + 1, t.tm_mday).serial +
           rt::TimeSerial(t.tm_hour, t.tm_min, std::min(t.tm_sec, 59)).serial;
  };
  const double before = localSerial();
  const double now = rt::Now().serial;
  EXPECT_GE(now, before);
  EXPECT_LE(now, localSerial());
}

}  // namespace
}  // namespace orvo::test
