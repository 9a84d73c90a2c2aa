#pragma once

#include <memory>

#include "orvogeneric/desktop.hpp"

// The desktop of an X display (DISPLAY), or of the X server under a Wayland session: other
// programs' windows as the window manager lists them, their states and the work area.
namespace orvo::platform {

// A desktop connected to the display named by DISPLAY; null when there is none or it cannot be
// reached (the process then has no desktop).
std::shared_ptr<Desktop> connectX11Desktop();

}  // namespace orvo::platform
