#include "runtime/dates.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <functional>
#include <map>

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
  runGolden("dates", dates,
            [](const GoldenCase& c) { return rt::CStr(variantFor(c), settingsFor(c.locale)); });
}

TEST(DatesTable, SerialsAndTheirParts) {
  using Args = std::vector<String>;
  auto n = [](const String& field) { return static_cast<int>(integerOf(field)); };
  const std::map<String, std::function<Variant(const Args&)>> calls = {
      {u"DateSerial",
       [&](const Args& a) {
         return Variant(datePartsOf(rt::DateSerial(n(a[0]), n(a[1]), n(a[2]))));
       }},
      {u"serial",
       [&](const Args& a) { return Variant(rt::DateSerial(n(a[0]), n(a[1]), n(a[2]))); }},
      {u"TimeSerial",
       [&](const Args& a) { return Variant(rt::TimeSerial(n(a[0]), n(a[1]), n(a[2]))); }},
      {u"splitDate",
       [](const Args& a) {
         const Date date{parseHexDouble(a[0])};
         const rt::DateParts p = rt::splitDate(date);
         return Variant(datePartsOf(date) + fromUtf8(" " + std::to_string(p.weekday) + " " +
                                                     std::to_string(p.dayOfYear)));
       }},
  };
  for (const auto& row : readTestData("runtime/dates.tsv", 5)) {
    const Args& f = row.fields;
    expectCall(row, f[4], [&] { return calls.at(f[0])({f[1], f[2], f[3]}); });
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
