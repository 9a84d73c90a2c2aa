#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

#include "orvogeneric/types.hpp"

// The application's log: a text file beside the executable that exists only if someone
// created it, appended to line by line, and an optional mirror to the debugger output
// configured in "ORVO.INI".
namespace orvo::files {

String LogFile();

void AddToLogB_Worker(const String& sMsg, const String& Prefix, std::int32_t CodePage,
                      VBool PutByte);
void AddToLogB_File(const String& sMsg, const String& Prefix, std::int32_t CodePage, VBool PutByte);
void AddToLog_OutputDebugString(const String& sMsg, const String& Prefix);

// Where debugger lines go: the platform's debugger output unless a test installs another.
using DebugOutputSink = std::function<void(std::u16string_view line)>;
DebugOutputSink setDebugOutputSink(DebugOutputSink sink);

}  // namespace orvo::files
