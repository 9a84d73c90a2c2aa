#include "platform/file.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "platform/posix/windows_errors.hpp"

namespace orvo::platform {

std::string nativePath(std::u16string_view path) {
  std::string out = toUtf8(path);
  std::replace(out.begin(), out.end(), '\\', '/');
  return out;
}

std::optional<std::int32_t> fileAttributes(std::u16string_view path) {
  if (path.empty()) return std::nullopt;
  struct stat st {};
  const std::string native = nativePath(path);
  if (::stat(native.c_str(), &st) != 0) return std::nullopt;
  std::int32_t attributes = 0;
  if (S_ISDIR(st.st_mode)) attributes |= kAttributeDirectory;
  // Read-only is what the owner may not write, as the attribute means to its owner.
  if ((st.st_mode & S_IWUSR) == 0) attributes |= kAttributeReadOnly;
  return attributes == 0 ? kAttributeNormal : attributes;
}

std::optional<std::int64_t> fileSize(std::u16string_view path) {
  struct stat st {};
  const std::string native = nativePath(path);
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

File::File(File&& other) noexcept : fd_(other.fd_), lastError_(other.lastError_) { other.fd_ = -1; }

File& File::operator=(File&& other) noexcept {
  if (this != &other) {
    close();
    fd_ = other.fd_;
    lastError_ = other.lastError_;
    other.fd_ = -1;
  }
  return *this;
}

File::~File() { close(); }

bool File::open(std::u16string_view path, bool read, bool write, Disposition disposition,
                bool sequential, bool* existed) {
  close();
  const std::string native = nativePath(path);
  struct stat st {};
  const bool there = !path.empty() && ::stat(native.c_str(), &st) == 0;
  if (there && S_ISDIR(st.st_mode)) {
    lastError_ = kErrorAccessDenied;
    return false;
  }
  int flags = O_CLOEXEC | (read && write ? O_RDWR : write ? O_WRONLY : O_RDONLY);
  switch (disposition) {
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
  fd_ = ::open(native.c_str(), flags, 0666);
  if (fd_ < 0) {
    const int error = errno;
    lastError_ = windowsError(error);
    // The platform tells a missing directory on the way (3) from a missing file (2).
    const auto slash = native.find_last_of('/');
    if (error == ENOENT && slash != std::string::npos && slash > 0) {
      struct stat parent {};
      if (::stat(native.substr(0, slash).c_str(), &parent) != 0 || !S_ISDIR(parent.st_mode)) {
        lastError_ = kErrorPathNotFound;
      }
    }
    return false;
  }
  if (sequential) (void)::posix_fadvise(fd_, 0, 0, POSIX_FADV_SEQUENTIAL);
  lastError_ = there ? kErrorAlreadyExists : 0;
  if (existed != nullptr) *existed = there;
  return true;
}

std::int64_t File::read(std::span<std::uint8_t> buffer) {
  std::size_t done = 0;
  while (done < buffer.size()) {
    const ssize_t n = ::read(fd_, buffer.data() + done, buffer.size() - done);
    if (n < 0) {
      if (errno == EINTR) continue;
      lastError_ = windowsError(errno);
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
    const ssize_t n = ::write(fd_, bytes.data() + done, bytes.size() - done);
    if (n < 0) {
      if (errno == EINTR) continue;
      lastError_ = windowsError(errno);
      return false;
    }
    done += static_cast<std::size_t>(n);
  }
  return true;
}

bool File::seek(std::int64_t offset, int whence) {
  if (::lseek(fd_, offset, whence) < 0) {
    lastError_ = windowsError(errno);
    return false;
  }
  return true;
}

std::int64_t File::position() const { return ::lseek(fd_, 0, SEEK_CUR); }

std::optional<std::int64_t> File::size() const {
  struct stat st {};
  if (::fstat(fd_, &st) != 0) return std::nullopt;
  return static_cast<std::int64_t>(st.st_size);
}

bool File::flush() {
  if (::fsync(fd_) != 0 && errno != EINVAL && errno != EROFS) {
    lastError_ = windowsError(errno);
    return false;
  }
  return true;
}

void File::close() {
  if (fd_ >= 0) ::close(fd_);
  fd_ = -1;
}

std::optional<std::string> readFilePrefix(std::u16string_view path, std::size_t count) {
  File file;
  if (!file.open(path, true, false, Disposition::OpenExisting, false)) return std::nullopt;
  std::string bytes(count, '\0');
  const std::int64_t n =
      file.read(std::span(reinterpret_cast<std::uint8_t*>(bytes.data()), bytes.size()));
  if (n < 0) return std::nullopt;
  bytes.resize(static_cast<std::size_t>(n));
  return bytes;
}

bool deleteFile(std::u16string_view path) {
  const std::string native = nativePath(path);
  return !path.empty() && ::unlink(native.c_str()) == 0;
}

}  // namespace orvo::platform
