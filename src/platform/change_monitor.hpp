#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

#include "platform/native_path.hpp"

// Whether a file read earlier may have been changed since, by this process or any other, for
// the cost of one non-blocking system call per question however many files are watched: a
// cache of parsed files can then answer at once where asking the file system for each file's
// stamp costs a path walk every time.
//
// A watch is only given where its answer is exact: an absolute path whose directories are no
// links, a regular file with no other name, on a local file system that reports every change.
// Anything else (a link, a relative path the working directory can move, network and user-space
// file systems, no watches left) gets no watch, and the caller asks the stamp as before. One
// change a watch cannot see is a directory above the file's own being renamed or replaced.
namespace orvo::platform {

class FileWatch {
 public:
  // How many changes to the file (or its directory entry) have been taken in so far. A caller
  // notes it before reading the file; any change since makes it differ.
  [[nodiscard]] std::uint64_t changes() const noexcept {
    return changes_.load(std::memory_order_acquire);
  }
  // False once the watch can no longer see changes (its directory was removed or moved, or the
  // process forked): a new one must be asked for.
  [[nodiscard]] bool live() const noexcept { return live_.load(std::memory_order_acquire); }

  void noteChange() noexcept { changes_.fetch_add(1, std::memory_order_acq_rel); }
  void end() noexcept {
    noteChange();
    live_.store(false, std::memory_order_release);
  }

 private:
  std::atomic<std::uint64_t> changes_{0};
  std::atomic<bool> live_{true};
};

// What a watch counts: every change of the file, or only those of its name (the name removed,
// or given to another file) and of its attributes, which is what a writer that holds the file
// open needs to know and which its own writes do not touch.
enum class WatchFor { Content, NameAndAttributes };

// Starts watching the file a path names, or joins the watch already on it; null when it cannot
// be watched exactly. Changes made after this returns are counted.
std::shared_ptr<const FileWatch> watchFile(const NativePath& path,
                                           WatchFor what = WatchFor::Content);

// Takes in the changes that have happened since the last call. Call it before trusting any
// watch's count: a change that another process finished before this call is counted by it.
void collectChanges();

}  // namespace orvo::platform
