#pragma once

#include <string>

namespace orvo::platform {

// The directory part of a path in the system's form: "." for a bare name, "/" for the root.
inline std::string directoryOf(const std::string& path) {
  const auto slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  if (slash == 0) return "/";
  return path.substr(0, slash);
}

}  // namespace orvo::platform
