#pragma once

#include <cstdint>

namespace orvo::platform {

// What identifies a file whatever the path it is reached by: volume and index, as the platform
// keeps them (device and inode on POSIX, volume serial and file index on Windows).
struct FileId {
  std::uint64_t volume = 0;
  std::uint64_t index = 0;
  friend bool operator==(const FileId&, const FileId&) = default;
};

}  // namespace orvo::platform
