#pragma once

#include <cstdint>

namespace orvo::platform {

// The calling thread's last Windows error number, as the platform keeps it for GetLastError:
// set where a call fails, so that a caller who only learned "false" can ask why afterwards.
void setLastError(std::uint32_t error) noexcept;
std::uint32_t lastError() noexcept;

}  // namespace orvo::platform
