#pragma once

#include <sys/stat.h>

#include <cerrno>
#include <cstdint>
#include <string>

#include "platform/file.hpp"
#include "platform/posix/directory_of.hpp"

namespace orvo::platform {

// The Windows error number a caller of the file functions would have seen for an errno.
inline std::uint32_t windowsError(int error) {
  switch (error) {
    case ENOENT:
      return kErrorFileNotFound;
    case ENOTDIR:
    case ENAMETOOLONG:
    case ELOOP:
      return kErrorPathNotFound;
    case EACCES:
    case EPERM:
    case EROFS:
    case EISDIR:
      return kErrorAccessDenied;
    case EEXIST:
      return kErrorFileExists;
    case ENOSPC:
    case EDQUOT:
      return kErrorDiskFull;
    case ETXTBSY:
    case EBUSY:
      return kErrorSharingViolation;
    default:
      return kErrorGenFailure;
  }
}

// The error of a failed open: a missing directory on the way is "path not found" (3), which
// the platform tells apart from a missing file (2).
inline std::uint32_t openError(const std::string& nativePath, int error) {
  if (error == ENOENT) {
    struct stat st {};
    if (::stat(directoryOf(nativePath).c_str(), &st) != 0 || !S_ISDIR(st.st_mode))
      return kErrorPathNotFound;
  }
  return windowsError(error);
}

}  // namespace orvo::platform
