#include "platform/thread.hpp"

#include <unistd.h>

namespace orvo::platform {

std::int64_t currentThreadId() noexcept { return static_cast<std::int64_t>(::gettid()); }

}  // namespace orvo::platform
