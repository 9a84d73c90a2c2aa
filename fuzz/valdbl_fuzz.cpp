// text::ValDbl on arbitrary UTF-16 text in several regions: a numbered error (Overflow for
// numbers beyond the double range) is a valid answer, a crash or undefined behaviour is not.
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "fuzz_input.hpp"
#include "orvogeneric/error.hpp"
#include "orvogeneric/variant.hpp"
#include "text/numbers.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 1) return 0;
  orvo::fuzz::chooseLocale(data[0]);
  const orvo::Variant text(orvo::fuzz::unitsOf(data + 1, size - 1));
  try {
    const double value = orvo::text::ValDbl(text);
    // The parse never yields a value outside the double range: that is Overflow instead.
    if (!std::isfinite(value)) __builtin_trap();
  } catch (const orvo::Error&) {
  }
  try {
    (void)orvo::text::ValLng(text);
  } catch (const orvo::Error&) {
  }
  return 0;
}
