#pragma once

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <functional>

namespace orvo::bench {

// The resident size of this process now, in bytes.
inline long residentBytes() {
  long pages = 0;
  long resident = 0;
  if (FILE* f = std::fopen("/proc/self/statm", "r")) {
    if (std::fscanf(f, "%ld %ld", &pages, &resident) != 2) resident = 0;
    std::fclose(f);
  }
  return resident * ::sysconf(_SC_PAGESIZE);
}

// How far work raises the resident size above where it started, in MiB; -1 when it cannot be
// measured. The work runs in a forked child, so that what the benchmark process itself once
// held does not count, and the child's peak is the one the kernel recorded up to its exit (as
// wait4 reports it), not a reading taken while the work's objects may still be alive.
inline double childPeakMiB(const std::function<void()>& work) {
  int fds[2];
  if (::pipe(fds) != 0) return -1;
  const pid_t pid = ::fork();
  if (pid < 0) {
    ::close(fds[0]);
    ::close(fds[1]);
    return -1;
  }
  if (pid == 0) {
    ::close(fds[0]);
    const long before = residentBytes();
    (void)!::write(fds[1], &before, sizeof before);
    ::close(fds[1]);
    work();
    ::_exit(0);
  }
  ::close(fds[1]);
  long before = -1;
  const bool started = ::read(fds[0], &before, sizeof before) == sizeof before;
  ::close(fds[0]);
  int status = 0;
  rusage usage{};
  if (::wait4(pid, &status, 0, &usage) != pid || !started || !WIFEXITED(status) ||
      WEXITSTATUS(status) != 0) {
    return -1;
  }
  return static_cast<double>(usage.ru_maxrss * 1024L - before) / (1 << 20);
}

}  // namespace orvo::bench
