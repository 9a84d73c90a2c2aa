#pragma once

#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <functional>
#include <optional>

namespace orvo::test {

// Runs the call in a child process and gives its answer, or nullopt when it has not answered
// within the time (the child is then killed): a call that blocks fails its test instead of
// hanging the suite. The answer travels through a pipe, so it may be any 64-bit value.
inline std::optional<std::int64_t> answerWithin(int milliseconds,
                                                const std::function<std::int64_t()>& call) {
  int fds[2];
  if (::pipe(fds) != 0) return std::nullopt;
  const pid_t child = ::fork();
  if (child == 0) {
    ::close(fds[0]);
    std::int64_t answer = -1;
    try {
      answer = call();
    } catch (...) {
      answer = -2;
    }
    (void)!::write(fds[1], &answer, sizeof answer);
    ::_exit(0);
  }
  ::close(fds[1]);
  std::optional<std::int64_t> result;
  pollfd p{fds[0], POLLIN, 0};
  std::int64_t answer = 0;
  if (child > 0 && ::poll(&p, 1, milliseconds) == 1 &&
      ::read(fds[0], &answer, sizeof answer) == static_cast<ssize_t>(sizeof answer)) {
    result = answer;
  }
  ::close(fds[0]);
  if (child > 0) {
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
  }
  return result;
}

}  // namespace orvo::test
