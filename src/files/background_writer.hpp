#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <span>
#include <string_view>
#include <thread>

#include "runtime/buffer.hpp"

// Bytes gathered into batches that a thread of their own hands to the file, so that making the
// next batch (reading, decoding, encoding) and the system's copy of the last one into the page
// cache run on two cores at once. Output that never fills a batch is written by the caller when
// it finishes, and no thread is started for it.
namespace orvo::files {

class BackgroundWriter {
 public:
  // Writes bytes to the file; false, with the platform's error number, when it could not.
  using Sink = std::function<bool(std::span<const std::uint8_t>, std::uint32_t& error)>;

  explicit BackgroundWriter(Sink sink, std::size_t batch = std::size_t{1} << 20);
  BackgroundWriter(const BackgroundWriter&) = delete;
  BackgroundWriter& operator=(const BackgroundWriter&) = delete;
  // Waits for a write under way, and writes nothing more.
  ~BackgroundWriter();

  // Copies bytes into the batch being filled, handing it over when full. False once a write has
  // failed: nothing more will be written.
  bool append(std::string_view bytes);
  // Writes what is left and waits until every byte is written; false, with the first failure's
  // error number, when a write failed.
  bool finish(std::uint32_t& error);

 private:
  void handOver();
  void run();

  Sink sink_;
  std::size_t batchSize_;
  runtime::Buffer<std::uint8_t> batches_[2];
  std::size_t filled_[2] = {0, 0};
  int filling_ = 0;                  // the batch append() copies into
  bool pending_ = false;             // the other batch waits for, or is in, a write
  bool stopping_ = false;            // no more batches will come
  std::atomic<bool> failed_{false};  // read by append() without the lock
  std::uint32_t error_ = 0;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::thread writer_;
};

}  // namespace orvo::files
