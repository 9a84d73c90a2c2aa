#include "platform/replacement.hpp"

#include <dirent.h>
#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "platform/posix/directory_of.hpp"
#include "platform/posix/open_file.hpp"
#include "platform/posix/windows_errors.hpp"
#include "platform/whole_file.hpp"

namespace orvo::platform {

namespace {

// ".~orvo" and ten random letters: short, so that a target name as long as the file system
// allows still has a temporary name beside it.
constexpr std::string_view kPrefix = ".~orvo";
constexpr std::size_t kRandomLetters = 10;
constexpr int kAttempts = 64;

std::string temporaryName(const std::string& dir) {
  static constexpr char kLetters[] = "abcdefghijklmnopqrstuvwxyz0123456789";
  unsigned char random[kRandomLetters] = {};
  std::size_t got = 0;
  while (got < sizeof random) {
    const ssize_t n = ::getrandom(random + got, sizeof random - got, 0);
    if (n < 0 && errno != EINTR) break;
    if (n > 0) got += static_cast<std::size_t>(n);
  }
  std::string name = dir + "/" + std::string(kPrefix);
  for (const unsigned char r : random) name += kLetters[r % (sizeof kLetters - 1)];
  return name;
}

bool isStaleName(const char* name) {
  return std::strncmp(name, kPrefix.data(), kPrefix.size()) == 0 &&
         std::strlen(name) == kPrefix.size() + kRandomLetters;
}

bool writeAll(int fd, std::span<const std::uint8_t> bytes) {
  while (!bytes.empty()) {
    const ssize_t n = ::write(fd, bytes.data(), bytes.size());
    if (n < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    bytes = bytes.subspan(static_cast<std::size_t>(n));
  }
  return true;
}

}  // namespace

Replacement::~Replacement() { abandon(); }

void Replacement::abandon() noexcept {
  if (handle_ != kInvalidHandle) ::close(static_cast<int>(handle_));
  handle_ = kInvalidHandle;
  if (!temporary_.empty()) ::unlink(temporary_.c_str());
  temporary_.clear();
}

bool Replacement::begin(const NativePath& target, std::uint32_t& error) {
  abandon();
  written_ = 0;
  inPlace_ = false;
  target_ = options_.followLinks ? writeTarget(target) : target;
  const std::string& path = target_.native();
  struct stat old {};
  const bool existed = ::stat(path.c_str(), &old) == 0;
  // A link being replaced, not followed: what it leads to is not this writer's concern.
  struct stat own {};
  const bool link =
      !options_.followLinks && ::lstat(path.c_str(), &own) == 0 && S_ISLNK(own.st_mode);
  // The file's own permissions decide, as they do on the platform, not the directory's: a
  // read-only file (the owner's write bit clear, which is the read-only attribute) is refused
  // to every caller, and so is a file this caller may not write.
  if (existed && (!S_ISREG(old.st_mode) || (old.st_mode & S_IWUSR) == 0 ||
                  ::faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) != 0)) {
    error = kErrorAccessDenied;
    return false;
  }
  const std::string dir = directoryOf(path);
  int fd = -1;
  for (int attempt = 0; attempt < kAttempts && fd < 0; ++attempt) {
    temporary_ = temporaryName(dir);
    fd = ::open(temporary_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                existed && options_.keepAttributes ? 0600 : 0666);
    if (fd < 0 && errno != EEXIST) break;
  }
  if (fd < 0) {
    const int why = errno;
    temporary_.clear();
    if (existed && (why == EACCES || why == EPERM || why == EROFS)) {
      // A directory the process may not write holding a file it may: write the file itself.
      inPlace_ = true;
      handle_ = openRegularFile(path, O_WRONLY, 0, error);
      return handle_ != kInvalidHandle;
    }
    error = why == ENOENT || why == ENOTDIR ? kErrorPathNotFound : windowsError(why);
    return false;
  }
  handle_ = fd;
  if (existed && options_.keepAttributes && !link) {
    struct stat made {};
    const bool sameOwner =
        ::fstat(fd, &made) == 0 && made.st_uid == old.st_uid && made.st_gid == old.st_gid;
    if (!sameOwner && ::fchown(fd, old.st_uid, old.st_gid) != 0) {
      // Replacing would hand the file to this process's user: write it in place instead.
      abandon();
      inPlace_ = true;
      handle_ = openRegularFile(path, O_WRONLY, 0, error);
      return handle_ != kInvalidHandle;
    }
    if (::fchmod(fd, old.st_mode & 07777) != 0) {
      error = windowsError(errno);
      abandon();
      return false;
    }
  }
  return true;
}

bool Replacement::write(std::span<const std::uint8_t> bytes, std::uint32_t& error) {
  if (handle_ == kInvalidHandle || !writeAll(static_cast<int>(handle_), bytes)) {
    error = handle_ == kInvalidHandle ? kErrorAccessDenied : windowsError(errno);
    return false;
  }
  written_ += static_cast<std::int64_t>(bytes.size());
  return true;
}

bool Replacement::commit(std::uint32_t& error) {
  if (handle_ == kInvalidHandle) {
    error = kErrorAccessDenied;
    return false;
  }
  const int fd = static_cast<int>(handle_);
  handle_ = kInvalidHandle;
  if (inPlace_) {
    const bool ok = ::ftruncate(fd, written_) == 0;
    const int why = errno;
    if (::close(fd) != 0 || !ok) {
      error = windowsError(ok ? errno : why);
      return false;
    }
    return true;
  }
  // A full disk may only show at close, when the last blocks are written out.
  if (::close(fd) != 0 || ::rename(temporary_.c_str(), target_.c_str()) != 0) {
    error = windowsError(errno);
    abandon();
    return false;
  }
  temporary_.clear();
  return true;
}

void removeStaleReplacements(const NativePath& target) {
  const std::string dir = directoryOf(target.native());
  DIR* d = ::opendir(dir.c_str());
  if (d == nullptr) return;
  while (const dirent* entry = ::readdir(d)) {
    if (!isStaleName(entry->d_name)) continue;
    struct stat st {};
    // A directory of that name is somebody's own, never a writer's leftover.
    if (::fstatat(::dirfd(d), entry->d_name, &st, AT_SYMLINK_NOFOLLOW) == 0 &&
        !S_ISDIR(st.st_mode)) {
      ::unlinkat(::dirfd(d), entry->d_name, 0);
    }
  }
  ::closedir(d);
}

}  // namespace orvo::platform
