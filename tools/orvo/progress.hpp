#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>

// How far a verb has got with long work, on standard error: only when that is a terminal (a
// person watching, not a script reading), and only once the work has taken about a second, so
// that quick runs stay silent. ORVO_PROGRESS_DELAY (seconds, default 1) moves that moment.
namespace orvo::cli {

class Progress {
 public:
  // total: the bytes the work will read, or 0 when it cannot be known (then the time taken is
  // shown instead of a share).
  Progress(std::string verb, std::string file, std::int64_t total);
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  // Ends the line if anything was shown.
  ~Progress() { stop(); }
  // The same, at once: before the verb writes its results. Further calls do nothing.
  void stop();
  // The bytes done so far; called from the working thread, as often as it likes.
  void advance(std::int64_t doneBytes) noexcept {
    done_.store(doneBytes, std::memory_order_relaxed);
  }
  // The work is complete: a shown line reads 100%.
  void finish() noexcept { finished_.store(true, std::memory_order_relaxed); }

 private:
  void run();
  void draw(bool last);

  std::string verb_;
  std::string file_;
  std::int64_t total_;
  std::atomic<std::int64_t> done_{0};
  std::atomic<bool> finished_{false};
  std::chrono::steady_clock::time_point start_;
  bool shownFromStart_ = false;
  bool stopping_ = false;
  std::mutex mutex_;
  std::condition_variable wake_;
  std::thread reporter_;
};

// The delay before progress is shown: ORVO_PROGRESS_DELAY in seconds, else one second.
std::chrono::milliseconds progressDelay();

}  // namespace orvo::cli
