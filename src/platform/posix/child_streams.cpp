#include "platform/posix/child_streams.hpp"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <thread>

#include "orvogeneric/tool_checks.hpp"
#include "platform/posix/open_file.hpp"
#include "platform/process.hpp"

extern char** environ;  // NOLINT(readability-redundant-declaration): POSIX leaves it undeclared

namespace orvo {

namespace {
std::atomic<ChildStreams> gChildStreams{ChildStreams::Inherit};
}  // namespace

void setChildStreams(ChildStreams streams) noexcept { gChildStreams = streams; }

void ensureStandardDescriptors() noexcept {
  for (int fd = 0; fd < platform::kFirstFreeDescriptor; ++fd) {
    if (::fcntl(fd, F_GETFD) >= 0 || errno != EBADF) continue;
    // The lowest free descriptor is the closed one. Read-only for all three: input reads as
    // empty, and writes still fail as they did on the closed descriptor, so a program that
    // checks its output still learns that nobody received it.
    const int opened = ::open("/dev/null", O_RDONLY);
    if (opened >= 0 && opened != fd) ::close(opened);
  }
}

namespace platform {

ChildStreamActions::ChildStreamActions() {
  if (gChildStreams.load() != ChildStreams::Shielded) return;
  if (::posix_spawn_file_actions_init(&actions_) != 0) return;
  used_ =
      ::posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0) == 0 &&
      ::posix_spawn_file_actions_adddup2(&actions_, STDERR_FILENO, STDOUT_FILENO) == 0;
  if (!used_) ::posix_spawn_file_actions_destroy(&actions_);
}

ChildStreamActions::~ChildStreamActions() {
  if (used_) ::posix_spawn_file_actions_destroy(&actions_);
}

int spawnChild(std::vector<std::string> arguments, pid_t& pid) {
  if (arguments.empty()) return ENOENT;
  std::vector<char*> argv;
  argv.reserve(arguments.size() + 1);
  for (auto& a : arguments) argv.push_back(a.data());
  argv.push_back(nullptr);
  const ChildStreamActions streams;
  return ::posix_spawnp(&pid, argv[0], streams.get(), nullptr, argv.data(), environ);
}

ChildWait waitBriefly(pid_t pid, std::chrono::milliseconds limit, int& status) {
  const auto deadline = std::chrono::steady_clock::now() + limit;
  for (;;) {
    const pid_t done = ::waitpid(pid, &status, WNOHANG);
    if (done == pid) return ChildWait::Ended;
    if (done < 0 && errno != EINTR) return ChildWait::Failed;
    if (std::chrono::steady_clock::now() >= deadline) break;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  reapWhenEnded(static_cast<std::int32_t>(pid));
  return ChildWait::StillRunning;
}

}  // namespace platform
}  // namespace orvo
