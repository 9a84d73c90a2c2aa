#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// Processes and named mutexes in the platform's terms.
namespace orvo::platform {

// Starts a program from a command line as the platform takes one: the first argument is the
// program (found on PATH), the rest its arguments, quoted as the platform's programs expect.
// Returns the process id, 0 when it cannot be started.
std::int32_t startProcess(std::u16string_view commandLine);

enum class WaitResult { Ended, TimedOut, Failed };
// Waits for a process to end, at most timeoutMs (negative: without limit). A child of this
// process that ended is reaped; one still running after a timeout is reaped in the background
// when it ends, so that no zombie stays behind.
WaitResult waitForProcess(std::int32_t pid, std::int64_t timeoutMs);

// Reaps a child of this process whenever it ends, without anyone waiting for it.
void reapWhenEnded(std::int32_t pid);

// Sleeps the calling thread.
void sleepMilliseconds(std::uint32_t ms);

// Named mutexes shared by every process of the user, which exist exactly while some process
// holds a handle: a handle is a lock the kernel releases when its holder ends, however it ends.
// create: the handle (non-zero) and lastError 0; or 0 with 183 when the name is held already,
// or with another Windows error number when the name cannot be made.
std::int32_t createNamedMutex(std::u16string_view name, std::uint32_t& lastError);
// Whether some process holds the name; lastError 2 when none does.
bool namedMutexHeld(std::u16string_view name, std::uint32_t& lastError);

}  // namespace orvo::platform
