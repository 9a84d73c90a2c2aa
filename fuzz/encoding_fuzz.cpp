// The encoding detector on any first bytes and any file length: a verdict of the enumeration,
// never a crash or an over-read; and the verdicts that need no file (BOM, zero pattern) agree
// with what the bytes say.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "files/encoding.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view sample(reinterpret_cast<const char*>(data), size);
  for (const std::int64_t length :
       {static_cast<std::int64_t>(size), static_cast<std::int64_t>(size) + 1}) {
    const bool utf8 = orvo::files::utf8Heuristic(sample);
    const auto e = orvo::files::encodingOfSample(sample, length, utf8);
    if (e < orvo::encBIN || e > orvo::encUTF32_BE) __builtin_trap();
    // Without a zero byte and without a BOM or UTF-8 the file is ANSI.
    if (length > 1 && sample.find('\0') == std::string_view::npos && e == orvo::encBIN) {
      __builtin_trap();
    }
    // An odd length is never UTF-16 without BOM.
    if (length % 2 == 1 && (e == orvo::encUTF16_LE_NB || e == orvo::encUTF16_BE_NB)) {
      __builtin_trap();
    }
  }
  return 0;
}
