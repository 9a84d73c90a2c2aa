#pragma once

#include <chrono>
#include <cstdint>

#include "platform/native_handle.hpp"

namespace orvo::platform {

// A one-shot alarm that a thread can wait for, or hand to another program's poll loop: its
// handle becomes ready when the time set has come and stays ready until cleared.
class WaitableTimer {
 public:
  using Clock = std::chrono::steady_clock;

  WaitableTimer();
  WaitableTimer(const WaitableTimer&) = delete;
  WaitableTimer& operator=(const WaitableTimer&) = delete;
  ~WaitableTimer();

  // Invalid when the system refused one (out of descriptors).
  [[nodiscard]] NativeHandle handle() const noexcept { return handle_; }
  // Ready at due (at once when due has passed); replaces any earlier setting.
  void arm(Clock::time_point due);
  void disarm();
  // Makes the handle not ready again.
  void clear();
  // Waits until the handle is ready or the timeout has passed; true when ready.
  bool wait(std::chrono::milliseconds timeout) const;

 private:
  NativeHandle handle_;
};

}  // namespace orvo::platform
