#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>

namespace orvo::platform {

// The first descriptor after standard input, output and error.
inline constexpr int kFirstFreeDescriptor = 3;

// Opens a file the library was given by name. The open itself never waits (a FIFO without a
// writer, a device that blocks), never makes a terminal the controlling one, and what it opened
// must be a regular file: anything else is closed again and refused with "access denied" (5),
// which is what the platform answers for names that are not files, and for a writer of a file
// with the read-only attribute (the owner's write bit clear), whoever the writer is. The
// descriptor is above the standard ones, so a process started with those closed does not hand
// its answers or its input to a file the library holds. -1 with a Windows error number on
// failure.
int openRegularFile(const std::string& path, int flags, mode_t mode, std::uint32_t& error);

}  // namespace orvo::platform
