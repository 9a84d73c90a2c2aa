#include "platform/process.hpp"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <thread>

#include "orvogeneric/types.hpp"
#include "platform/posix/child_streams.hpp"
#include "platform/posix/command_line.hpp"
#include "platform/posix/open_file.hpp"
#include "platform/posix/windows_errors.hpp"

extern char** environ;  // NOLINT(readability-redundant-declaration): POSIX leaves it undeclared

namespace orvo::platform {

std::int32_t startProcess(std::u16string_view commandLine) {
  // Windows hands the child its command line whole; a POSIX program gets the arguments the
  // Windows runtime would have split from it.
  std::vector<std::string> arguments = splitCommandLine(commandLine);
  if (arguments.empty()) return 0;
  std::vector<char*> argv;
  argv.reserve(arguments.size() + 1);
  for (auto& a : arguments) argv.push_back(a.data());
  argv.push_back(nullptr);
  pid_t pid = 0;
  const ChildStreamActions streams;
  if (::posix_spawnp(&pid, argv[0], streams.get(), nullptr, argv.data(), environ) != 0) return 0;
  return static_cast<std::int32_t>(pid);
}

void reapWhenEnded(std::int32_t pid) {
  std::thread([pid] {
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
  }).detach();
}

WaitResult waitForProcess(std::int32_t pid, std::int64_t timeoutMs) {
  if (pid <= 0) return WaitResult::Failed;
  const int fd = static_cast<int>(::syscall(SYS_pidfd_open, pid, 0));
  if (fd < 0) return WaitResult::Failed;
  pollfd p{fd, POLLIN, 0};
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
  int ready = 0;
  for (;;) {
    int wait = -1;
    if (timeoutMs >= 0) {
      const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                            deadline - std::chrono::steady_clock::now())
                            .count();
      wait = static_cast<int>(std::clamp<std::int64_t>(left, 0, 1 << 30));
    }
    ready = ::poll(&p, 1, wait);
    if (ready >= 0 || errno != EINTR) break;
  }
  ::close(fd);
  if (ready < 0) return WaitResult::Failed;
  const bool ours = [&] {
    siginfo_t info{};
    return ::waitid(P_PID, static_cast<id_t>(pid), &info, WEXITED | WNOHANG | WNOWAIT) == 0;
  }();
  if (ready == 0) {
    if (ours) reapWhenEnded(pid);
    return WaitResult::TimedOut;
  }
  if (ours) {
    int status = 0;
    (void)::waitpid(pid, &status, WNOHANG);
  }
  return WaitResult::Ended;
}

void sleepMilliseconds(std::uint32_t ms) {
  std::this_thread::sleep_for(std::chrono::milliseconds(ms));
}

namespace {

// One directory per user for the names: the session's runtime directory, or a private one
// under the temporary directory.
std::string mutexDirectory(std::uint32_t& error) {
  std::string base;
  if (const char* runtime = std::getenv("XDG_RUNTIME_DIR"); runtime != nullptr && *runtime) {
    base = std::string(runtime) + "/orvogeneric-mutexes";
  } else {
    const char* tmp = std::getenv("TMPDIR");
    base = std::string(tmp != nullptr && *tmp ? tmp : "/tmp") + "/orvogeneric-mutexes-" +
           std::to_string(::getuid());
  }
  if (::mkdir(base.c_str(), 0700) != 0 && errno != EEXIST) {
    error = windowsError(errno);
    return {};
  }
  struct stat st {};
  // A directory of that name that another user made must not be trusted with our names.
  if (::lstat(base.c_str(), &st) != 0 || !S_ISDIR(st.st_mode) || st.st_uid != ::getuid()) {
    error = kErrorAccessDenied;
    return {};
  }
  return base;
}

// Any name becomes one file name: characters outside a safe set are escaped, and a name too
// long for the file system is replaced by its hash.
std::string fileNameFor(std::u16string_view name) {
  const std::string utf8 = toUtf8(name);
  std::string out = "m_";
  for (const unsigned char c : utf8) {
    if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
        c == '.' || c == '_') {
      out += static_cast<char>(c);
    } else {
      static const char* const kHex = "0123456789ABCDEF";
      out += '%';
      out += kHex[c >> 4];
      out += kHex[c & 15];
    }
  }
  if (out.size() <= 200) return out;
  std::uint64_t h = 1469598103934665603ULL;
  for (const unsigned char c : utf8) h = (h ^ c) * 1099511628211ULL;
  return "h_" + std::to_string(h) + "_" + std::to_string(utf8.size());
}

}  // namespace

std::int32_t createNamedMutex(std::u16string_view name, std::uint32_t& lastError) {
  lastError = 0;
  const std::string dir = mutexDirectory(lastError);
  if (dir.empty()) return 0;
  const std::string path = dir + "/" + fileNameFor(name);
  // Never a link someone left in the directory; never one of the standard descriptors.
  const int fd = openRegularFile(path, O_RDWR | O_CREAT | O_NOFOLLOW, 0600, lastError);
  if (fd < 0) return 0;
  if (::flock(fd, LOCK_EX | LOCK_NB) != 0) {
    lastError = errno == EWOULDBLOCK ? kErrorAlreadyExists : windowsError(errno);
    ::close(fd);
    return 0;
  }
  // The descriptor is the handle: it stays open, holding the lock, until the caller closes it
  // or the process ends.
  return fd;
}

bool namedMutexHeld(std::u16string_view name, std::uint32_t& lastError) {
  lastError = 0;
  const std::string dir = mutexDirectory(lastError);
  if (dir.empty()) return false;
  const int fd = ::open((dir + "/" + fileNameFor(name)).c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) {
    lastError = kErrorFileNotFound;
    return false;
  }
  const bool held = ::flock(fd, LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK;
  ::close(fd);
  if (!held) lastError = kErrorFileNotFound;
  return held;
}

}  // namespace orvo::platform
