#pragma once

#include "orvogeneric/types.hpp"

// Where the platform keeps things: the directories the library is told about by the system,
// and the files of the running program and of the library itself.
namespace orvo::platform {

// The temporary directory as GetTempPathA gives it into a 512-character buffer: always with a
// trailing separator, not checked for existence; "" when it would not fit the buffer.
String temporaryDirectory();

// The Windows directory as GetWindowsDirectoryA gives it into a 260-character buffer (no
// trailing separator added); "" when it would not fit.
String windowsDirectory();

// The full path of the process's main executable, as GetModuleFileNameA with no module gives it
// into a 260-character buffer; "" when it cannot be found.
String executablePath();

// The full path of the file that holds the library's code: the shared library, or the
// executable when the code is linked into it.
String libraryModulePath();

}  // namespace orvo::platform
