#pragma once

#include <cstdint>

#include "orvogeneric/types.hpp"

// Path strings taken apart and put together as text, without touching the file system. On
// POSIX every "\" the algorithms look for may also be "/", and a separator they add is "/" when
// the text it joins has "/" and no "\" ("/opt/app" + "/"), "\" otherwise.
namespace orvo::text {

// Drive ("C:" or "\\server\share"), Dir (up to its last separator), Name and Extension (from the
// last ".", dot included). Outputs that are given are cleared first. A path longer than 32767
// characters is Overflow (6).
void SplitPath(const String& FullPath, String* Drive = nullptr, String* Dir = nullptr,
               String* Name = nullptr, String* Extension = nullptr);
void MakePath(String& FullPath, const String& Drive, const String& Dir, const String& Name,
              const String& Extension);
// The trimmed path with a trailing separator; "" stays "".
String PathWithBackslash(const String& Path);
// The trimmed path, compacted for display when it is longer than MaxTotalLength characters or
// MaxTotalLength reaches the platform's path limit.
String LongDirFix(const String& Path, std::int16_t MaxTotalLength);

}  // namespace orvo::text
