#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "orvogeneric/types.hpp"
#include "orvogeneric/variant.hpp"

// Text file encodings: detection with its per-path cache, byte-order marks, and the choice of
// code page for reading and appending.
namespace orvo::files {

inline constexpr std::int32_t kDefaultSampleBytes = 16384;

// The encoding of a file, from a BOM in the first bytes, the UTF-8 heuristic, or the pattern
// of zero bytes; remembered per path (case-insensitive) for the life of the process.
enumFileEncoding TextFileEncoding(const String& FileName,
                                  std::int32_t NumBytes = kDefaultSampleBytes);
// The same verdict for bytes already in memory: the whole file (length) and its first bytes.
enumFileEncoding encodingOfSample(std::string_view sample, std::int64_t fileLength,
                                  bool utf8Heuristic);
bool UTF8HeuristicCheck(const String& FileName, std::int32_t NumBytes);
bool utf8Heuristic(std::string_view sample);

VBool FileIsUTF8(const String& FilePath, enumFileEncoding* FileEncoding = nullptr);
VBool FileIsUTF16LE(const String& FilePath, enumFileEncoding* FileEncoding = nullptr);
VBool FileIsUnicode(const String& FilePath, enumFileEncoding* FileEncoding = nullptr);

// BOMs are arrays with lower bound 1; an encoding without one gives an empty array.
SafeArray DefaultBOM(enumFileEncoding FileEncoding);
std::int32_t DefaultBOMSize(enumFileEncoding FileEncoding);
std::string_view bomBytes(enumFileEncoding FileEncoding);
SafeArray BOM_UTF8();
SafeArray BOM_UTF16LE();
SafeArray BOM_UTF16BE();
SafeArray BOM_UTF32LE();
SafeArray BOM_UTF32BE();

enumCodePages CodePageFromEncoding(enumFileEncoding Encoding);
enumFileEncoding EncodingFromCodePage(std::int32_t CodePage);

// The code page to read or append with: the file's own where it has a BOM or is UTF-8, the
// caller's where it names an installed ANSI code page (or UTF-8) for a file without one.
std::int32_t CodePageCheck(std::int32_t CodePageSupplied, enumFileEncoding FileEncoding);

// The remembered encoding of a path, without looking at the file; nullopt when none is.
std::optional<enumFileEncoding> rememberedEncoding(const String& FilePath);
// TextFileEncoding of a file the caller has just seen to exist: a remembered verdict is
// answered without looking at the file again.
enumFileEncoding EncodingOfExistingFile(const String& FileName,
                                        std::int32_t NumBytes = kDefaultSampleBytes);

void SetTextFileEncoding(const Variant& FilePath, enumFileEncoding FileEncoding);
void ClearTextFileEncoding(const Variant& FilePath);

}  // namespace orvo::files
