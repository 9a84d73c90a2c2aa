#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <system_error>

#include "orvogeneric/export.hpp"

// A text file re-encoded in another code page, streaming: for tools and hosts that convert files
// of any size. The text goes through the conversions the file procedures use.
namespace orvo {

struct TextFileConversion {
  // The target: 0 (the system's ANSI code page), 65001 (UTF-8), 1200 (UTF-16 LE), 1201
  // (UTF-16 BE) or a Windows code page such as 1252 or 932.
  std::int32_t to = 0;
  // Unset: the source's detected encoding, after its BOM.
  std::optional<std::int32_t> from;
  // Unset: a Unicode target (65001, 1200, 1201) starts with its BOM, as new files do; any other
  // target never has one.
  std::optional<bool> bom;
};

enum class ConversionFailure {
  None,
  UnsupportedSource,  // UTF-32: refused before either file is opened
  UnsupportedTarget,
  OpenSource,
  OpenTarget,
  ReadSource,
  WriteTarget,
};

struct ConversionResult {
  ConversionFailure failure = ConversionFailure::None;
  std::error_code error;  // the system's reason when a file could not be opened
};

// Converts source into target (created, or replaced). The paths reach the system as they are
// given; the encoding is detected as TextFileEncoding detects it (the source's BOM is skipped
// when the source is read in its own encoding). progress, when given, hears the source bytes
// read so far after each buffer is written. Memory is one buffer, plus the run of bytes in
// which no character can safely end (in a multi-byte code page: bytes from 0x40 up). Errors of
// the file procedures propagate as Error.
ORVO_API ConversionResult ConvertTextFile(const std::filesystem::path& source,
                                          const std::filesystem::path& target,
                                          const TextFileConversion& conversion,
                                          const std::function<void(std::int64_t)>& progress = {});

}  // namespace orvo
