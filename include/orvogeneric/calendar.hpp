#pragma once

#include <cstdint>

#include "orvogeneric/export.hpp"

namespace orvo {

// Day numbers of the automation date (Date::serial's whole part: days since 1899-12-30) for
// dates of the proleptic Gregorian calendar, and back. Every year is accepted, without the year
// window and range checks of DateSerial, so a host can print any serial a Date may hold; a day
// beyond its month carries (February 31 is a March day); month is 1..12.
ORVO_API std::int64_t daysFromCivil(std::int64_t year, int month, int day) noexcept;
ORVO_API void civilFromDays(std::int64_t serialDay, int& year, int& month, int& day) noexcept;

}  // namespace orvo
