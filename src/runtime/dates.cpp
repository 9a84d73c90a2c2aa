#include "runtime/dates.hpp"

#include <cmath>
#include <ctime>

#include "runtime/date_internal.hpp"
#include "runtime/errors.hpp"

namespace orvo::runtime {

namespace detail {

bool isValidSerial(double serial) noexcept {
  // 100-01-01 00:00:00 through 9999-12-31 23:59:59.999...; a negative serial's fraction counts
  // forward from its day, so the whole of 100-01-01 is -657434.999...
  return serial > kMinSerial - 1 && serial < kMaxSerial + 1;
}

double serialFromLinear(double linearDays) {
  if (linearDays >= 0) return linearDays;
  // Before day 0 the serial keeps the day in the integer part and the time as a positive
  // fraction written with the sign of the day: 12/29/1899 06:00 is -1.25, not -0.75.
  const double day = std::floor(linearDays);
  const double time = linearDays - day;
  return time == 0 ? day : day - time;
}

}  // namespace detail

Date DateSerial(int year, int month, int day) {
  std::int64_t y = year;
  if (y >= 0 && y <= 29) {
    y += 2000;
  } else if (y >= 30 && y <= 99) {
    y += 1900;
  }
  // Months carry into years with floor division, so month 0 is December of the year before.
  const std::int64_t months = y * 12 + (static_cast<std::int64_t>(month) - 1);
  const std::int64_t carriedYear = months >= 0 ? months / 12 : -((-months + 11) / 12);
  const int carriedMonth = static_cast<int>(months - carriedYear * 12) + 1;
  if (carriedYear < detail::kMinYear - 1 || carriedYear > detail::kMaxYear + 1) {
    raise(errInvalidProcedureCall);
  }
  const std::int64_t serial =
      daysFromCivil(carriedYear, carriedMonth, 1) + (static_cast<std::int64_t>(day) - 1);
  if (serial < static_cast<std::int64_t>(detail::kMinSerial) ||
      serial > static_cast<std::int64_t>(detail::kMaxSerial)) {
    raise(errInvalidProcedureCall);
  }
  return Date{static_cast<double>(serial)};
}

Date TimeSerial(int hour, int minute, int second) {
  const std::int64_t seconds =
      static_cast<std::int64_t>(hour) * 3600 + static_cast<std::int64_t>(minute) * 60 + second;
  const double serial = detail::serialFromLinear(static_cast<double>(seconds) / 86400.0);
  if (!detail::isValidSerial(serial)) raise(errInvalidProcedureCall);
  return Date{serial};
}

DateParts splitDate(Date date) {
  const double serial = date.serial;
  if (!std::isfinite(serial) || !detail::isValidSerial(serial)) raise(errInvalidProcedureCall);
  auto day = static_cast<std::int64_t>(std::trunc(serial));
  // The fraction is the time of that day whatever the sign of the serial.
  const double fraction = std::fabs(serial - static_cast<double>(day));
  auto seconds = static_cast<std::int64_t>(std::llround(fraction * 86400.0));
  if (seconds >= 86400) {
    // 23:59:59.6 rounds to midnight of the next day, for negative serials too: their time
    // still runs forward from the start of the day.
    seconds -= 86400;
    ++day;
  }
  DateParts parts;
  civilFromDays(day, parts.year, parts.month, parts.day);
  parts.hour = static_cast<int>(seconds / 3600);
  parts.minute = static_cast<int>(seconds / 60 % 60);
  parts.second = static_cast<int>(seconds % 60);
  // Day 0 (1899-12-30) was a Saturday.
  parts.weekday = static_cast<int>(((day % 7) + 7 + 6) % 7) + 1;
  parts.dayOfYear = static_cast<int>(day - daysFromCivil(parts.year, 1, 1)) + 1;
  return parts;
}

Date Now() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  const std::int64_t day = daysFromCivil(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday);
  const int seconds = local.tm_hour * 3600 + local.tm_min * 60 + std::min(local.tm_sec, 59);
  return Date{static_cast<double>(day) + seconds / 86400.0};
}

}  // namespace orvo::runtime
