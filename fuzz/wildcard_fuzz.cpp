// The directory search's wildcard test on arbitrary patterns and names (the filter of ListFiles
// comes from the caller). The first byte says how many code units of the rest are the pattern.
// Besides not crashing: "*" and "*.*" match every name, and a pattern without wildcard
// characters matches itself and its upper-case form.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "fuzz_input.hpp"
#include "platform/emulation/name_order.hpp"
#include "platform/file.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using orvo::String;
  if (size < 1) return 0;
  const String units = orvo::fuzz::unitsOf(data + 1, size - 1);
  const std::size_t split = std::min<std::size_t>(data[0], units.size());
  const String pattern = units.substr(0, split);
  const String name = units.substr(split);
  // Names and patterns are path components: at most 255 units on every file system.
  if (pattern.size() > 255 || name.size() > 255) return 0;
  (void)orvo::platform::matchesWildcard(name, pattern);
  if (!orvo::platform::matchesWildcard(name, u"*")) __builtin_trap();
  if (!orvo::platform::matchesWildcard(name, u"*.*")) __builtin_trap();
  if (name.find_first_of(u"*?<>\"") == String::npos) {
    if (!orvo::platform::matchesWildcard(name, name)) __builtin_trap();
    String upper = name;
    for (char16_t& c : upper) c = orvo::platform::detail::upcaseNameUnit(c);
    if (!orvo::platform::matchesWildcard(upper, name)) __builtin_trap();
  }
  return 0;
}
