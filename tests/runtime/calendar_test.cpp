#include "orvogeneric/calendar.hpp"

#include <gtest/gtest.h>

#include "support/test_support.hpp"

namespace orvo {
namespace {

TEST(Calendar, SerialDaysOfTheProlepticCalendar) {
  for (const auto& row : test::readTestData("runtime/calendar.tsv", 5)) {
    SCOPED_TRACE("data line " + std::to_string(row.line));
    const auto& f = row.fields;
    const std::int64_t serialDay = test::integerOf(f[3]);
    EXPECT_EQ(daysFromCivil(test::integerOf(f[0]), static_cast<int>(test::integerOf(f[1])),
                            static_cast<int>(test::integerOf(f[2]))),
              serialDay);
    int year = 0;
    int month = 0;
    int day = 0;
    civilFromDays(serialDay, year, month, day);
    EXPECT_EQ(
        fromUtf8(std::to_string(year) + "-" + std::to_string(month) + "-" + std::to_string(day)),
        f[4]);
  }
}

}  // namespace
}  // namespace orvo
