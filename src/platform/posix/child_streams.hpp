#pragma once

#include <spawn.h>

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

}  // namespace orvo::platform
