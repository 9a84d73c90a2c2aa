// Any bytes as orvo batch's standard input, through the reader orvo runs (a pipe, read in
// pieces): the lines handed out, with the LF each ended with, give back the input exactly, none
// holds an LF, and the reader ends. No timer is watched.
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <thread>

#include "batch_input.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  int pipe[2];
  if (::pipe(pipe) != 0) __builtin_trap();
  // The writer is a thread: a pipe holds 64 KiB, and the input may be longer.
  std::thread writer([&] {
    std::size_t at = 0;
    while (at < size) {
      const ssize_t n = ::write(pipe[1], data + at, size - at);
      if (n <= 0) break;
      at += static_cast<std::size_t>(n);
    }
    ::close(pipe[1]);
  });
  orvo::cli::BatchInput input(pipe[0], -1);
  std::string line;
  std::string joined;
  while (input.next(line, [] { __builtin_trap(); })) {
    if (line.find('\n') != std::string::npos) __builtin_trap();
    joined += line;
    if (joined.size() < size) joined += '\n';
  }
  writer.join();
  ::close(pipe[0]);
  if (joined != std::string(reinterpret_cast<const char*>(data), size)) __builtin_trap();
  return 0;
}
