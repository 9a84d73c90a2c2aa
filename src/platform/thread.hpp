#pragma once

#include <cstdint>

// The running thread as the operating system numbers it.
namespace orvo::platform {

// The system-wide identifier of the calling thread (GetCurrentThreadId on Windows, the kernel's
// task id on Linux): trace lines carry it so that two threads' lines can be told apart in a log
// that several processes append to.
std::int64_t currentThreadId() noexcept;

}  // namespace orvo::platform
