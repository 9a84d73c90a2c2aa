#pragma once

#include <spawn.h>
#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

namespace orvo::platform {

// The file actions every program the library starts is spawned with: none while children
// inherit the host's streams, else empty input and output onto the host's standard error.
class ChildStreamActions {
 public:
  ChildStreamActions();
  ~ChildStreamActions();
  ChildStreamActions(const ChildStreamActions&) = delete;
  ChildStreamActions& operator=(const ChildStreamActions&) = delete;
  // What posix_spawn takes: null when there is nothing to change.
  [[nodiscard]] const posix_spawn_file_actions_t* get() const noexcept {
    return used_ ? &actions_ : nullptr;
  }

 private:
  posix_spawn_file_actions_t actions_{};
  bool used_ = false;
};

// Starts the program arguments[0], found on PATH, with the arguments and the streams above.
// Returns posix_spawnp's error number, 0 when started (pid then names the child).
int spawnChild(std::vector<std::string> arguments, pid_t& pid);

enum class ChildWait { Ended, StillRunning, Failed };
// Waits up to limit for a child to end, its wait status then in status. One still running is
// left to finish on its own, and reaped whenever it ends.
ChildWait waitBriefly(pid_t pid, std::chrono::milliseconds limit, int& status);

}  // namespace orvo::platform
