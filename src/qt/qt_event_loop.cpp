#include <QTimer>
#include <map>
#include <memory>
#include <mutex>

#include "orvogeneric/event_loop.hpp"
#include "orvogeneric/qt.hpp"

namespace orvo::qt {

namespace {

// Each timer is a QTimer of the thread that started it, so its ticks arrive through that
// thread's event loop. Deleting it drops a tick that is already queued, which keeps the promise
// that nothing runs after stopTimer.
class QtEventLoop final : public EventLoop {
 public:
  TimerId startTimer(std::chrono::milliseconds interval, std::function<void()> tick) override {
    auto timer = std::make_unique<QTimer>();
    timer->setTimerType(Qt::PreciseTimer);
    timer->setInterval(static_cast<int>(interval.count()));
    QObject::connect(timer.get(), &QTimer::timeout, [tick = std::move(tick)] { tick(); });
    timer->start();
    const std::lock_guard lock(mutex_);
    const TimerId id = ++lastId_;
    timers_.emplace(id, std::move(timer));
    return id;
  }

  void stopTimer(TimerId id) override {
    std::unique_ptr<QTimer> timer;
    {
      const std::lock_guard lock(mutex_);
      const auto it = timers_.find(id);
      if (it == timers_.end()) return;
      timer = std::move(it->second);
      timers_.erase(it);
    }
    timer->stop();
  }

 private:
  std::mutex mutex_;
  TimerId lastId_ = 0;
  std::map<TimerId, std::unique_ptr<QTimer>> timers_;
};

}  // namespace

void installEventLoop() { setEventLoop(std::make_shared<QtEventLoop>()); }

}  // namespace orvo::qt
