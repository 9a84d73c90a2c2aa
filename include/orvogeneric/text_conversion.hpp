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
  // Refuse a lossy conversion: when the target cannot hold a character of the text, nothing is
  // written (an existing target stays as it was) and the failure is Unrepresentable.
  bool strict = false;
};

enum class ConversionFailure {
  None,
  UnsupportedSource,  // UTF-32 or a page nothing converts: refused before a file is touched
  UnsupportedTarget,
  SameFile,  // the target is the source (by identity, whatever the names): nothing is written
  OpenSource,
  OpenTarget,
  ReadSource,
  WriteTarget,
  Unrepresentable,  // strict, and the target cannot hold every character: nothing is written
};

struct ConversionResult {
  ConversionFailure failure = ConversionFailure::None;
  std::error_code error;  // the system's reason when a file could not be opened
  // Characters the target code page could not hold, written as the platform writes them (its
  // default character '?' or a near character: "ā" as "a" in 1252); 0 for a Unicode target.
  std::int64_t unrepresentable = 0;
};

// How many characters of text the code page cannot hold (0 for UTF-8 and UTF-16): those its
// conversion writes as the default character or a near one, as ConvertTextFile counts them.
ORVO_API std::int64_t CountUnrepresentable(std::u16string_view text, std::int32_t codePage);

// Converts source into target (created, or replaced as one step: the new content goes to a
// temporary file beside it, renamed over it when complete, so a failed conversion leaves an
// existing target as it was). The encoding is detected as TextFileEncoding detects it (the
// source's BOM is skipped when the source is read in its own encoding). progress, when given,
// hears the source bytes read so far after each buffer is converted. Memory is a few buffers
// whatever the content; a large output is written by a second thread while the next part is
// converted. Errors of the file procedures propagate as Error.
ORVO_API ConversionResult ConvertTextFile(const std::filesystem::path& source,
                                          const std::filesystem::path& target,
                                          const TextFileConversion& conversion,
                                          const std::function<void(std::int64_t)>& progress = {});

}  // namespace orvo
