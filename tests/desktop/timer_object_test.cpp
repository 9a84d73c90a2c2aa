#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "orvogeneric/automation.hpp"
#include "orvogeneric/classes.hpp"
#include "orvogeneric/event_loop.hpp"
#include "support/test_support.hpp"

namespace orvo {
namespace {

using std::chrono::milliseconds;

// Timers on the library's own loop, pumped by the test as a host's loop would be.
class Timers : public ::testing::Test {
 protected:
  void SetUp() override { previous_ = setEventLoop(nullptr); }
  void TearDown() override { setEventLoop(previous_); }
  std::shared_ptr<EventLoop> previous_;
  FactoryMethods factory_;
};

TEST_F(Timers, GetTimerHandsOutAStoppedTimerWithASixteenBitInterval) {
  struct Case {
    const char* name;
    std::int32_t interval;
    std::int32_t error;  // 0: made, with that interval
  };
  const std::vector<Case> cases = {
      {"the largest interval", 32767, 0}, {"zero", 0, 0},
      {"one past 16 bits", 32768, 6},     {"40000", 40000, 6},
      {"below 16 bits", -32769, 6},       {"negative, within 16 bits", -1, 380},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    if (c.error != 0) {
      EXPECT_EQ(test::errorOf([&] { factory_.GetTimer(c.interval); }).number(), c.error);
      continue;
    }
    const auto timer = factory_.GetTimer(c.interval);
    EXPECT_EQ(timer->Interval(), c.interval);
    EXPECT_EQ(timer->Enabled(), VBool::False);
  }
  const auto byDefault = factory_.GetTimer();
  EXPECT_EQ(byDefault->Interval(), 100);
  EXPECT_EQ(byDefault->Enabled(), VBool::False);
}

TEST_F(Timers, AFiftyMillisecondTimerTicksOnItsOwnersLoop) {
  const auto timer = factory_.GetTimer(50);
  std::vector<std::thread::id> ticks;
  timer->OnTimer([&] { ticks.push_back(std::this_thread::get_id()); });
  runDueTimersFor(milliseconds(300));
  EXPECT_TRUE(ticks.empty()) << "stopped as handed out";
  timer->Enabled(VBool::True);
  runDueTimersFor(milliseconds(1000));
  EXPECT_GE(ticks.size(), 15U);
  EXPECT_LE(ticks.size(), 21U);
  for (const auto& t : ticks) EXPECT_EQ(t, std::this_thread::get_id());
}

TEST_F(Timers, NoTickAfterTheTimerIsStoppedOrReleasedEvenWhenDue) {
  struct Case {
    const char* name;
    void (*stop)(std::shared_ptr<TimerObject>&);
  };
  const std::vector<Case> cases = {
      {"Enabled = False", [](std::shared_ptr<TimerObject>& t) { t->Enabled(VBool::False); }},
      {"Interval = 0", [](std::shared_ptr<TimerObject>& t) { t->Interval(0); }},
      {"released", [](std::shared_ptr<TimerObject>& t) { t.reset(); }},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    auto timer = factory_.GetTimer(5);
    auto ticks = std::make_shared<int>(0);
    timer->OnTimer([ticks] { ++*ticks; });
    timer->Enabled(VBool::True);
    runDueTimersFor(milliseconds(40));
    const int before = *ticks;
    EXPECT_GT(before, 0);
    std::this_thread::sleep_for(milliseconds(20));  // a tick is due now
    c.stop(timer);
    EXPECT_EQ(runDueTimersFor(milliseconds(40)), 0U);
    EXPECT_EQ(*ticks, before);
  }
}

TEST_F(Timers, ANewIntervalTakesEffectWhileRunning) {
  const auto timer = factory_.GetTimer(200);
  int ticks = 0;
  timer->OnTimer([&] { ++ticks; });
  timer->Enabled(VBool::True);
  timer->Interval(10);
  runDueTimersFor(milliseconds(105));
  EXPECT_GE(ticks, 6);
  EXPECT_EQ(timer->Interval(), 10);
  EXPECT_EQ(test::errorOf([&] { timer->Interval(-5); }).number(), 380);
  EXPECT_EQ(timer->Interval(), 10) << "a refused interval changes nothing";
}

TEST_F(Timers, AnAutomationHostHearsTheEventByName) {
  const auto* cls = automation::findClass("TimerObject");
  ASSERT_NE(cls, nullptr);
  EXPECT_FALSE(cls->creatable);
  ASSERT_EQ(cls->events.size(), 1U);
  EXPECT_EQ(cls->events[0].name, "Timer");
  const auto timer = factory_.GetTimer(5);
  std::vector<std::string> heard;
  timer->setEventListener([&](std::string_view event, std::span<Variant> args) {
    heard.emplace_back(event);
    EXPECT_TRUE(args.empty());
  });
  timer->Enabled(VBool::True);
  runDueTimersFor(milliseconds(30));
  timer->Enabled(VBool::False);
  ASSERT_FALSE(heard.empty());
  EXPECT_EQ(heard.front(), "Timer");
}

}  // namespace
}  // namespace orvo
