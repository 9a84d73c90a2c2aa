#pragma once

#include <string_view>

// The platform's debugger output. Linux has no debugger channel that every tool listens to;
// the system log at debug priority is where such lines are looked for (journalctl -p debug).
namespace orvo::platform {

void debugOutput(std::u16string_view line);

}  // namespace orvo::platform
