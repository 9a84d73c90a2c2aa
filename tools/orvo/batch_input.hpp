#pragma once

#include <cstddef>
#include <functional>
#include <string>

// Standard input of `orvo batch`, line by line, and what happens while the batch waits for it:
// the ticks of the timers the batch has started are due on this thread, so whenever no whole
// line is buffered the wait also watches the thread's timers and runs those that fall due.
namespace orvo::cli {

class BatchInput {
 public:
  // fd: the input (0); timers: the thread's timer handle to watch while waiting, or -1.
  BatchInput(int fd, int timers) : fd_(fd), timers_(timers) {}
  // The next line, without its LF (a CR before it stays, for the caller to drop); false at the
  // end of the input. dueTimers runs whenever the timers' handle is ready during the wait.
  bool next(std::string& line, const std::function<void()>& dueTimers);

 private:
  int fd_;
  int timers_;
  std::string buffer_;  // bytes read and not yet handed out, from start_
  std::size_t start_ = 0;
  bool ended_ = false;
};

}  // namespace orvo::cli
