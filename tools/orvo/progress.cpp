#include "progress.hpp"

#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "orvogeneric/tool_checks.hpp"

namespace orvo::cli {

namespace {

// Redrawn this often once shown: often enough to look alive, seldom enough to cost nothing.
constexpr std::chrono::milliseconds kRedraw{200};

}  // namespace

std::chrono::milliseconds progressDelay() {
  const char* text = std::getenv("ORVO_PROGRESS_DELAY");
  if (text == nullptr || *text == '\0') return std::chrono::seconds(1);
  char* end = nullptr;
  const double seconds = std::strtod(text, &end);
  // A value that is not a number of seconds is ignored rather than refused: it only tunes how
  // soon a person sees progress.
  if (end == text || *end != '\0' || !(seconds >= 0) || seconds > 86400) {
    return std::chrono::seconds(1);
  }
  return std::chrono::milliseconds(static_cast<std::int64_t>(seconds * 1000));
}

Progress::Progress(std::string verb, std::string file, std::int64_t total)
    : verb_(std::move(verb)),
      file_(std::move(file)),
      total_(total),
      start_(std::chrono::steady_clock::now()) {
  if (!isTerminal(StandardStream::Error)) return;
  // No delay: shown from the start, however short the work, and always completed.
  shownFromStart_ = progressDelay() == std::chrono::milliseconds::zero();
  if (shownFromStart_) draw(false);
  reporter_ = std::thread([this] { run(); });
}

void Progress::stop() {
  if (!reporter_.joinable()) return;
  {
    const std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  wake_.notify_one();
  reporter_.join();
}

void Progress::run() {
  std::unique_lock lock(mutex_);
  if (!shownFromStart_ && wake_.wait_for(lock, progressDelay(), [this] { return stopping_; })) {
    return;
  }
  for (;;) {
    draw(false);
    if (wake_.wait_for(lock, kRedraw, [this] { return stopping_; })) break;
  }
  draw(true);
}

void Progress::draw(bool last) {
  std::string line = "\rorvo " + verb_ + " " + file_ + ": ";
  const bool complete = last && finished_.load(std::memory_order_relaxed);
  if (total_ > 0) {
    const std::int64_t done = complete ? total_ : done_.load(std::memory_order_relaxed);
    const std::int64_t share = done >= total_ ? 100 : done * 100 / total_;
    char percent[8];
    std::snprintf(percent, sizeof percent, "%3lld%%", static_cast<long long>(share));
    line += percent;
  } else {
    const auto seconds =
        std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now() - start_)
            .count();
    line += complete ? "done" : "working, " + std::to_string(seconds) + " s";
  }
  // Erases what a longer line drawn before left behind.
  line += "\033[K";
  if (last) line += '\n';
  std::fputs(line.c_str(), stderr);
  std::fflush(stderr);
}

}  // namespace orvo::cli
