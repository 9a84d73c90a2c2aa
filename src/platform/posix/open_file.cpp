#include "platform/posix/open_file.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/posix/windows_errors.hpp"

namespace orvo::platform {

int openRegularFile(const std::string& path, int flags, mode_t mode, std::uint32_t& error) {
  // The read-only attribute (the owner's write bit clear) refuses every writer, a privileged
  // one too, as the platform refuses it; checked before the open, which may truncate.
  const bool writes = (flags & O_ACCMODE) != O_RDONLY;
  struct stat before {};
  if (writes && ::stat(path.c_str(), &before) == 0 && S_ISREG(before.st_mode) &&
      (before.st_mode & S_IWUSR) == 0) {
    error = kErrorAccessDenied;
    return -1;
  }
  int fd = ::open(path.c_str(), flags | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, mode);
  if (fd < 0) {
    // A FIFO opened for writing with no reader: not a file the platform would write.
    error = errno == ENXIO ? kErrorAccessDenied : openError(path, errno);
    return -1;
  }
  struct stat st {};
  if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode) ||
      (writes && (st.st_mode & S_IWUSR) == 0 && (flags & O_CREAT) == 0)) {
    error = kErrorAccessDenied;
    ::close(fd);
    return -1;
  }
  if (fd < kFirstFreeDescriptor) {
    const int moved = ::fcntl(fd, F_DUPFD_CLOEXEC, kFirstFreeDescriptor);
    ::close(fd);
    if (moved < 0) {
      error = windowsError(errno);
      return -1;
    }
    fd = moved;
  }
  // Regular files never block anyway; the flag goes so that later reads and writes are plain.
  (void)::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) & ~O_NONBLOCK);
  return fd;
}

}  // namespace orvo::platform
