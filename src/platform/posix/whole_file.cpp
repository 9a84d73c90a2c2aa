#include "platform/whole_file.hpp"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>
#include <filesystem>
#include <mutex>
#include <unordered_set>

#include "platform/posix/directory_of.hpp"
#include "platform/posix/open_file.hpp"
#include "platform/posix/windows_errors.hpp"
#include "platform/replacement.hpp"

namespace orvo::platform {

namespace {

FileVersion versionOf(const struct stat& st) {
  return {{static_cast<std::uint64_t>(st.st_dev), static_cast<std::uint64_t>(st.st_ino)},
          static_cast<std::int64_t>(st.st_size),
          static_cast<std::int64_t>(st.st_mtim.tv_sec) * 1000000000 + st.st_mtim.tv_nsec,
          static_cast<std::int64_t>(st.st_ctim.tv_sec) * 1000000000 + st.st_ctim.tv_nsec,
          (st.st_mode & S_IWUSR) == 0};
}

bool firstWriteIn(const std::string& directory) {
  static std::mutex mutex;
  static std::unordered_set<std::string> seen;
  const std::lock_guard lock(mutex);
  return seen.insert(directory).second;
}

}  // namespace

std::optional<FileVersion> fileVersion(const NativePath& path) {
  struct stat st {};
  if (::stat(path.c_str(), &st) != 0 || !S_ISREG(st.st_mode)) return std::nullopt;
  return versionOf(st);
}

std::int64_t stampClockNs() {
  timespec now{};
  ::clock_gettime(CLOCK_REALTIME, &now);
  return static_cast<std::int64_t>(now.tv_sec) * 1000000000 + now.tv_nsec;
}

bool stampIsConclusive(const FileVersion& version, std::int64_t readAtNs) {
  // File times come from the kernel's coarse clock, which advances once per scheduler tick
  // (10 ms at the slowest common rate); twice that leaves room for the two clocks' skew.
  constexpr std::int64_t kTickNs = 20'000'000;
  return readAtNs - version.modifiedNs > kTickNs && readAtNs - version.changedNs > kTickNs;
}

std::optional<std::string> readWholeFile(const NativePath& path, FileVersion* version,
                                         std::uint32_t& error) {
  const std::string& nativePath = path.native();
  const int fd = openRegularFile(nativePath, O_RDONLY, 0, error);
  if (fd < 0) return std::nullopt;
  struct stat st {};
  if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
    error = kErrorAccessDenied;
    ::close(fd);
    return std::nullopt;
  }
  std::string bytes(static_cast<std::size_t>(st.st_size), '\0');
  std::size_t filled = 0;
  for (;;) {
    // Once the size taken first is filled, a small probe asks whether the file grew since:
    // growing the whole buffer to ask would double the memory of every read.
    char probe[4096];
    const bool full = filled == bytes.size();
    const ssize_t n = full ? ::read(fd, probe, sizeof probe)
                           : ::read(fd, bytes.data() + filled, bytes.size() - filled);
    if (n < 0) {
      if (errno == EINTR) continue;
      error = windowsError(errno);
      ::close(fd);
      return std::nullopt;
    }
    if (n == 0) break;
    if (full) bytes.append(probe, static_cast<std::size_t>(n));
    filled += static_cast<std::size_t>(n);
  }
  bytes.resize(filled);
  ::close(fd);
  if (version != nullptr) *version = versionOf(st);
  return bytes;
}

NativePath writeTarget(const NativePath& file) {
  std::error_code ec;
  std::filesystem::path path = file.native();
  // Follow a chain of links by hand: a link to a file that does not exist yet is written
  // through as well, where canonical() would fail.
  for (int hops = 0; hops < 40 && std::filesystem::is_symlink(path, ec); ++hops) {
    const auto target = std::filesystem::read_symlink(path, ec);
    if (ec) break;
    path = target.is_absolute() ? target : path.parent_path() / target;
  }
  return NativePath::fromNative(path.native());
}

WriterLock::~WriterLock() {
  if (handle_ != kInvalidHandle) ::close(static_cast<int>(handle_));  // closing releases the lock
}

bool WriterLock::acquire(const NativePath& file, std::uint32_t& error) {
  const std::string dir = directoryOf(file.native());
  const int fd = ::open(dir.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd < 0) {
    error = errno == ENOENT || errno == ENOTDIR ? kErrorPathNotFound : windowsError(errno);
    return false;
  }
  handle_ = fd;
  while (::flock(fd, LOCK_EX) != 0) {
    if (errno == EINTR) continue;
    // Some network file systems refuse locks; writers then go unserialised, as they would
    // with the platform's own functions.
    break;
  }
  return true;
}

std::optional<FileVersion> replaceWholeFile(const NativePath& path, std::string_view bytes,
                                            std::uint32_t& error) {
  // Under the writers' lock no other writer is at work here: what temporary files there are
  // were left by writers that were killed, and so was the fixed name earlier versions used.
  // The directory is searched once per process: after that, only this process's own writers
  // (which remove their files) or a kill since then can have left one, and a settings write
  // should not cost a scan of a large directory every time.
  if (firstWriteIn(directoryOf(path.native()))) removeStaleReplacements(path);
  const std::string& target = path.native();
  const auto slash = target.rfind('/');
  const std::string legacy =
      slash == std::string::npos
          ? "." + target + ".orvo-new"
          : target.substr(0, slash + 1) + "." + target.substr(slash + 1) + ".orvo-new";
  struct stat st {};
  if (::lstat(legacy.c_str(), &st) == 0 && !S_ISDIR(st.st_mode)) ::unlink(legacy.c_str());

  Replacement replacement;
  if (!replacement.begin(path, error) ||
      !replacement.write({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()},
                         error) ||
      !replacement.commit(error)) {
    return std::nullopt;
  }
  // Renaming stamps the inode's change time again.
  if (::stat(target.c_str(), &st) != 0) return FileVersion{};
  return versionOf(st);
}

}  // namespace orvo::platform
