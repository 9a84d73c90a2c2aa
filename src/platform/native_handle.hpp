#pragma once

#include <cstdint>

namespace orvo::platform {

// What the operating system hands out for an open file, timer or lock: a descriptor on POSIX,
// a HANDLE on Windows. Wide enough for both; callers only store it and pass it back.
using NativeHandle = std::intptr_t;
inline constexpr NativeHandle kInvalidHandle = -1;

}  // namespace orvo::platform
