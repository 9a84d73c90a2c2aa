#pragma once

#include <cstdint>

#include "orvogeneric/export.hpp"

namespace orvo {

// The Windows system error numbers (GetLastError's) that the library's file and process calls
// report, e.g. through ProfileWrite's lastError: the applications test for these numbers, so
// they are kept whatever the operating system said.
inline constexpr std::uint32_t kErrorFileNotFound = 2;
inline constexpr std::uint32_t kErrorPathNotFound = 3;
inline constexpr std::uint32_t kErrorAccessDenied = 5;
inline constexpr std::uint32_t kErrorNotEnoughMemory = 8;
inline constexpr std::uint32_t kErrorGenFailure = 31;  // a device is not functioning
inline constexpr std::uint32_t kErrorSharingViolation = 32;
inline constexpr std::uint32_t kErrorFileExists = 80;
inline constexpr std::uint32_t kErrorDiskFull = 112;
inline constexpr std::uint32_t kErrorAlreadyExists = 183;

// The calling thread's last Windows error number, as the platform's GetLastError gives it: set
// by a file call or settings write that failed, so that after a member that answered only false
// (PutStringToINI) the reason can still be asked. A log write (AddToLog) sets it either way, 0
// when its line was written, since it never raises.
ORVO_API std::uint32_t lastSystemError() noexcept;

}  // namespace orvo
