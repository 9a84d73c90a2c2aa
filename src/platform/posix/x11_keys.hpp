#pragma once

#include <cstdint>
#include <vector>

// Windows virtual-key codes as the X keysyms of the keys that carry them: a virtual key is down
// when any key whose keysyms include one of these is down.
namespace orvo::platform {

// The keysyms of a virtual key (both sides of Shift, Control and Alt for the generic codes); none
// for a code that names no key of a keyboard.
std::vector<std::uint32_t> keysymsOfVirtualKey(std::int32_t virtualKey);
// The pointer button of a virtual key (1 left, 2 middle, 3 right), 0 when it is no button.
int buttonOfVirtualKey(std::int32_t virtualKey);

}  // namespace orvo::platform
