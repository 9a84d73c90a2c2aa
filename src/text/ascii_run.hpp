#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

// How much of a text is plain ASCII, sixteen bytes at a time: settings, logs and most text files
// are, and a byte-by-byte test of every byte costs more than the work that follows it.
namespace orvo::text {

// The length of the run of bytes below 0x80 that starts p[0, n).
inline std::size_t asciiRun(const std::uint8_t* p, std::size_t n) noexcept {
  std::size_t i = 0;
  constexpr std::uint64_t kHigh = 0x8080808080808080ULL;
  for (; i + 16 <= n; i += 16) {
    std::uint64_t a = 0;
    std::uint64_t b = 0;
    std::memcpy(&a, p + i, 8);
    std::memcpy(&b, p + i + 8, 8);
    if (((a | b) & kHigh) != 0) break;
  }
  while (i < n && p[i] < 0x80) ++i;
  return i;
}

inline bool allAscii(const std::uint8_t* p, std::size_t n) noexcept { return asciiRun(p, n) == n; }

}  // namespace orvo::text
