#include <chrono>
#include <memory>

#include "orvogeneric/classes.hpp"
#include "orvogeneric/error.hpp"
#include "orvogeneric/event_loop.hpp"
#include "runtime/errors.hpp"

// The platform's timer needed a hidden window to deliver its ticks; here a timer of the event
// loop of the thread that starts it stands in for the window and its timer control. It runs
// while Enabled is True and Interval above 0, and is stopped the moment either changes or the
// object goes: no tick is raised after that, not even one already due.
namespace orvo {

namespace {

// What the timer control answers for a negative interval: the form never holds one.
constexpr std::int32_t kInvalidPropertyValue = 380;

}  // namespace

struct TimerObject::Impl {
  std::shared_ptr<EventLoop> loop;  // the loop of the running timer, while one runs
  EventLoop::TimerId running = 0;
  std::int16_t interval = 0;
  bool enabled = false;

  Impl() = default;
  Impl(const Impl&) = delete;
  Impl& operator=(const Impl&) = delete;
  ~Impl() { stop(); }

  void stop() noexcept {
    if (running == 0) return;
    loop->stopTimer(running);
    running = 0;
    loop.reset();
  }
};

void TimerObject::Class_Initialize() { impl_ = std::make_shared<Impl>(); }

namespace {

// Starts or stops the loop's timer as Enabled and Interval now say.
template <class Tick>
void follow(TimerObject::Impl& m, Tick tick) {
  m.stop();
  if (!m.enabled || m.interval <= 0) return;
  m.loop = eventLoop();
  m.running = m.loop->startTimer(std::chrono::milliseconds(m.interval), std::move(tick));
}

}  // namespace

void TimerObject::Interval(std::int16_t value) {
  if (value < 0) runtime::raise(kInvalidPropertyValue);
  impl_->interval = value;
  follow(*impl_, [this] { RaiseTimer(); });
}

std::int16_t TimerObject::Interval() { return impl_->interval; }

void TimerObject::Enabled(VBool value) {
  impl_->enabled = isTrue(value);
  follow(*impl_, [this] { RaiseTimer(); });
}

VBool TimerObject::Enabled() { return toVBool(impl_->enabled); }

std::shared_ptr<TimerObject> FactoryMethods::GetTimer(std::int32_t Interval_ms) {
  auto timer = std::make_shared<TimerObject>();
  timer->Enabled(VBool::False);
  // The form's interval is 16-bit: about 32.7 seconds at most, by design.
  if (Interval_ms < -32768 || Interval_ms > 32767) runtime::raise(errOverflow);
  timer->Interval(static_cast<std::int16_t>(Interval_ms));
  return timer;
}

}  // namespace orvo
