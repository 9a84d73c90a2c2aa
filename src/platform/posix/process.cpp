#include "platform/process.hpp"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <string_view>
#include <thread>
#include <vector>

#include "orvogeneric/types.hpp"
#include "platform/posix/child_streams.hpp"
#include "platform/posix/command_line.hpp"
#include "platform/posix/open_file.hpp"
#include "platform/posix/windows_errors.hpp"

namespace orvo::platform {

std::int32_t startProcess(std::u16string_view commandLine) {
  // Windows hands the child its command line whole; a POSIX program gets the arguments the
  // Windows runtime would have split from it.
  pid_t pid = 0;
  if (spawnChild(splitCommandLine(commandLine), pid) != 0) return 0;
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

constexpr std::u16string_view kLocalPrefix = u"Local\\";
constexpr std::u16string_view kGlobalPrefix = u"Global\\";
// Every user of the machine meets in one directory, whatever each one's TMPDIR says.
constexpr const char* kGlobalDirectory = "/tmp/orvogeneric-mutexes-global";
// A file-name component stays well inside the file systems' 255-byte limit.
constexpr std::size_t kComponentBytes = 200;

// The namespace a name lives in: the session's own (plain and "Local\" names, one mutex) or
// the machine's ("Global\"). Only these two prefixes, in this case, mean a namespace; any
// other text before a backslash is part of the name.
struct MutexPlace {
  bool global = false;
  std::u16string_view name;
};

MutexPlace placeOf(std::u16string_view name) {
  if (name.starts_with(kGlobalPrefix)) return {true, name.substr(kGlobalPrefix.size())};
  if (name.starts_with(kLocalPrefix)) return {false, name.substr(kLocalPrefix.size())};
  return {false, name};
}

// A directory the names may be trusted to: a real directory, not a link, made by us; one
// shared by every user may be root's too, and must keep each user's files from the others
// (sticky). Another user's directory could be swapped for a link between check and open.
bool trustedDirectory(const std::string& path, bool shared) {
  struct stat st {};
  if (::lstat(path.c_str(), &st) != 0 || !S_ISDIR(st.st_mode)) return false;
  if (!shared) return st.st_uid == ::getuid();
  return (st.st_uid == ::getuid() || st.st_uid == 0) && (st.st_mode & S_ISVTX) != 0;
}

// Makes a directory if it is missing; a shared one is opened to every user whatever the
// umask says, which only its owner can do.
bool ensureDirectory(const std::string& path, bool shared, std::uint32_t& error) {
  const mode_t mode = shared ? 01777 : 0700;
  if (::mkdir(path.c_str(), mode) != 0 && errno != EEXIST) {
    error = windowsError(errno);
    return false;
  }
  struct stat st {};
  if (shared && ::lstat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode) && st.st_uid == ::getuid() &&
      (st.st_mode & 07777) != mode) {
    (void)::chmod(path.c_str(), mode);
  }
  if (!trustedDirectory(path, shared)) {
    error = kErrorAccessDenied;
    return false;
  }
  return true;
}

// One directory per user for the session's names: the session's runtime directory, or a
// private one under the temporary directory.
std::string sessionDirectory() {
  if (const char* runtime = std::getenv("XDG_RUNTIME_DIR"); runtime != nullptr && *runtime) {
    return std::string(runtime) + "/orvogeneric-mutexes";
  }
  const char* tmp = std::getenv("TMPDIR");
  return std::string(tmp != nullptr && *tmp ? tmp : "/tmp") + "/orvogeneric-mutexes-" +
         std::to_string(::getuid());
}

std::string mutexDirectory(bool global, std::uint32_t& error) {
  std::string base = global ? std::string(kGlobalDirectory) : sessionDirectory();
  if (!ensureDirectory(base, global, error)) return {};
  return base;
}

// Each UTF-16 code unit of the name on its own, so that two names differing in any unit (a
// lone surrogate and U+FFFD too) never meet in one file: letters, digits, "-", "." and "_"
// stay readable, every other unit is "%" and four hexadecimal digits.
std::string escapedName(std::u16string_view name) {
  static const char* const kHex = "0123456789ABCDEF";
  std::string out;
  out.reserve(name.size());
  for (const char16_t c : name) {
    if ((c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || (c >= u'0' && c <= u'9') ||
        c == u'-' || c == u'.' || c == u'_') {
      out += static_cast<char>(c);
    } else {
      out += '%';
      for (int shift = 12; shift >= 0; shift -= 4) out += kHex[(c >> shift) & 15];
    }
  }
  return out;
}

// The lock file's path below the namespace's directory. A short name is one file "m_...";
// a longer one is cut into pieces of a fixed size, all but the last directories "d_...", so
// that the path spells the whole escaped name and no two names share a file. A directory
// never has a file's prefix, so a short name never lands on a long name's directory.
std::vector<std::string> lockPathComponents(std::u16string_view name) {
  const std::string escaped = escapedName(name);
  const std::size_t piece = kComponentBytes - 2;
  std::vector<std::string> parts;
  std::size_t at = 0;
  while (escaped.size() - at > piece) {
    parts.push_back("d_" + escaped.substr(at, piece));
    at += piece;
  }
  parts.push_back("m_" + escaped.substr(at));
  return parts;
}

// The lock file of a name, its directories made when `create` asks for them; empty with the
// platform's error when a directory is missing, untrusted or cannot be made.
std::string lockFilePath(std::u16string_view name, bool create, std::uint32_t& error) {
  const MutexPlace place = placeOf(name);
  std::string path = mutexDirectory(place.global, error);
  if (path.empty()) return {};
  const std::vector<std::string> parts = lockPathComponents(place.name);
  for (std::size_t i = 0; i + 1 < parts.size(); ++i) {
    path += "/" + parts[i];
    if (create ? !ensureDirectory(path, place.global, error)
               : !trustedDirectory(path, place.global)) {
      if (!create) error = kErrorFileNotFound;
      return {};
    }
  }
  return path + "/" + parts.back();
}

// A machine-wide lock file made by one user must open for every other: 0666 whatever the
// umask. An existing one is opened without O_CREAT, which the kernel may refuse for another
// user's file in a sticky directory.
int openGlobalLockFile(const std::string& path, std::uint32_t& error) {
  int fd = openRegularFile(path, O_RDWR | O_NOFOLLOW, 0, error);
  if (fd >= 0) return fd;
  fd = openRegularFile(path, O_RDWR | O_CREAT | O_NOFOLLOW, 0666, error);
  if (fd >= 0) {
    struct stat st {};
    if (::fstat(fd, &st) == 0 && st.st_uid == ::getuid()) (void)::fchmod(fd, 0666);
  }
  return fd;
}

}  // namespace

std::int32_t createNamedMutex(std::u16string_view name, std::uint32_t& lastError) {
  lastError = 0;
  const std::string path = lockFilePath(name, true, lastError);
  if (path.empty()) return 0;
  // Never a link someone left in the directory; never one of the standard descriptors.
  const int fd = placeOf(name).global
                     ? openGlobalLockFile(path, lastError)
                     : openRegularFile(path, O_RDWR | O_CREAT | O_NOFOLLOW, 0600, lastError);
  if (fd < 0) return 0;
  lastError = 0;
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
  const std::string path = lockFilePath(name, false, lastError);
  if (path.empty()) return false;
  std::uint32_t openError = 0;
  const int fd = openRegularFile(path, O_RDONLY | O_NOFOLLOW, 0, openError);
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
