#include "system/processes.hpp"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <thread>

#include "files/files_fixture.hpp"
#include "platform/process.hpp"
#include "support/test_support.hpp"

namespace orvo::system {
namespace {

using Mutexes = test::FilesTest;

TEST_F(Mutexes, OneNameForEveryWayOfWritingADirectory) {
  std::filesystem::create_directory(dir_ / "Data");
  const String a = ORVOMutexName(fromUtf8((dir_ / "Data").string()), u"stub");
  const String b = ORVOMutexName(fromUtf8((dir_ / "Data").string()) + u"/", u"stub");
  const String c = ORVOMutexName(fromUtf8((dir_ / "." / "Data" / ".." / "Data").string()), u"stub");
  EXPECT_EQ(a, b);
  EXPECT_EQ(a, c);
  EXPECT_EQ(a.find(u'\\'), String::npos);
  EXPECT_TRUE(a.ends_with(u"/DATA/STUB")) << test::show(a);
  EXPECT_EQ(ORVOMutexName(path("missing"), u"x"), u"X")
      << "a path that does not exist adds nothing";
}

// A mutex held by another process, which is then killed: the name is free at once.
TEST(NamedMutexTest, HeldAcrossProcessesAndNeverStale) {
  const String name = u"orvo test mutex/" + fromUtf8(std::to_string(::getpid()));
  EXPECT_EQ(MutexAlreadyExists(name), VBool::False);
  int ready[2];
  ASSERT_EQ(::pipe(ready), 0);
  const pid_t holder = ::fork();
  ASSERT_GE(holder, 0);
  if (holder == 0) {
    CreateMutexEnum status = nMUTEX_ERROR;
    const std::int32_t handle = CreateMutex(name, status);
    const char answer = handle != 0 && status == nMUTEX_CREATED ? 'y' : 'n';
    (void)::write(ready[1], &answer, 1);
    ::pause();
    ::_exit(0);
  }
  char answer = 0;
  ASSERT_EQ(::read(ready[0], &answer, 1), 1);
  EXPECT_EQ(answer, 'y');
  test::TraceCapture trace;
  EXPECT_EQ(MutexAlreadyExists(name), VBool::True);
  CreateMutexEnum status = nMUTEX_ERROR;
  EXPECT_EQ(CreateMutex(name, status), 0);
  EXPECT_EQ(status, nMUTEX_EXISTS);
  ASSERT_EQ(trace.messages().size(), 2U);
  EXPECT_EQ(trace.messages()[0],
            u"MutexAlreadyExists: Mutex tested " + name + u": Mutex handle =1: LastDllError =0");
  EXPECT_EQ(trace.messages()[1],
            u"CreateMutex: Mutex created " + name + u": Mutex handle =0, LastDLLError = 183");

  ::kill(holder, SIGKILL);
  int wstatus = 0;
  ASSERT_EQ(::waitpid(holder, &wstatus, 0), holder);
  EXPECT_EQ(MutexAlreadyExists(name), VBool::False) << "released with its killed holder";
  const std::int32_t handle = CreateMutex(name, status);
  EXPECT_NE(handle, 0);
  EXPECT_EQ(status, nMUTEX_CREATED);
  EXPECT_EQ(CreateMutex(name, status), 0) << "a second handle in the same process";
  EXPECT_EQ(status, nMUTEX_EXISTS);
  ::close(handle);
  EXPECT_EQ(MutexAlreadyExists(name), VBool::False);
  ::close(ready[0]);
  ::close(ready[1]);
}

bool reaped(std::int32_t pid) {
  // A child reaped by anyone is no longer ours to wait for.
  for (int i = 0; i < 200; ++i) {
    int status = 0;
    if (::waitpid(pid, &status, WNOHANG) < 0 && errno == ECHILD) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return false;
}

TEST(ProcessTest, RunningAndWaiting) {
  EXPECT_EQ(SyncShell(u"no-such-program-anywhere"), VBool::False);
  EXPECT_EQ(SyncShell(u"sh -c \"exit 0\""), VBool::True);
  EXPECT_EQ(SyncShell(u"sh -c \"exit 3\""), VBool::True) << "the wait succeeded";
  EXPECT_EQ(SyncShell(u"sleep 0.05", 0, VBool::True), VBool::True) << "started counts as idle";

  const std::int32_t slow = platform::startProcess(u"sleep 5");
  ASSERT_GT(slow, 0);
  EXPECT_EQ(WaitForProcess(slow, 50), VBool::True) << "still running";
  ::kill(slow, SIGKILL);
  EXPECT_TRUE(reaped(slow)) << "no zombie after a timed-out wait";

  const std::int32_t quick = platform::startProcess(u"sleep 0.01");
  ASSERT_GT(quick, 0);
  EXPECT_EQ(WaitForProcess(quick, 5000), VBool::False) << "ended within the limit";
  EXPECT_EQ(WaitForProcess(999999999, 10), VBool::False) << "no such process";
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(SyncShell(u"sleep 5", 100), VBool::False) << "timed out";
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(3));
}

TEST(ProcessTest, SmallConversionsAndSleeping) {
  EXPECT_EQ(b1or0ToBoolean(0), VBool::False);
  EXPECT_EQ(b1or0ToBoolean(1), VBool::True);
  const Error e = test::errorOf([] { (void)b1or0ToBoolean(2); });
  EXPECT_NE(e.description().find(u"Invalid input value for conversion: nInput = 2"), String::npos);
  EXPECT_EQ(nBooleanTo1or0(VBool::True), 1);
  EXPECT_EQ(nBooleanTo1or0(static_cast<VBool>(1)), 0);
  EXPECT_EQ(nBooleanTo1or0(VBool::False), 0);
  const Error sleep = test::errorOf([] { SleepCurrentThread(-0.001); });
  EXPECT_NE(sleep.description().find(u"SleepCurrentThread: Infinite wait not allowed"),
            String::npos);
  EXPECT_EQ(test::errorNumber([] { SleepCurrentThread(3e6); }), 6) << "beyond 32 bits";
  SleepCurrentThread(0);
  EXPECT_EQ(IsKeyDown(0x10), VBool::False) << "no desktop, no keys";
}

}  // namespace
}  // namespace orvo::system
