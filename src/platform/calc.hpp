#pragma once

#include <cstdint>
#include <string_view>

// The spreadsheet program that stands in for Excel: LibreOffice Calc, run as the user runs it
// (its one process per user profile receives every later request).
namespace orvo::platform {

// The process id of this user's running Calc, 0 when none runs.
std::int32_t runningCalc();

// Whether the installed Calc draws windows at all (a build without a window-system plug-in runs
// as if headless, and its documents have no window).
bool calcShowsWindows();

enum class CalcStart { Started, NotInstalled, Failed };
// Starts Calc with a new empty spreadsheet, minimised when asked; returns at once.
CalcStart startCalc(bool minimized);

// Hands a delimited text file to this user's running Calc with its import options (the CSV
// filter's option string), waiting, boundedly, for a Calc still starting to take requests. False
// when none runs or it could not be handed over.
bool openInCalc(std::u16string_view file, std::u16string_view importOptions);

}  // namespace orvo::platform
