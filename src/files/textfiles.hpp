#pragma once

#include <cstdint>
#include <functional>

#include "orvogeneric/types.hpp"
#include "orvogeneric/variant.hpp"
#include "platform/file.hpp"

// Whole text files and files of lines: reading with the detected encoding, counting lines,
// file lengths beyond 32 bits.
namespace orvo::files {

inline constexpr std::int32_t kErrorFileTooLarge = static_cast<std::int32_t>(0x80040202);
inline constexpr std::int32_t kErrorFileTooLargeToRead = static_cast<std::int32_t>(0x80040201);

String ReadTextFileToStringB(const String& FileName, std::int32_t* CodePage = nullptr,
                             VBool ReplaceNull = VBool::False, Variant* ByteArray = nullptr);
String ReadTextFileToString(const String& FileName);
void ReadTextFileToArrayB(const String& FileName, SafeArray& FileLines,
                          std::int32_t* NumLinesReturned = nullptr,
                          std::int32_t* StartLine = nullptr, std::int32_t* EndLine = nullptr,
                          std::int32_t* CodePage = nullptr, VBool IgnoreBlankLines = VBool::False,
                          VBool ReplaceNull = VBool::False);
void ReadTextFileToArray(const String& FileName, SafeArray& FileLines, std::int32_t& NumLinesRead);
void TextToLines(String& text, SafeArray& Lines, std::int32_t* NumLines = nullptr,
                 VBool IgnoreBlankLines = VBool::False);
// Lines as the big-file reader counts them; FileExists tells whether there was a file.
std::int32_t FileLineCount(const String& FilePath, VBool* FileExists = nullptr);
// The same count without the 32-bit result, for files of any size; progress (when given) hears
// the bytes read so far after each buffer.
std::int64_t fileLineCount64(const String& FilePath,
                             const std::function<void(std::int64_t)>& progress = {});

Variant ReadFileToByteArray(const String& FilePath, enumFileEncoding* FileEncoding = nullptr);
void WriteStringToTextFileB(const String& CharString, const String& File, std::int32_t CodePage = 0,
                            VBool PutByte = VBool::True);
void WriteStringToTextFile(const String& CharString, const String& File);
void WriteStringArrayToTextFileB(const SafeArray& FileLines, const String& File,
                                 std::int32_t CodePage = 0, VBool PutByte = VBool::True);
void WriteStringArrayToTextFile(const SafeArray& FileLines, const String& File);
void PrintB(const String& sString, const String& FilePath, std::int32_t CodePage = 0,
            VBool PutByte = VBool::True, VBool AppendNewLine = VBool::True);

Currency LOFSafe(const String& FileName, VBool* HugeFile = nullptr, std::int32_t FileHandle = -1);
void LongsToCurrency(std::int32_t LongLow, std::int32_t LongHigh, Currency& value);

// PrintB into a file that must exist already (the log): false, with nothing written or traced,
// when there is no such file. The file is kept open from line to line; each line first looks
// at the name, and is written only while it still names that file, writable.
bool PrintToExistingFile(const String& sString, const String& FilePath, std::int32_t CodePage,
                         VBool PutByte, VBool AppendNewLine);
// The same with the text made only once the file is known to exist: a log line's time stamp
// costs more than the look at the file, and most processes have no log.
bool PrintToExistingFile(const std::function<String()>& makeText, const String& FilePath,
                         std::int32_t CodePage, VBool PutByte, VBool AppendNewLine);

// Opening for binary access, as the writers and the log use it. Each positions the file where
// text goes: after the BOM for reading, at the end for appending (writing the encoding's BOM
// into an empty file), after a fresh BOM for output.
bool OpenForInputB(const String& path, platform::File& file, enumFileEncoding& encoding);
bool OpenForAppendB(const String& path, platform::File& file, enumFileEncoding& encoding,
                    bool create);
bool OpenForOutputB(const String& path, platform::File& file, enumFileEncoding encoding);

}  // namespace orvo::files
