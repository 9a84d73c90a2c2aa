#include "orvogeneric/tool_checks.hpp"

#include <unistd.h>

#include <cerrno>

namespace orvo {

bool isTerminal(StandardStream stream) noexcept {
  const int fd = stream == StandardStream::Input    ? STDIN_FILENO
                 : stream == StandardStream::Output ? STDOUT_FILENO
                                                    : STDERR_FILENO;
  return ::isatty(fd) != 0;
}

std::error_code readAccess(const std::filesystem::path& path) noexcept {
  if (::access(path.c_str(), R_OK) == 0) return {};
  return {errno, std::generic_category()};
}

}  // namespace orvo
