#include "batch_input.hpp"

#include <poll.h>
#include <unistd.h>

#include <cerrno>

namespace orvo::cli {

namespace {

constexpr std::size_t kReadSize = 1 << 16;

}  // namespace

bool BatchInput::next(std::string& line, const std::function<void()>& dueTimers) {
  for (;;) {
    const std::size_t end = buffer_.find('\n', start_);
    if (end != std::string::npos) {
      line.assign(buffer_, start_, end - start_);
      start_ = end + 1;
      return true;
    }
    if (ended_) {
      if (start_ >= buffer_.size()) return false;
      line.assign(buffer_, start_, std::string::npos);  // a last line without its LF
      start_ = buffer_.size();
      return true;
    }
    // What was handed out goes, so that the buffer holds one line at most, however long the
    // input.
    buffer_.erase(0, start_);
    start_ = 0;
    pollfd watched[2] = {{fd_, POLLIN, 0}, {timers_, POLLIN, 0}};
    const nfds_t count = timers_ >= 0 ? 2 : 1;
    if (::poll(watched, count, -1) < 0) {
      if (errno == EINTR) continue;
      ended_ = true;  // a wait that cannot be made ends the batch as the end of input does
      continue;
    }
    if (count == 2 && (watched[1].revents & POLLIN) != 0) dueTimers();
    if ((watched[0].revents & (POLLIN | POLLHUP | POLLERR)) == 0) continue;
    const std::size_t had = buffer_.size();
    buffer_.resize(had + kReadSize);
    const ssize_t n = ::read(fd_, buffer_.data() + had, kReadSize);
    buffer_.resize(had + (n > 0 ? static_cast<std::size_t>(n) : 0));
    if (n == 0 || (n < 0 && errno != EINTR && errno != EAGAIN)) ended_ = true;
  }
}

}  // namespace orvo::cli
