// SplitPath on arbitrary text, with MakePath and PathWithBackslash on the pieces. Besides not
// crashing, the pieces must put the trimmed path back together: only a name without extension
// is trimmed on its own.
#include <cstddef>
#include <cstdint>

#include "fuzz_input.hpp"
#include "orvogeneric/error.hpp"
#include "runtime/strings.hpp"
#include "text/paths.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using orvo::String;
  const String path = orvo::fuzz::unitsOf(data, size);
  String drive, dir, name, extension;
  try {
    orvo::text::SplitPath(path, &drive, &dir, &name, &extension);
  } catch (const orvo::Error&) {
    return 0;
  }
  const String trimmed = orvo::runtime::Trim(path);
  if (!extension.empty()) {
    if (drive + dir + name + extension != trimmed) __builtin_trap();
  } else {
    const String head = drive + dir;
    if (trimmed.compare(0, head.size(), head) != 0) __builtin_trap();
    if (orvo::runtime::Trim(trimmed.substr(head.size())) != name) __builtin_trap();
  }
  String full;
  orvo::text::MakePath(full, drive, dir, name, extension);
  const String withSeparator = orvo::text::PathWithBackslash(path);
  if (!trimmed.empty() && withSeparator.size() > trimmed.size() + 1) __builtin_trap();
  return 0;
}
