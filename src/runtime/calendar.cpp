#include "orvogeneric/calendar.hpp"

#include <cstdint>

namespace orvo {

namespace {
// Day 0 of the automation date, as days since 1970-01-01 in the proleptic Gregorian calendar.
constexpr std::int64_t kEpochShift = -25569;
}  // namespace

std::int64_t daysFromCivil(std::int64_t year, int month, int day) noexcept {
  // Howard Hinnant's algorithm: exact for every year, no tables.
  const std::int64_t y = year - (month <= 2 ? 1 : 0);
  const std::int64_t era = (y >= 0 ? y : y - 399) / 400;
  const auto yoe = static_cast<unsigned>(y - era * 400);
  const unsigned doy = (153 * static_cast<unsigned>(month + (month > 2 ? -3 : 9)) + 2) / 5 +
                       static_cast<unsigned>(day) - 1;
  const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + static_cast<std::int64_t>(doe) - 719468 - kEpochShift;
}

void civilFromDays(std::int64_t serialDay, int& year, int& month, int& day) noexcept {
  const std::int64_t z = serialDay + kEpochShift + 719468;
  const std::int64_t era = (z >= 0 ? z : z - 146096) / 146097;
  const auto doe = static_cast<unsigned>(z - era * 146097);
  const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const unsigned mp = (5 * doy + 2) / 153;
  day = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
  month = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
  year = static_cast<int>(static_cast<std::int64_t>(yoe) + era * 400 + (month <= 2 ? 1 : 0));
}

}  // namespace orvo
