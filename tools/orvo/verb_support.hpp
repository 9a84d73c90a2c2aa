#pragma once

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

// What every orvo verb shares: output that reports its own failure (arguments.hpp splits the
// arguments).
namespace orvo::cli {

inline bool put(const std::string& text) {
  return std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
}

// The exit status, or 3 when the output could not be written (a full disk, a closed pipe).
inline int done(int status) {
  if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
    std::fprintf(stderr, "orvo: cannot write the output: %s\n", std::strerror(errno));
    return 3;
  }
  return status;
}

}  // namespace orvo::cli
