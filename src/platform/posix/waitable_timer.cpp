#include "platform/waitable_timer.hpp"

#include <poll.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>

namespace orvo::platform {

namespace {

int fd(NativeHandle handle) { return static_cast<int>(handle); }

}  // namespace

WaitableTimer::WaitableTimer()
    : handle_(::timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC)) {
  if (handle_ < 0) handle_ = kInvalidHandle;
}

WaitableTimer::~WaitableTimer() {
  if (handle_ != kInvalidHandle) ::close(fd(handle_));
}

void WaitableTimer::arm(Clock::time_point due) {
  if (handle_ == kInvalidHandle) return;
  // steady_clock is CLOCK_MONOTONIC on Linux, so its time points are the timer's absolute times.
  const auto ns = std::chrono::duration_cast<std::chrono::nanoseconds>(due.time_since_epoch());
  itimerspec setting{};
  const std::int64_t count = ns.count() > 0 ? ns.count() : 1;  // 0 would disarm
  setting.it_value.tv_sec = static_cast<time_t>(count / 1'000'000'000);
  setting.it_value.tv_nsec = static_cast<long>(count % 1'000'000'000);
  ::timerfd_settime(fd(handle_), TFD_TIMER_ABSTIME, &setting, nullptr);
}

void WaitableTimer::disarm() {
  if (handle_ == kInvalidHandle) return;
  const itimerspec setting{};
  ::timerfd_settime(fd(handle_), 0, &setting, nullptr);
}

void WaitableTimer::clear() {
  if (handle_ == kInvalidHandle) return;
  std::uint64_t expirations = 0;
  while (::read(fd(handle_), &expirations, sizeof expirations) < 0 && errno == EINTR) {
  }
}

bool WaitableTimer::wait(std::chrono::milliseconds timeout) const {
  if (handle_ == kInvalidHandle) return false;
  pollfd p{fd(handle_), POLLIN, 0};
  const auto ms = timeout.count() < 0            ? 0
                  : timeout.count() > 0x7FFFFFFF ? 0x7FFFFFFF
                                                 : timeout.count();
  int ready = 0;
  do {
    ready = ::poll(&p, 1, static_cast<int>(ms));
  } while (ready < 0 && errno == EINTR);
  return ready > 0;
}

}  // namespace orvo::platform
