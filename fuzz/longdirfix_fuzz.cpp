// LongDirFix and the path compaction behind it on arbitrary text and limits. Beyond not
// crashing, a compacted result must fit the limit it was given.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "fuzz_input.hpp"
#include "orvogeneric/error.hpp"
#include "runtime/strings.hpp"
#include "text/path_compact.hpp"
#include "text/paths.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  const auto max = static_cast<std::int16_t>(data[0] | (data[1] << 8));
  const orvo::String path = orvo::fuzz::unitsOf(data + 2, size - 2);

  const orvo::String fixed = orvo::text::LongDirFix(path, max);
  const orvo::String trimmed = orvo::runtime::Trim(path);
  const bool unchanged = static_cast<std::int64_t>(trimmed.size()) <= max && max < 260;
  if (unchanged && fixed != trimmed) __builtin_trap();
  if (!unchanged) {
    const std::int64_t room = max < 0 ? 0 : std::min<std::int64_t>(max, 260);
    if (static_cast<std::int64_t>(fixed.size()) > room) __builtin_trap();
  }

  // The compaction itself, with limits beyond the buffer LongDirFix gives it.
  const auto cchMax = static_cast<std::uint32_t>(static_cast<std::uint16_t>(max));
  const orvo::String compact = orvo::text::PathCompactPathEx(path, cchMax);
  if (compact.size() >= std::max<std::uint32_t>(cchMax, 1U)) __builtin_trap();
  // A path with room to spare comes back whole.
  if (path.size() + 1 < cchMax && compact != path) __builtin_trap();
  return 0;
}
