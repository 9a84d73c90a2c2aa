#include "orvogeneric/tool_checks.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "files/files_fixture.hpp"

namespace orvo {
namespace {

// Puts another file on a standard descriptor for the object's lifetime.
class ScopedDescriptor {
 public:
  ScopedDescriptor(int target, int replacement) : target_(target), saved_(::dup(target)) {
    ::dup2(replacement, target);
  }
  ~ScopedDescriptor() {
    ::dup2(saved_, target_);
    ::close(saved_);
  }
  ScopedDescriptor(const ScopedDescriptor&) = delete;
  ScopedDescriptor& operator=(const ScopedDescriptor&) = delete;

 private:
  int target_;
  int saved_;
};

TEST(ToolChecksTest, OnlyATerminalIsATerminal) {
  const int master = ::posix_openpt(O_RDWR | O_NOCTTY);
  ASSERT_GE(master, 0);
  ASSERT_EQ(::grantpt(master), 0);
  ASSERT_EQ(::unlockpt(master), 0);
  const int terminal = ::open(::ptsname(master), O_RDWR | O_NOCTTY);
  ASSERT_GE(terminal, 0);
  int pipe[2];
  ASSERT_EQ(::pipe(pipe), 0);
  const int null = ::open("/dev/null", O_RDWR);
  struct Case {
    const char* name;
    int replacement;
    bool terminal;
  };
  const std::vector<Case> cases = {
      {"a terminal", terminal, true}, {"a pipe", pipe[1], false}, {"a device", null, false}};
  const std::vector<std::pair<StandardStream, int>> streams = {
      {StandardStream::Input, STDIN_FILENO},
      {StandardStream::Output, STDOUT_FILENO},
      {StandardStream::Error, STDERR_FILENO}};
  for (const auto& c : cases) {
    for (const auto& [stream, fd] : streams) {
      const ScopedDescriptor swap(fd, c.replacement);
      const bool answer = isTerminal(stream);
      EXPECT_EQ(answer, c.terminal) << c.name << " on " << fd;
    }
  }
  for (const int fd : {master, terminal, pipe[0], pipe[1], null}) ::close(fd);
}

class ReadAccessTest : public test::FilesTest {};

TEST_F(ReadAccessTest, SaysWhyAFileCannotBeReadWithoutOpeningIt) {
  write("file", "text");
  write("locked", "text");
  ::chmod((dir_ / "locked").c_str(), 0);
  // A pipe nobody writes to: opening it to read would wait for a writer.
  ASSERT_EQ(::mkfifo((dir_ / "fifo").c_str(), 0600), 0);
  const bool privileged = ::geteuid() == 0;  // reads whatever the permissions say
  struct Case {
    const char* name;
    std::filesystem::path path;
    std::errc error;
  };
  const std::vector<Case> cases = {
      {"a readable file", dir_ / "file", std::errc()},
      {"a pipe", dir_ / "fifo", std::errc()},
      {"a directory", dir_, std::errc()},
      {"a missing file", dir_ / "missing", std::errc::no_such_file_or_directory},
      {"a file as a directory", dir_ / "file" / "x", std::errc::not_a_directory},
      {"no read permission", dir_ / "locked",
       privileged ? std::errc() : std::errc::permission_denied},
  };
  for (const auto& c : cases) {
    const std::error_code e = readAccess(c.path);
    if (c.error == std::errc()) {
      EXPECT_FALSE(e) << c.name << ": " << e.message();
    } else {
      EXPECT_EQ(e, std::make_error_code(c.error)) << c.name << ": " << e.message();
    }
  }
}

}  // namespace
}  // namespace orvo
