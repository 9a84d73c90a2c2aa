#include "files/background_writer.hpp"

#include <algorithm>
#include <cstring>
#include <utility>

namespace orvo::files {

BackgroundWriter::BackgroundWriter(Sink sink, std::size_t batch)
    : sink_(std::move(sink)), batchSize_(std::max<std::size_t>(batch, 1)) {
  batches_[0].resize(batchSize_);
}

BackgroundWriter::~BackgroundWriter() {
  if (!writer_.joinable()) return;
  {
    const std::lock_guard lock(mutex_);
    stopping_ = true;
    pending_ = false;  // a batch not yet begun is dropped: the caller gave up on the file
  }
  changed_.notify_all();
  writer_.join();
}

bool BackgroundWriter::append(std::string_view bytes) {
  while (!bytes.empty()) {
    std::size_t& filled = filled_[filling_];
    const std::size_t n = std::min(bytes.size(), batchSize_ - filled);
    std::memcpy(batches_[filling_].data() + filled, bytes.data(), n);
    filled += n;
    bytes.remove_prefix(n);
    if (filled == batchSize_) handOver();
    if (failed_) return false;
  }
  return !failed_;
}

void BackgroundWriter::handOver() {
  std::unique_lock lock(mutex_);
  // The other batch must be written before it is filled again.
  changed_.wait(lock, [this] { return !pending_ || failed_; });
  if (failed_) return;
  pending_ = true;
  filling_ ^= 1;
  filled_[filling_] = 0;
  if (batches_[filling_].size() < batchSize_) batches_[filling_].resize(batchSize_);
  lock.unlock();
  if (writer_.joinable()) {
    changed_.notify_all();
  } else {
    writer_ = std::thread([this] { run(); });
  }
}

void BackgroundWriter::run() {
  std::unique_lock lock(mutex_);
  for (;;) {
    changed_.wait(lock, [this] { return pending_ || stopping_; });
    if (!pending_) return;
    const int batch = filling_ ^ 1;
    lock.unlock();
    std::uint32_t error = 0;
    const bool written = sink_({batches_[batch].data(), filled_[batch]}, error);
    lock.lock();
    pending_ = false;
    if (!written && !failed_) {
      failed_ = true;
      error_ = error;
    }
    changed_.notify_all();
    if (failed_) return;
  }
}

bool BackgroundWriter::finish(std::uint32_t& error) {
  {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return !pending_ || failed_; });
    stopping_ = true;
  }
  changed_.notify_all();
  if (writer_.joinable()) writer_.join();
  if (!failed_ && filled_[filling_] > 0) {
    std::uint32_t last = 0;
    if (!sink_({batches_[filling_].data(), filled_[filling_]}, last)) {
      failed_ = true;
      error_ = last;
    }
    filled_[filling_] = 0;
  }
  error = error_;
  return !failed_;
}

}  // namespace orvo::files
