#include "orvogeneric/calendar.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>

namespace {

// The calendar arithmetic itself, beyond the years DateSerial accepts and with days that carry.
TEST(Calendar, SerialDaysOfTheProlepticCalendar) {
  struct Case {
    std::int64_t year;
    int month;
    int day;
    std::int64_t serialDay;
    std::array<int, 3> readBack;  // the calendar date of that serial day
  };
  const Case cases[] = {
      {1899, 12, 30, 0, {1899, 12, 30}},   {1900, 1, 1, 2, {1900, 1, 1}},
      {1900, 2, 29, 61, {1900, 3, 1}},  // no leap day in 1900: the day carries
      {2000, 2, 29, 36585, {2000, 2, 29}}, {2023, 2, 31, 44988, {2023, 3, 3}},
      {100, 1, 1, -657434, {100, 1, 1}},   {9999, 12, 31, 2958465, {9999, 12, 31}},
      {1, 1, 1, -693593, {1, 1, 1}},       {0, 1, 1, -693959, {0, 1, 1}},
      {-17, 6, 18, -700000, {-17, 6, 18}}, {4637, 11, 26, 1000000, {4637, 11, 26}},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(orvo::daysFromCivil(c.year, c.month, c.day), c.serialDay) << c.year;
    std::array<int, 3> back{};
    orvo::civilFromDays(c.serialDay, back[0], back[1], back[2]);
    EXPECT_EQ(back, c.readBack) << c.serialDay;
  }
}

}  // namespace
