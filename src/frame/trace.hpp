#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "orvogeneric/types.hpp"

namespace orvo::frame {

// Where trace lines go: the application's log (and its debugger mirror), or a sink a test
// installs. The sink gets the 25-character prefix field and the message.
using TraceSink = std::function<void(std::u16string_view prefix, std::u16string_view message)>;

// Installs a sink and returns the previous one. An empty sink drops trace lines.
TraceSink setTraceSink(TraceSink sink);

// The library's module name (its file name without "lib" and extensions) and the decimal id of
// the calling thread, left-aligned in exactly 25 characters.
String tracePrefix();

// Writes one trace line unless logging is suppressed.
void LibraryTrace(std::u16string_view message);

}  // namespace orvo::frame
