#include "standard_streams.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace orvo::cli {

namespace {

// Writes all of it, through short writes and interruptions.
bool writeAll(int fd, const char* data, std::size_t size) {
  while (size > 0) {
    const ssize_t n = ::write(fd, data, size);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return false;
    data += n;
    size -= static_cast<std::size_t>(n);
  }
  return true;
}

// Copies from one descriptor to the other until the end of the input.
bool copy(int from, int to) {
  std::vector<char> buffer(1 << 16);
  for (;;) {
    const ssize_t n = ::read(from, buffer.data(), buffer.size());
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) return false;
    if (n == 0) return true;
    if (!writeAll(to, buffer.data(), static_cast<std::size_t>(n))) return false;
  }
}

}  // namespace

ScratchFile::~ScratchFile() {
  if (fd_ >= 0) ::close(fd_);
  if (!path_.empty()) ::unlink(path_.c_str());
}

bool ScratchFile::create() {
  const char* dir = std::getenv("TMPDIR");
  std::string pattern = std::string(dir != nullptr && *dir != '\0' ? dir : "/tmp") + "/orvo-XXXXXX";
  // mkstemp creates the name exclusively (O_EXCL), mode 0600: never through a planted link.
  fd_ = ::mkostemp(pattern.data(), O_CLOEXEC);
  if (fd_ < 0) return false;
  path_ = pattern;
  return true;
}

bool ScratchFile::fillFromStandardInput() {
  if (!copy(STDIN_FILENO, fd_)) return false;
  return ::lseek(fd_, 0, SEEK_SET) == 0;
}

bool ScratchFile::copyToStandardOutput() const {
  // The library may have replaced the file by renaming a new one over its name: open it again.
  const int fd = ::open(path_.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
  if (fd < 0) return false;
  std::fflush(stdout);
  const bool ok = copy(fd, STDOUT_FILENO);
  const int saved = errno;
  ::close(fd);
  errno = saved;
  return ok;
}

}  // namespace orvo::cli
