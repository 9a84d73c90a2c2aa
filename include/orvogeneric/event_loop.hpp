#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>

#include "orvogeneric/export.hpp"

namespace orvo {

// The library has no main loop of its own: periodic work (timer objects) runs on the thread
// that asked for it, through the event loop of the program that owns that thread. A Qt host
// installs one on QTimer, a GLib host one on g_timeout_add; a host without either uses the
// library's own loop below.
class ORVO_API EventLoop {
 public:
  using TimerId = std::uint64_t;

  EventLoop() = default;
  EventLoop(const EventLoop&) = delete;
  EventLoop& operator=(const EventLoop&) = delete;
  virtual ~EventLoop();

  // Called on the owner thread: from now on, tick runs on that same thread every interval
  // (a tick missed while the thread was busy is lost, not caught up). Returns a non-zero id.
  virtual TimerId startTimer(std::chrono::milliseconds interval, std::function<void()> tick) = 0;
  // Called on the owner thread: no tick of that timer runs after this returns, not even one
  // that was already due.
  virtual void stopTimer(TimerId id) = 0;
};

// Installs the event loop for the whole process and returns the previous one; an empty pointer
// restores the library's own loop.
ORVO_API std::shared_ptr<EventLoop> setEventLoop(std::shared_ptr<EventLoop> loop);
ORVO_API std::shared_ptr<EventLoop> eventLoop();

// The library's own loop. Each thread has its own timers: a host adds the thread's wait handle
// (a file descriptor on POSIX) to its own poll, and calls dispatchDueTimers on that thread
// when it becomes readable, or calls runDueTimersFor to wait and dispatch in one go.
ORVO_API std::intptr_t ownLoopWaitHandle();
// Runs the calling thread's ticks that are due; returns how many ran.
ORVO_API std::size_t dispatchDueTimers();
// Waits up to timeout for ticks of the calling thread's timers, running each as it falls due.
ORVO_API std::size_t runDueTimersFor(std::chrono::milliseconds timeout);

}  // namespace orvo
