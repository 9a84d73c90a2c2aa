#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "orvogeneric/export.hpp"
#include "orvogeneric/types.hpp"

namespace orvo {

// A top-level window as the applications hold it: a 32-bit number, 0 for none (an X window id
// on an X display, an HWND on Windows).
using WindowHandle = std::int32_t;

// How a window is to be shown, numbered as the platform's ShowWindow numbers it.
enum class ShowCommand : std::int32_t {
  ShowNormal = 1,  // neither minimised nor maximised
  Maximize = 3,
  Show = 5,
  Minimize = 6,
  Restore = 9,
};

// Pixels per inch become twips per pixel: 1440 / dots per inch on each axis.
struct TwipsPerPixel {
  double horizontal = 15.0;
  double vertical = 15.0;
};

// Everything the library asks of the desktop it runs on: other programs' windows, the
// clipboard, the keyboard's state and the screen's geometry. The library never talks to a
// display itself; a desktop implementation is installed by the host or by the library's X11
// module. Without one, the process has no desktop: no windows, an empty clipboard, no key down,
// no work area; every answer below says what that default is.
class ORVO_API Desktop {
 public:
  Desktop() = default;
  Desktop(const Desktop&) = delete;
  Desktop& operator=(const Desktop&) = delete;
  virtual ~Desktop();

  // The managed top-level windows, topmost first, as the platform's window list runs.
  // Default: none.
  virtual std::vector<WindowHandle> topLevelWindows();
  // Mapped and not hidden. Default: false.
  virtual bool isWindowVisible(WindowHandle window);
  // The window's title, "" when it has none. Default: "".
  virtual String windowTitle(WindowHandle window);
  // The window's class name (the class part of X's WM_CLASS). Default: "".
  virtual String windowClassName(WindowHandle window);
  // The window it belongs to (a dialog's transient-for owner), 0 for none. Default: 0.
  virtual WindowHandle windowOwner(WindowHandle window);
  // The window that has the keyboard focus now. Default: 0.
  virtual WindowHandle foregroundWindow();
  // A number that two windows of the same program share (the owning thread on Windows, the
  // owning process on X), 0 when unknown. Default: 0.
  virtual std::int64_t windowOwnerId(WindowHandle window);
  // The three steps of bringing a window forward. Each returns the platform's own result (0 for
  // failure) so that it can be written into the trace. Defaults: 0.
  virtual std::int32_t activateWindow(WindowHandle window);
  virtual std::int32_t showWindow(WindowHandle window, ShowCommand command);
  virtual std::int32_t raiseWindow(WindowHandle window);
  // Minimised; maximised (both ways). Defaults: false.
  virtual bool isIconic(WindowHandle window);
  virtual bool isZoomed(WindowHandle window);
  // The window's rectangle on the screen in pixels. Default: nullopt.
  virtual std::optional<RECT> windowRect(WindowHandle window);

  // The rectangle that spans every monitor, in pixels. Default: empty at the origin.
  virtual RECT virtualScreen();
  // The work area (the monitor less panels and docks) of the monitor nearest to the window;
  // nullopt when the window is on no monitor. Default: nullopt.
  virtual std::optional<RECT> monitorWorkArea(WindowHandle nearestTo);
  // The primary monitor's work area. Default: nullopt.
  virtual std::optional<RECT> primaryWorkArea();
  // Default: 15 on both axes (96 dots per inch).
  virtual TwipsPerPixel twipsPerPixel();

  // The clipboard's text; nullopt when it holds none or cannot be read. Default: nullopt.
  virtual std::optional<String> clipboardText();
  // Puts text on the clipboard; false when it cannot. Default: false.
  virtual bool setClipboardText(std::u16string_view text);

  // Whether the key with that virtual-key code is down at this moment. Default: false.
  virtual bool isKeyDown(std::int32_t virtualKey);
};

// Installs the desktop for the whole process and returns the previous one; an empty pointer
// restores the default of a process without a desktop.
ORVO_API std::shared_ptr<Desktop> setDesktop(std::shared_ptr<Desktop> desktop);
ORVO_API std::shared_ptr<Desktop> desktop();

}  // namespace orvo
