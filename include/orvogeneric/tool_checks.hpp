#pragma once

#include <filesystem>
#include <system_error>

#include "orvogeneric/export.hpp"

// What a command-line tool asks the system before it works and the standard library cannot
// answer.
namespace orvo {

enum class StandardStream { Input, Output, Error };

// Whether the stream is a terminal (a person watching) rather than a file or a pipe: progress
// is shown only to a person.
ORVO_API bool isTerminal(StandardStream stream) noexcept;

// Why the process may not read the file, as the system answers without opening it (so a pipe
// waits for no writer); no error when it may.
ORVO_API std::error_code readAccess(const std::filesystem::path& path) noexcept;

}  // namespace orvo
