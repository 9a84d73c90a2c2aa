#pragma once

#include <cerrno>
#include <cstdint>

#include "platform/file.hpp"

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
      return 31;  // ERROR_GEN_FAILURE: a device attached to the system is not functioning
  }
}

}  // namespace orvo::platform
