#include "orvogeneric/desktop.hpp"

#include <mutex>

#include "platform/x11_desktop.hpp"

namespace orvo {

// The answers of a process that has no desktop: nothing to find, nothing to press, nowhere to
// place a window.
Desktop::~Desktop() = default;
std::vector<WindowHandle> Desktop::topLevelWindows() { return {}; }
bool Desktop::isWindowVisible(WindowHandle /*window*/) { return false; }
String Desktop::windowTitle(WindowHandle /*window*/) { return {}; }
String Desktop::windowClassName(WindowHandle /*window*/) { return {}; }
WindowHandle Desktop::windowOwner(WindowHandle /*window*/) { return 0; }
WindowHandle Desktop::foregroundWindow() { return 0; }
std::int64_t Desktop::windowOwnerId(WindowHandle /*window*/) { return 0; }
std::int32_t Desktop::activateWindow(WindowHandle /*window*/) { return 0; }
std::int32_t Desktop::showWindow(WindowHandle /*window*/, ShowCommand /*command*/) { return 0; }
std::int32_t Desktop::raiseWindow(WindowHandle /*window*/) { return 0; }
bool Desktop::isIconic(WindowHandle /*window*/) { return false; }
bool Desktop::isZoomed(WindowHandle /*window*/) { return false; }
std::optional<RECT> Desktop::windowRect(WindowHandle /*window*/) { return std::nullopt; }
RECT Desktop::virtualScreen() { return {}; }
std::optional<RECT> Desktop::monitorWorkArea(WindowHandle /*nearestTo*/) { return std::nullopt; }
std::optional<RECT> Desktop::primaryWorkArea() { return std::nullopt; }
TwipsPerPixel Desktop::twipsPerPixel() { return {}; }
std::optional<String> Desktop::clipboardText() { return std::nullopt; }
bool Desktop::setClipboardText(std::u16string_view /*text*/) { return false; }
bool Desktop::isKeyDown(std::int32_t /*virtualKey*/) { return false; }

namespace {

class NoDesktop final : public Desktop {};

std::mutex gMutex;
std::shared_ptr<Desktop> gDesktop;  // null until installed or first asked for

}  // namespace

std::shared_ptr<Desktop> setDesktop(std::shared_ptr<Desktop> desktop) {
  if (!desktop) desktop = std::make_shared<NoDesktop>();
  const std::lock_guard lock(gMutex);
  std::swap(gDesktop, desktop);
  return desktop ? desktop : std::make_shared<NoDesktop>();
}

std::shared_ptr<Desktop> desktop() {
  const std::lock_guard lock(gMutex);
  // Until a host installs one, the process's desktop is the X display it was started on, if
  // any, connected when the library first asks something of it.
  if (!gDesktop) {
    gDesktop = platform::connectX11Desktop();
    if (!gDesktop) gDesktop = std::make_shared<NoDesktop>();
  }
  return gDesktop;
}

}  // namespace orvo
