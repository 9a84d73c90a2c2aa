#include "platform/change_monitor.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <string>

#include "files/files_fixture.hpp"
#include "support/test_support.hpp"

namespace orvo::platform {
namespace {

namespace fs = std::filesystem;

class ChangeMonitor : public test::FilesTest {
 protected:
  void SetUp() override {
    FilesTest::SetUp();
    // The scratch directory by its own name, as the monitor requires.
    dir_ = fs::canonical(dir_);
    struct statfs info {};
    ASSERT_EQ(::statfs(dir_.c_str(), &info), 0);
    if (info.f_type != 0xEF53 && info.f_type != 0x01021994) {
      GTEST_SKIP() << "the scratch directory is not on ext4 or tmpfs";
    }
  }

  [[nodiscard]] NativePath native(const std::string& name) const {
    return NativePath::fromNative((dir_ / name).string());
  }
  std::shared_ptr<const FileWatch> watched(const std::string& name, const std::string& bytes) {
    write(name, bytes);
    auto watch = watchFile(native(name));
    EXPECT_NE(watch, nullptr) << name;
    return watch;
  }
};

// Whether a change made by another process is counted by the next collectChanges.
bool seenAfter(const FileWatch& watch, const std::function<void()>& change) {
  collectChanges();
  const std::uint64_t before = watch.changes();
  EXPECT_TRUE(test::runInProcesses(1, [&](int) {
    change();
    return true;
  }));
  collectChanges();
  return watch.changes() != before;
}

void writeAt(const fs::path& file, const std::string& bytes, int flags) {
  const int fd = ::open(file.c_str(), O_WRONLY | flags);
  ASSERT_GE(fd, 0);
  ASSERT_EQ(::write(fd, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
  ::close(fd);
}

TEST_F(ChangeMonitor, EveryKindOfChangeByAnotherProcessIsCounted) {
  const fs::path other = dir_ / "elsewhere";
  fs::create_directory(other);
  struct Case {
    const char* change;
    std::function<void(const fs::path&)> make;
  };
  const Case cases[] = {
      {"rewritten in place, same size", [](const fs::path& f) { writeAt(f, "[S]\nk=2\n", 0); }},
      {"appended to", [](const fs::path& f) { writeAt(f, "x=1\n", O_APPEND); }},
      {"truncated", [](const fs::path& f) { ::truncate(f.c_str(), 0); }},
      {"opened for writing and closed",
       [](const fs::path& f) { ::close(::open(f.c_str(), O_WRONLY)); }},
      {"replaced by a rename",
       [](const fs::path& f) {
         std::ofstream(f.string() + ".new") << "[S]\nk=2\n";
         fs::rename(f.string() + ".new", f);
       }},
      {"removed", [](const fs::path& f) { fs::remove(f); }},
      {"renamed away", [](const fs::path& f) { fs::rename(f, f.string() + ".old"); }},
      {"made read-only", [](const fs::path& f) { ::chmod(f.c_str(), 0400); }},
      {"given an old time",
       [](const fs::path& f) {
         const timespec times[2] = {{1, 0}, {1, 0}};
         ::utimensat(AT_FDCWD, f.c_str(), times, 0);
       }},
      {"written through a second name in another directory",
       [&other](const fs::path& f) {
         fs::create_hard_link(f, other / "alias");
         writeAt(other / "alias", "[S]\nk=3\n", 0);
       }},
  };
  int n = 0;
  for (const Case& c : cases) {
    const std::string name = "f" + std::to_string(++n) + ".ini";
    const auto watch = watched(name, "[S]\nk=1\n");
    ASSERT_NE(watch, nullptr);
    EXPECT_TRUE(seenAfter(*watch, [&] { c.make(dir_ / name); })) << c.change;
    fs::remove(other / "alias");
  }
}

TEST_F(ChangeMonitor, ChangesToOtherFilesAreNotCounted) {
  const auto watch = watched("settings.ini", "[S]\nk=1\n");
  ASSERT_NE(watch, nullptr);
  write("app.log", "line\n");
  EXPECT_FALSE(seenAfter(*watch, [&] {
    writeAt(dir_ / "app.log", "another line\n", O_APPEND);
    std::ofstream(dir_ / "new.ini") << "[T]\n";
    fs::remove(dir_ / "new.ini");
    // The same bytes read again change nothing.
    std::ifstream(dir_ / "settings.ini").get();
  }));
  EXPECT_TRUE(watch->live());
}

// A watch follows the name: after a replacement, writes to the new file count, even while
// the old file is held open by someone.
TEST_F(ChangeMonitor, AReplacedFileIsWatchedAgain) {
  const auto watch = watched("settings.ini", "[S]\nk=1\n");
  ASSERT_NE(watch, nullptr);
  const int held = ::open((dir_ / "settings.ini").c_str(), O_RDONLY);
  EXPECT_TRUE(seenAfter(*watch, [&] {
    std::ofstream(dir_ / "next.ini") << "[S]\nk=2\n";
    fs::rename(dir_ / "next.ini", dir_ / "settings.ini");
  }));
  const auto again = watchFile(native("settings.ini"));
  ASSERT_NE(again, nullptr);
  EXPECT_TRUE(seenAfter(*again, [&] { writeAt(dir_ / "settings.ini", "[S]\nk=3\n", 0); }));
  ::close(held);
}

// A writer that holds its file open watches only the name and the attributes: its own writes
// (or anyone's) leave the count alone, a rename, removal or change of mode move it on; a
// second watcher that wants the content too gets every change, and so does the first.
TEST_F(ChangeMonitor, ANameWatchIgnoresWritesUntilTheContentIsWatchedToo) {
  write("app.log", "");
  const auto name = watchFile(native("app.log"), WatchFor::NameAndAttributes);
  ASSERT_NE(name, nullptr);
  EXPECT_FALSE(seenAfter(*name, [&] { writeAt(dir_ / "app.log", "line\n", O_APPEND); }));
  EXPECT_TRUE(seenAfter(*name, [&] { ::chmod((dir_ / "app.log").c_str(), 0444); }));
  const auto content = watchFile(native("app.log"), WatchFor::Content);
  ASSERT_NE(content, nullptr);
  EXPECT_TRUE(seenAfter(*content, [&] { ::truncate((dir_ / "app.log").c_str(), 0); }));
  EXPECT_TRUE(seenAfter(*name, [&] { writeAt(dir_ / "app.log", "x", O_WRONLY); }));
  EXPECT_TRUE(seenAfter(*name, [&] { fs::rename(dir_ / "app.log", dir_ / "old.log"); }));
}

TEST_F(ChangeMonitor, OnlyWhatCanBeWatchedExactlyGetsAWatch) {
  write("plain.ini", "[S]\n");
  fs::create_directory(dir_ / "sub");
  write("sub/inner.ini", "[S]\n");
  fs::create_symlink("plain.ini", dir_ / "link.ini");
  fs::create_directory_symlink("sub", dir_ / "linkdir");
  ::mkfifo((dir_ / "fifo").c_str(), 0600);
  const std::string relative = fs::relative(dir_ / "plain.ini").string();
  struct Case {
    const char* path;
    std::string native;
    bool watched;
  };
  const Case cases[] = {
      {"an absolute path", (dir_ / "plain.ini").string(), true},
      {"a file in a subdirectory", (dir_ / "sub/inner.ini").string(), true},
      {"a link", (dir_ / "link.ini").string(), false},
      {"a path through a linked directory", (dir_ / "linkdir/inner.ini").string(), false},
      {"a path through \"..\"", (dir_ / "sub/../plain.ini").string(), false},
      {"a relative path", relative, false},
      {"a missing file", (dir_ / "missing.ini").string(), false},
      {"a directory", (dir_ / "sub").string(), false},
      {"a FIFO", (dir_ / "fifo").string(), false},
      {"a name ending in a slash", (dir_ / "sub").string() + "/", false},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(watchFile(NativePath::fromNative(c.native)) != nullptr, c.watched) << c.path;
  }
}

TEST_F(ChangeMonitor, ARemovedDirectoryEndsItsWatches) {
  fs::create_directory(dir_ / "sub");
  write("sub/a.ini", "[S]\n");
  const auto watch = watchFile(native("sub/a.ini"));
  ASSERT_NE(watch, nullptr);
  EXPECT_TRUE(seenAfter(*watch, [&] { fs::remove_all(dir_ / "sub"); }));
  EXPECT_FALSE(watch->live());
  // A directory of the same name made again is watched afresh.
  fs::create_directory(dir_ / "sub");
  write("sub/a.ini", "[S]\n");
  const auto again = watchFile(native("sub/a.ini"));
  ASSERT_NE(again, nullptr);
  EXPECT_TRUE(seenAfter(*again, [&] { writeAt(dir_ / "sub/a.ini", "x", O_APPEND); }));
}

// A forked child that looks for changes does not take them from its parent.
TEST_F(ChangeMonitor, AChildLeavesItsParentsNewsAlone) {
  const auto watch = watched("settings.ini", "[S]\n");
  ASSERT_NE(watch, nullptr);
  collectChanges();
  const std::uint64_t before = watch->changes();
  EXPECT_TRUE(test::runInProcesses(1, [&](int) {
    writeAt(dir_ / "settings.ini", "x", O_APPEND);
    collectChanges();
    // The child's inherited watch is over: it must watch again to trust anything.
    return !watch->live() && watchFile(native("settings.ini")) != nullptr;
  }));
  collectChanges();
  EXPECT_NE(watch->changes(), before);
  EXPECT_TRUE(watch->live());
}

// More news than the queue holds: every watch counts a change, since any file may have had one.
TEST_F(ChangeMonitor, LostNewsCountsAsAChangeEverywhere) {
  const auto watch = watched("settings.ini", "[S]\n");
  // Two files written in turn: the queue merges an event into an equal one before it.
  const auto busy = watched("busy.log", "");
  const auto busier = watched("busier.log", "");
  ASSERT_NE(watch, nullptr);
  ASSERT_NE(busy, nullptr);
  ASSERT_NE(busier, nullptr);
  std::ifstream limitFile("/proc/sys/fs/inotify/max_queued_events");
  int limit = 16384;
  limitFile >> limit;
  if (limit > 200000) GTEST_SKIP() << "the queue holds " << limit << " events";
  EXPECT_TRUE(seenAfter(*watch, [&] {
    const int fds[2] = {::open((dir_ / "busy.log").c_str(), O_WRONLY | O_APPEND),
                        ::open((dir_ / "busier.log").c_str(), O_WRONLY | O_APPEND)};
    for (int i = 0; i <= limit; ++i) (void)::write(fds[i % 2], "x", 1);
    ::close(fds[0]);
    ::close(fds[1]);
  }));
}

}  // namespace
}  // namespace orvo::platform
