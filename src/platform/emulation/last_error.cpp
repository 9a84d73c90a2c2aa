#include "platform/last_error.hpp"

#include "orvogeneric/system_errors.hpp"

namespace orvo::platform {

namespace {
thread_local std::uint32_t gLastError = 0;
}  // namespace

void setLastError(std::uint32_t error) noexcept { gLastError = error; }
std::uint32_t lastError() noexcept { return gLastError; }

}  // namespace orvo::platform

namespace orvo {

std::uint32_t lastSystemError() noexcept { return platform::lastError(); }

}  // namespace orvo
