#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "platform/native_handle.hpp"
#include "platform/native_path.hpp"

namespace orvo::platform {

// A new version of a file, written beside it and put in its place in one step, so that a write
// that fails or is interrupted leaves the old file whole and no reader sees half a file.
//
// The temporary file has a short unique name, is created exclusively and never through a link,
// and takes the target's permission bits (a new target: 0666 less the umask) and, where the
// process may give it, the target's owner and group. Where the file could not be replaced
// without losing its owner, or the directory may not be written but the file may, the new
// content is written into the file itself instead (the only way the platform would have written
// it); a failure then can leave it part written.
class Replacement {
 public:
  // What the new version takes over from the old one. A writer that stands for "delete the file
  // and write a new one" replaces a link at the name instead of writing through it, and gives
  // the new file the permissions of a new file, as the deletion would have.
  struct Options {
    bool followLinks = true;
    bool keepAttributes = true;
  };

  Replacement() = default;
  explicit Replacement(Options options) : options_(options) {}
  Replacement(const Replacement&) = delete;
  Replacement& operator=(const Replacement&) = delete;
  // Removes the temporary file of a replacement that was not committed.
  ~Replacement();

  // Starts the new version of target (links followed to the file they name, which need not
  // exist yet). Refuses with "access denied" (5) a target that is not a regular file or that the
  // process may not write, with "path not found" (3) a missing directory.
  bool begin(const NativePath& target, std::uint32_t& error);
  bool write(std::span<const std::uint8_t> bytes, std::uint32_t& error);
  // Puts the new version in place. False, with the old file as it was (unless written in
  // place), when it cannot.
  bool commit(std::uint32_t& error);

  // The file the content goes to in the end (the target with its links followed).
  [[nodiscard]] const NativePath& target() const noexcept { return target_; }
  [[nodiscard]] bool inPlace() const noexcept { return inPlace_; }

 private:
  void abandon() noexcept;

  Options options_;
  NativePath target_;
  std::string temporary_;
  NativeHandle handle_ = kInvalidHandle;
  std::int64_t written_ = 0;
  bool inPlace_ = false;
};

// Removes the temporary files that writers killed before they committed left in the directory
// of target. Call only while no other writer can be at work there (under the writers' lock).
void removeStaleReplacements(const NativePath& target);

}  // namespace orvo::platform
