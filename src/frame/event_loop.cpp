#include "orvogeneric/event_loop.hpp"

#include <algorithm>
#include <atomic>
#include <map>
#include <mutex>
#include <vector>

#include "platform/waitable_timer.hpp"

namespace orvo {

EventLoop::~EventLoop() = default;

namespace {

using Clock = platform::WaitableTimer::Clock;

// The timers a thread started on the library's own loop. Each thread keeps its own, so that
// ticks run where they were asked for without any lock or cross-thread hand-off.
class ThreadTimers {
 public:
  EventLoop::TimerId start(std::chrono::milliseconds interval, std::function<void()> tick) {
    static std::atomic<EventLoop::TimerId> nextId{1};
    const EventLoop::TimerId id = nextId.fetch_add(1, std::memory_order_relaxed);
    // A zero or negative interval would tick on every dispatch and starve the thread.
    const auto step = std::max(interval, std::chrono::milliseconds(1));
    timers_.emplace(id, Entry{step, Clock::now() + step, std::move(tick)});
    rearm();
    return id;
  }

  void stop(EventLoop::TimerId id) {
    timers_.erase(id);
    rearm();
  }

  std::size_t dispatch() {
    alarm_.clear();
    const auto now = Clock::now();
    std::vector<EventLoop::TimerId> due;
    for (const auto& [id, entry] : timers_) {
      if (entry.due <= now) due.push_back(id);
    }
    std::size_t ran = 0;
    for (const EventLoop::TimerId id : due) {
      // A tick may stop its own timer or another one that was due in the same round.
      auto it = timers_.find(id);
      if (it == timers_.end()) continue;
      // Missed ticks are not caught up: the next one is an interval after this one.
      it->second.due = now + it->second.interval;
      const std::function<void()> tick = it->second.tick;
      tick();
      ++ran;
    }
    rearm();
    return ran;
  }

  std::size_t runFor(std::chrono::milliseconds timeout) {
    const auto deadline = Clock::now() + timeout;
    std::size_t ran = 0;
    for (;;) {
      const auto left =
          std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
      if (left.count() <= 0) break;
      if (alarm_.wait(left)) ran += dispatch();
    }
    return ran;
  }

  [[nodiscard]] std::intptr_t handle() const noexcept { return alarm_.handle(); }

 private:
  struct Entry {
    std::chrono::milliseconds interval;
    Clock::time_point due;
    std::function<void()> tick;
  };

  void rearm() {
    if (timers_.empty()) {
      alarm_.disarm();
      return;
    }
    auto earliest = Clock::time_point::max();
    for (const auto& [id, entry] : timers_) earliest = std::min(earliest, entry.due);
    alarm_.arm(earliest);
  }

  std::map<EventLoop::TimerId, Entry> timers_;
  platform::WaitableTimer alarm_;
};

ThreadTimers& threadTimers() {
  thread_local ThreadTimers timers;
  return timers;
}

class OwnLoop final : public EventLoop {
 public:
  TimerId startTimer(std::chrono::milliseconds interval, std::function<void()> tick) override {
    return threadTimers().start(interval, std::move(tick));
  }
  void stopTimer(TimerId id) override { threadTimers().stop(id); }
};

std::mutex gMutex;
std::shared_ptr<EventLoop>& current() {
  static std::shared_ptr<EventLoop> loop = std::make_shared<OwnLoop>();
  return loop;
}

}  // namespace

std::shared_ptr<EventLoop> setEventLoop(std::shared_ptr<EventLoop> loop) {
  if (!loop) loop = std::make_shared<OwnLoop>();
  const std::lock_guard lock(gMutex);
  std::swap(current(), loop);
  return loop;
}

std::shared_ptr<EventLoop> eventLoop() {
  const std::lock_guard lock(gMutex);
  return current();
}

std::intptr_t ownLoopWaitHandle() { return threadTimers().handle(); }

std::size_t dispatchDueTimers() { return threadTimers().dispatch(); }

std::size_t runDueTimersFor(std::chrono::milliseconds timeout) {
  return threadTimers().runFor(timeout);
}

}  // namespace orvo
