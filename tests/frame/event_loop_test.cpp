#include "orvogeneric/event_loop.hpp"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace orvo {
namespace {

using std::chrono::milliseconds;

// The library's own loop, as a host without Qt or GLib drives it.
class OwnLoop : public ::testing::Test {
 protected:
  void SetUp() override { previous_ = setEventLoop(nullptr); }
  void TearDown() override { setEventLoop(previous_); }
  std::shared_ptr<EventLoop> previous_;
};

TEST_F(OwnLoop, TicksRunOnTheThreadThatStartedTheTimer) {
  std::vector<std::thread::id> seen;
  const auto id =
      eventLoop()->startTimer(milliseconds(5), [&] { seen.push_back(std::this_thread::get_id()); });
  runDueTimersFor(milliseconds(60));
  eventLoop()->stopTimer(id);
  ASSERT_GE(seen.size(), 3U);
  EXPECT_LE(seen.size(), 12U);
  for (const auto& t : seen) EXPECT_EQ(t, std::this_thread::get_id());
}

TEST_F(OwnLoop, AnotherThreadsTimersNeverRunHere) {
  int ticks = 0;
  std::thread other([&] {
    eventLoop()->startTimer(milliseconds(1), [&] { ++ticks; });
    // The thread ends without dispatching: its timers die with it.
  });
  other.join();
  std::this_thread::sleep_for(milliseconds(5));
  EXPECT_EQ(dispatchDueTimers(), 0U);
  EXPECT_EQ(ticks, 0);
}

TEST_F(OwnLoop, AStoppedTimerDoesNotTickEvenWhenItWasDue) {
  int ticks = 0;
  const auto id = eventLoop()->startTimer(milliseconds(1), [&] { ++ticks; });
  std::this_thread::sleep_for(milliseconds(5));
  eventLoop()->stopTimer(id);
  EXPECT_EQ(dispatchDueTimers(), 0U);
  EXPECT_EQ(ticks, 0);
}

TEST_F(OwnLoop, ATickCanStopATimerDueInTheSameRound) {
  int first = 0;
  int second = 0;
  EventLoop::TimerId secondId = 0;
  const auto firstId = eventLoop()->startTimer(milliseconds(1), [&] {
    ++first;
    eventLoop()->stopTimer(secondId);
  });
  secondId = eventLoop()->startTimer(milliseconds(1), [&] { ++second; });
  std::this_thread::sleep_for(milliseconds(5));
  EXPECT_EQ(dispatchDueTimers(), 1U);
  eventLoop()->stopTimer(firstId);
  EXPECT_EQ(first, 1);
  EXPECT_EQ(second, 0);
}

TEST_F(OwnLoop, MissedTicksAreNotCaughtUp) {
  int ticks = 0;
  const auto id = eventLoop()->startTimer(milliseconds(2), [&] { ++ticks; });
  std::this_thread::sleep_for(milliseconds(30));
  EXPECT_EQ(dispatchDueTimers(), 1U);
  EXPECT_EQ(dispatchDueTimers(), 0U) << "the next tick is an interval after the last one";
  eventLoop()->stopTimer(id);
  EXPECT_EQ(ticks, 1);
}

TEST_F(OwnLoop, TheWaitHandleIsThereForAHostsPoll) {
  EXPECT_NE(ownLoopWaitHandle(), -1);
  EXPECT_EQ(ownLoopWaitHandle(), ownLoopWaitHandle()) << "one per thread, kept";
  std::intptr_t otherThreads = -1;
  std::thread([&] { otherThreads = ownLoopWaitHandle(); }).join();
  EXPECT_NE(otherThreads, ownLoopWaitHandle());
}

TEST_F(OwnLoop, NothingStartedMeansNothingToWaitFor) {
  EXPECT_EQ(runDueTimersFor(milliseconds(10)), 0U);
}

// A host's loop replaces the library's for every timer started after it is installed.
class HostLoop final : public EventLoop {
 public:
  TimerId startTimer(std::chrono::milliseconds interval, std::function<void()> tick) override {
    intervals.push_back(interval);
    ticks.push_back(std::move(tick));
    return ticks.size();
  }
  void stopTimer(TimerId id) override { stopped.push_back(id); }
  std::vector<std::chrono::milliseconds> intervals;
  std::vector<std::function<void()>> ticks;
  std::vector<TimerId> stopped;
};

TEST(EventLoopSeam, AnInstalledLoopTakesTheTimersAndRemovingItRestoresTheOwnLoop) {
  auto host = std::make_shared<HostLoop>();
  const auto previous = setEventLoop(host);
  int ticks = 0;
  const auto id = eventLoop()->startTimer(milliseconds(250), [&] { ++ticks; });
  eventLoop()->stopTimer(id);
  ASSERT_EQ(host->intervals.size(), 1U);
  EXPECT_EQ(host->intervals[0], milliseconds(250));
  host->ticks[0]();
  EXPECT_EQ(ticks, 1);
  EXPECT_EQ(host->stopped, std::vector<EventLoop::TimerId>{id});

  EXPECT_EQ(setEventLoop(nullptr), host);
  EXPECT_NE(eventLoop(), host);
  const auto own = eventLoop()->startTimer(milliseconds(1), [&] { ++ticks; });
  EXPECT_GE(runDueTimersFor(milliseconds(10)), 1U);
  eventLoop()->stopTimer(own);
  setEventLoop(previous);
}

}  // namespace
}  // namespace orvo
