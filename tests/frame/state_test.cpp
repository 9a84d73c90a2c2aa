#include "frame/state.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <string>
#include <thread>
#include <vector>

namespace orvo::frame {
namespace {

class StaticGlobalsTest : public ::testing::Test {
 protected:
  void SetUp() override { StaticGlobals::instance().resetForTesting(); }
  void TearDown() override { StaticGlobals::instance().resetForTesting(); }
};

// Threads released together race for the first initialisation and then overwrite the title
// while reading it back. Exactly one initialisation may win, and with all of its fields; every
// title read must be one some thread wrote whole. Titles are long enough to live on the heap,
// so a read racing a write would see freed or half-copied text.
TEST_F(StaticGlobalsTest, StateIsSafeToUseFromSeveralThreads) {
  constexpr int kThreads = 4;
  constexpr int kRounds = 100;
  constexpr int kWrites = 200;
  const String tail(64, u'x');
  StaticGlobals& globals = StaticGlobals::instance();
  for (int round = 0; round < kRounds; ++round) {
    globals.resetForTesting();
    std::atomic<int> winners{0};
    std::atomic<int> torn{0};
    std::latch start(kThreads);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
      threads.emplace_back([&, t] {
        const String name = u"T" + fromUtf8(std::to_string(t));
        start.arrive_and_wait();
        if (globals.initialiseParentApp(name + u"/", name, name)) ++winners;
        for (int i = 0; i < kWrites; ++i) {
          globals.setParentAppTitle(name + tail);
          const String seen = globals.parentAppTitle();
          const bool whole = seen.size() == 2 + tail.size() && seen[0] == u'T' && seen[1] >= u'0' &&
                             seen[1] < u'0' + kThreads && seen.ends_with(tail);
          if (!whole) ++torn;
        }
      });
    }
    for (auto& thread : threads) thread.join();
    ASSERT_EQ(winners.load(), 1) << "round " << round;
    EXPECT_EQ(globals.parentAppPath(), globals.parentAppEXEName() + u"/") << "round " << round;
    ASSERT_EQ(torn.load(), 0) << "round " << round;
  }
}

}  // namespace
}  // namespace orvo::frame
