#include "platform/file.hpp"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "platform/emulation/name_order.hpp"
#include "platform/last_error.hpp"
#include "platform/posix/open_file.hpp"
#include "platform/posix/windows_errors.hpp"

namespace orvo::platform {

NativePath::NativePath(std::u16string_view path) : text_(toSystemBytes(path)) {
  std::replace(text_.begin(), text_.end(), '\\', '/');
}

std::optional<std::int32_t> fileAttributes(std::u16string_view path) {
  if (path.empty()) return std::nullopt;
  struct stat st {};
  const std::string native = NativePath(path).native();
  if (::stat(native.c_str(), &st) != 0) return std::nullopt;
  std::int32_t attributes = 0;
  if (S_ISDIR(st.st_mode)) attributes |= kAttributeDirectory;
  // Read-only is what the owner may not write, as the attribute means to its owner.
  if ((st.st_mode & S_IWUSR) == 0) attributes |= kAttributeReadOnly;
  return attributes == 0 ? kAttributeNormal : attributes;
}

std::optional<std::int64_t> fileSize(std::u16string_view path) {
  struct stat st {};
  const std::string native = NativePath(path).native();
  if (path.empty() || ::stat(native.c_str(), &st) != 0) return std::nullopt;
  return static_cast<std::int64_t>(st.st_size);
}

String systemErrorText(std::uint32_t error) {
  switch (error) {
    case kErrorFileNotFound:
      return u"The system cannot find the file specified.";
    case kErrorPathNotFound:
      return u"The system cannot find the path specified.";
    case kErrorAccessDenied:
      return u"Access is denied.";
    case kErrorSharingViolation:
      return u"The process cannot access the file because it is being used by another process.";
    case kErrorFileExists:
      return u"The file exists.";
    case kErrorDiskFull:
      return u"There is not enough space on the disk.";
    case 31:
      return u"A device attached to the system is not functioning.";
    default:
      return {};
  }
}

File::File(File&& other) noexcept : handle_(other.handle_), lastError_(other.lastError_) {
  other.handle_ = kInvalidHandle;
}

File& File::operator=(File&& other) noexcept {
  if (this != &other) {
    close();
    handle_ = other.handle_;
    lastError_ = other.lastError_;
    other.handle_ = kInvalidHandle;
  }
  return *this;
}

File::~File() { close(); }

void File::fail(std::uint32_t error) noexcept {
  lastError_ = error;
  setLastError(error);  // as the platform keeps it for GetLastError
}

bool File::open(std::u16string_view path, const OpenOptions& options, bool* existed) {
  const bool read = options.access != Access::Write;
  const bool write = options.access != Access::Read;
  close();
  const std::string native = NativePath(path).native();
  struct stat st {};
  const bool there = !path.empty() && ::stat(native.c_str(), &st) == 0;
  if (there && S_ISDIR(st.st_mode)) {
    fail(kErrorAccessDenied);
    return false;
  }
  int flags = O_CLOEXEC | (read && write ? O_RDWR : write ? O_WRONLY : O_RDONLY);
  switch (options.disposition) {
    case Disposition::CreateNew:
      flags |= O_CREAT | O_EXCL;
      break;
    case Disposition::CreateAlways:
      flags |= O_CREAT | O_TRUNC;
      break;
    case Disposition::OpenExisting:
      break;
    case Disposition::OpenAlways:
      flags |= O_CREAT;
      break;
    case Disposition::TruncateExisting:
      flags |= O_TRUNC;
      break;
  }
  std::uint32_t error = 0;
  const int fd = openRegularFile(native, flags, 0666, error);
  if (fd < 0) {
    fail(error);
    return false;
  }
  handle_ = fd;
  if (options.sequential) (void)::posix_fadvise(fd, 0, 0, POSIX_FADV_SEQUENTIAL);
  lastError_ = there ? kErrorAlreadyExists : 0;
  if (existed != nullptr) *existed = there;
  return true;
}

bool File::readToEnd(std::vector<std::uint8_t>& out) {
  constexpr std::size_t kStep = 1 << 16;
  out.clear();
  struct stat st {};
  const off_t at = ::lseek(fd(), 0, SEEK_CUR);
  // The size is only a first guess of the capacity; one byte more shows the end in one read.
  if (::fstat(fd(), &st) == 0 && at >= 0 && st.st_size > at) {
    out.resize(static_cast<std::size_t>(st.st_size - at) + 1);
  }
  std::size_t filled = 0;
  for (;;) {
    if (filled == out.size()) out.resize(out.size() + std::max(kStep, out.size() / 2));
    const ssize_t n = ::read(fd(), out.data() + filled, out.size() - filled);
    if (n < 0) {
      if (errno == EINTR) continue;
      fail(windowsError(errno));
      out.clear();
      return false;
    }
    if (n == 0) break;
    filled += static_cast<std::size_t>(n);
  }
  out.resize(filled);
  out.shrink_to_fit();
  return true;
}

bool File::openForAppend(std::u16string_view path, bool create) {
  close();
  const std::string native = NativePath(path).native();
  std::uint32_t error = 0;
  const int fd = openRegularFile(native, O_WRONLY | O_APPEND | (create ? O_CREAT : 0), 0666, error);
  if (fd < 0) {
    fail(error);
    return false;
  }
  handle_ = fd;
  lastError_ = 0;
  return true;
}

std::int64_t File::read(std::span<std::uint8_t> buffer) {
  std::size_t done = 0;
  while (done < buffer.size()) {
    const ssize_t n = ::read(fd(), buffer.data() + done, buffer.size() - done);
    if (n < 0) {
      if (errno == EINTR) continue;
      fail(windowsError(errno));
      return -1;
    }
    if (n == 0) break;
    done += static_cast<std::size_t>(n);
  }
  return static_cast<std::int64_t>(done);
}

bool File::writeAll(std::span<const std::uint8_t> bytes) {
  std::size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t n = ::write(fd(), bytes.data() + done, bytes.size() - done);
    if (n < 0) {
      if (errno == EINTR) continue;
      fail(windowsError(errno));
      return false;
    }
    done += static_cast<std::size_t>(n);
  }
  return true;
}

bool File::seek(std::int64_t offset, SeekOrigin origin) {
  const int whence = origin == SeekOrigin::Begin     ? SEEK_SET
                     : origin == SeekOrigin::Current ? SEEK_CUR
                                                     : SEEK_END;
  if (::lseek(fd(), offset, whence) < 0) {
    fail(windowsError(errno));
    return false;
  }
  return true;
}

std::int64_t File::position() const { return ::lseek(fd(), 0, SEEK_CUR); }

std::optional<std::int64_t> File::size() const {
  // The size alone is asked: asking for a file's times makes the system stamp its next write
  // with a fine-grained time, which costs an inode update at every write of a log held open.
  struct statx sx {};
  if (::statx(fd(), "", AT_EMPTY_PATH, STATX_SIZE, &sx) != 0) return std::nullopt;
  return static_cast<std::int64_t>(sx.stx_size);
}

bool File::flush() {
  if (::fsync(fd()) != 0 && errno != EINVAL && errno != EROFS) {
    fail(windowsError(errno));
    return false;
  }
  return true;
}

void File::close() {
  if (handle_ != kInvalidHandle) ::close(fd());
  handle_ = kInvalidHandle;
}

std::optional<std::string> readFilePrefix(std::u16string_view path, std::size_t count) {
  File file;
  if (!file.open(path, {Access::Read, Disposition::OpenExisting})) return std::nullopt;
  std::string bytes(count, '\0');
  const std::int64_t n =
      file.read(std::span(reinterpret_cast<std::uint8_t*>(bytes.data()), bytes.size()));
  if (n < 0) return std::nullopt;
  bytes.resize(static_cast<std::size_t>(n));
  return bytes;
}

bool deleteFile(std::u16string_view path) {
  if (path.empty()) return false;
  const auto attributes = fileAttributes(path);
  if (attributes && (*attributes & kAttributeReadOnly) != 0) return false;
  const std::string native = NativePath(path).native();
  return ::unlink(native.c_str()) == 0;
}

bool isDirectory(std::u16string_view path) {
  const auto attributes = fileAttributes(path);
  return attributes && (*attributes & kAttributeDirectory) != 0;
}

namespace {

bool copyBytes(int in, int out) {
  std::vector<char> buffer(1 << 17);
  for (;;) {
    const ssize_t n = ::read(in, buffer.data(), buffer.size());
    if (n == 0) return true;
    if (n < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    std::size_t done = 0;
    while (done < static_cast<std::size_t>(n)) {
      const ssize_t w = ::write(out, buffer.data() + done, static_cast<std::size_t>(n) - done);
      if (w < 0) {
        if (errno == EINTR) continue;
        return false;
      }
      done += static_cast<std::size_t>(w);
    }
  }
}

}  // namespace

bool copyFile(std::u16string_view from, std::u16string_view to, bool failIfExists,
              std::uint32_t* error) {
  std::uint32_t ignored = 0;
  std::uint32_t& result = error != nullptr ? *error : ignored;
  const std::string source = NativePath(from).native();
  const std::string target = NativePath(to).native();
  struct stat in {};
  if (from.empty() || ::stat(source.c_str(), &in) != 0) {
    result = from.empty() ? kErrorPathNotFound : openError(source, ENOENT);
    return false;
  }
  if (S_ISDIR(in.st_mode)) {
    result = kErrorAccessDenied;
    return false;
  }
  struct stat out {};
  if (!to.empty() && ::stat(target.c_str(), &out) == 0) {
    if (failIfExists) {
      result = kErrorFileExists;
      return false;
    }
    // The platform never writes over a read-only file or a folder, and a file copied onto
    // itself is one it already has open.
    if (S_ISDIR(out.st_mode) || (out.st_mode & S_IWUSR) == 0) {
      result = kErrorAccessDenied;
      return false;
    }
    if (out.st_dev == in.st_dev && out.st_ino == in.st_ino) {
      result = kErrorSharingViolation;
      return false;
    }
  }
  const int inFd = openRegularFile(source, O_RDONLY, 0, result);
  if (inFd < 0) return false;
  const int flags = O_WRONLY | O_CREAT | (failIfExists ? O_EXCL : O_TRUNC);
  const int outFd = to.empty() ? -1 : openRegularFile(target, flags, 0600, result);
  if (outFd < 0) {
    if (to.empty()) result = kErrorPathNotFound;
    ::close(inFd);
    return false;
  }
  bool ok = copyBytes(inFd, outFd);
  if (!ok) result = windowsError(errno);
  if (ok) {
    (void)::fchmod(outFd, in.st_mode & 07777);
    const struct timespec times[2] = {in.st_atim, in.st_mtim};
    (void)::futimens(outFd, times);
  }
  ::close(inFd);
  if (::close(outFd) != 0 && ok) {
    result = windowsError(errno);
    ok = false;
  }
  if (!ok) ::unlink(target.c_str());
  return ok;
}

std::optional<String> canonicalPath(std::u16string_view path) {
  if (path.empty()) return std::nullopt;
  const std::string native = NativePath(path).native();
  char* resolved = ::realpath(native.c_str(), nullptr);
  if (resolved == nullptr) return std::nullopt;
  String out = fromSystemBytes(resolved);
  std::free(resolved);  // NOLINT(cppcoreguidelines-no-malloc): realpath allocates with malloc
  return out;
}

std::optional<FileId> fileId(std::u16string_view path) {
  struct stat st {};
  const std::string native = NativePath(path).native();
  if (path.empty() || ::stat(native.c_str(), &st) != 0) return std::nullopt;
  return FileId{static_cast<std::uint64_t>(st.st_dev), static_cast<std::uint64_t>(st.st_ino)};
}

std::optional<std::vector<DirectoryEntry>> listDirectory(std::u16string_view directory,
                                                         std::u16string_view pattern) {
  const std::string native = NativePath(directory).native();
  DIR* dir = directory.empty() ? nullptr : ::opendir(native.c_str());
  if (dir == nullptr) return std::nullopt;
  std::vector<DirectoryEntry> entries;
  while (const dirent* entry = ::readdir(dir)) {
    const std::string_view name = entry->d_name;
    if (name == "." || name == "..") continue;
    DirectoryEntry item{fromSystemBytes(name), false};
    if (!matchesWildcard(item.name, pattern)) continue;
    if (entry->d_type == DT_DIR) {
      item.directory = true;
    } else if (entry->d_type == DT_LNK || entry->d_type == DT_UNKNOWN) {
      // A link is listed as what it leads to, as a directory link is on the platform.
      struct stat st {};
      item.directory = ::fstatat(::dirfd(dir), entry->d_name, &st, 0) == 0 && S_ISDIR(st.st_mode);
    }
    entries.push_back(std::move(item));
  }
  ::closedir(dir);
  std::stable_sort(entries.begin(), entries.end(),
                   [](const DirectoryEntry& a, const DirectoryEntry& b) {
                     return detail::nameOrderLess(a.name, b.name);
                   });
  return entries;
}

}  // namespace orvo::platform
