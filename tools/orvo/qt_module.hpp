#pragma once

#include "orvogeneric/types.hpp"

namespace orvo::cli {

// Shows a report in the Qt module's error dialog and returns once it is closed; false when there
// is no X display or no Qt module to show it with, and nothing was shown.
bool reportInQtDialog(const String& procedure, const String& message, const String* logPath);

}  // namespace orvo::cli
