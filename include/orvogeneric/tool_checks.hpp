#pragma once

#include <filesystem>
#include <system_error>

#include "orvogeneric/export.hpp"

// What a command-line tool asks of the system before it works and the standard library cannot
// answer or arrange.
namespace orvo {

enum class StandardStream { Input, Output, Error };

// Whether the stream is a terminal (a person watching) rather than a file or a pipe: progress
// is shown only to a person.
ORVO_API bool isTerminal(StandardStream stream) noexcept;

// Why the process may not read the file, as the system answers without opening it (so a pipe
// waits for no writer); no error when it may.
ORVO_API std::error_code readAccess(const std::filesystem::path& path) noexcept;

// What the programs the library starts (StartProcess, SyncShell, documents' openers) receive
// as standard input and output. A host whose own streams carry a protocol (a tool answering on
// its output, reading requests from its input) shields them: a child's input is then empty and
// its output goes to the host's standard error.
enum class ChildStreams { Inherit, Shielded };
ORVO_API void setChildStreams(ChildStreams streams) noexcept;

// Opens the null device, read-only, on any of the descriptors 0-2 that the process was started
// without, so that no file opened later takes a standard stream's number; writing to such a
// stream still fails.
ORVO_API void ensureStandardDescriptors() noexcept;

}  // namespace orvo
