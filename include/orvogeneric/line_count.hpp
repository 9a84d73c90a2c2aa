#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>

#include "orvogeneric/export.hpp"

// The lines of a text file of any size, counted as FileSubs.FileLineCount counts them (CR, LF and
// CR LF each end a line, in the file's own encoding), for tools and hosts that count big files.
namespace orvo {

// The number of lines of file, 64-bit where FileLineCount overflows past 2^31 - 1. progress, when
// given, hears the bytes read so far after each buffer. The big-file reader's errors propagate
// as Error: a missing file is 45604 "File not found.", one that cannot be opened or read 45602
// or 45607, each with "Error handled by" and the procedure appended.
ORVO_API std::int64_t CountFileLines(const std::filesystem::path& file,
                                     const std::function<void(std::int64_t)>& progress = {});

}  // namespace orvo
