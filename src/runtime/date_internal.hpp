#pragma once

#include <cstdint>

// Calendar arithmetic shared by the date conversions and Format.
namespace orvo::runtime::detail {

inline constexpr int kMinYear = 100;
inline constexpr int kMaxYear = 9999;
inline constexpr double kMinSerial = -657434;  // 100-01-01
inline constexpr double kMaxSerial = 2958465;  // 9999-12-31

// Whether the serial lies within 100-01-01 00:00:00 .. 9999-12-31 23:59:59.
bool isValidSerial(double serial) noexcept;
// Days on a plain time line (negative times count back from 1899-12-30 00:00) to the automation
// serial, whose time fraction always counts forward from the start of its day.
double serialFromLinear(double linearDays);

}  // namespace orvo::runtime::detail
