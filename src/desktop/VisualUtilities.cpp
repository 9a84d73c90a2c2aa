#include <algorithm>
#include <optional>
#include <string>

#include "files/log.hpp"
#include "frame/state.hpp"
#include "frame/trace.hpp"
#include "orvogeneric/classes.hpp"
#include "orvogeneric/desktop.hpp"
#include "orvogeneric/error.hpp"
#include "runtime/numbers.hpp"
#include "runtime/strings.hpp"

// Other programs' windows found, activated and restored, and the work area measured, through the
// installed desktop. Every step writes its trace line, with the desktop's results where the
// platform's return values stood, so that a failed activation can be followed on a user's
// machine. Failures are logged, never raised.
namespace orvo {

namespace {

void trace(const String& message) { frame::LibraryTrace(message); }
// The warning-level log line: an AddToLog line, whose level is accepted and ignored.
void warn(const String& message) { files::AddToLogB_Worker(message, u"", 0, VBool::False); }
String number(std::int64_t n) { return runtime::DecimalText(n); }

// The title read into a buffer of 1000 characters, as the platform's call filled it.
constexpr std::size_t kTitleBuffer = 1000;
// The class name read into a buffer of 200 characters.
constexpr std::size_t kClassBuffer = 200;
// A chain of owners is followed this far at most: an owner loop must not hang the caller.
constexpr int kMostOwners = 1000;

String fitted(String text, std::size_t buffer) {
  if (text.size() > buffer - 1) text.resize(buffer - 1);
  return text;
}

}  // namespace

std::int32_t VisualUtilities::FindWindow(const String& TitlePartial, enumFindWindow Method,
                                         String* FullTitle) {
  String ownTitle;
  String& full = FullTitle != nullptr ? *FullTitle : ownTitle;
  const auto d = desktop();
  static const char16_t* const kHow[] = {
      u"' at start of Window title", u"' contained in the Window title",
      u"' as the full Window title", u"' as the full App.Title of a VB6 app"};
  const bool known = Method >= FW_STARTSWITH && Method <= FW_FULLVB6APPTITLE;
  trace(u"FindWindow: searching for '" + TitlePartial + (known ? String(kHow[Method]) : String()));
  if (!known) warn(u"Unrecognised Method value " + number(Method));
  WindowHandle mainWindow = 0;
  if (Method == FW_FULLVB6APPTITLE) {
    for (const WindowHandle w : d->topLevelWindows()) {
      if (d->windowClassName(w) == u"ThunderRT6Main" && d->windowTitle(w) == TitlePartial) {
        mainWindow = w;
        break;
      }
    }
    if (mainWindow == 0) {
      full.clear();
      return 0;
    }
  }
  const String wanted = runtime::UCase(TitlePartial);
  WindowHandle found = 0;
  for (const WindowHandle w : d->topLevelWindows()) {
    if (!d->isWindowVisible(w) || d->windowOwner(w) != 0) continue;
    const String title = fitted(d->windowTitle(w), kTitleBuffer);
    if (title.empty()) continue;
    const String upper = runtime::UCase(title);
    bool accepted = false;
    switch (Method) {
      case FW_STARTSWITH:
        accepted = upper.starts_with(wanted);
        break;
      case FW_CONTAINS:
        accepted = upper.find(wanted) != String::npos;
        break;
      case FW_FULL:
        accepted = upper == wanted;
        break;
      case FW_FULLVB6APPTITLE:
        if (d->windowOwner(w) == mainWindow) {
          const String className = fitted(d->windowClassName(w), kClassBuffer);
          trace(u"FindWindow: candidate belongs to ThunderRT6Main, its class name is " + className);
          accepted = className == u"ThunderRT6FormDC";
        }
        break;
      default:
        warn(u"Program error: Unknown nMethod passed: " + number(Method));
        break;
    }
    if (accepted) {
      full = title;
      found = w;
      break;
    }
  }
  trace(u"FindWindow title '" + full + u"', hWnd = " + number(found));
  return found;
}

void VisualUtilities::AppActivateAndRestore(const String& TitlePartial, enumFindWindow* Method,
                                            std::int32_t* hwnd) {
  const std::int32_t window = FindWindow(TitlePartial, Method != nullptr ? *Method : FW_STARTSWITH);
  if (hwnd != nullptr) *hwnd = window;
  if (window != 0) WindowActivateAndRestore(window);
}

void VisualUtilities::BringWindowToFront(std::int32_t hwnd) {
  const auto d = desktop();
  trace(u"BringWindowToFront: start of routine-----------------------------------------");
  const auto foreground = [&] {
    const WindowHandle now = d->foregroundWindow();
    trace(u"BringWindowToFront: Testing GetForegroundWindow(), hWnd = " + number(now));
    return now;
  };
  if (const WindowHandle current = foreground(); current == hwnd) {
    trace(u"BringWindowToFront: hWnd is same as GetForegroundWindow; doing nothing more");
  } else {
    const std::int64_t thread1 = d->windowOwnerId(current);
    const std::int64_t thread2 = d->windowOwnerId(hwnd);
    trace(u"BringWindowToFront: ThreadID1 = " + number(thread1));
    trace(u"BringWindowToFront: ThreadID2 = " + number(thread2));
    if (thread1 == thread2) {
      d->activateWindow(hwnd);
    } else {
      // A desktop has no input queues to join: the step the platform needed here succeeds by
      // itself, and the activation asks the window manager directly.
      trace(u"BringWindowToFront: AttachThreadInput (True), nRet = 1");
      trace(u"BringWindowToFront: SetForegroundWindow, nRet = " + number(d->activateWindow(hwnd)));
    }
    trace(u"BringWindowToFront: ShowWindow(hWnd, SW_SHOW), nRet = " +
          number(d->showWindow(hwnd, ShowCommand::Show)));
  }
  trace(u"BringWindowToFront: BringWindowToTop, nRet = " + number(d->raiseWindow(hwnd)));
  foreground();
  trace(u"BringWindowToFront: end  of routine-----------------------------------------");
}

void VisualUtilities::RestoreWindow(std::int32_t hwnd) {
  if (hwnd == 0) return;
  const auto d = desktop();
  if (d->isIconic(hwnd)) {
    trace(u"RestoreWindow: Window is iconic");
    trace(u"RestoreWindow: ShowWindow(hWnd, SW_RESTORE), nRet = " +
          number(d->showWindow(hwnd, ShowCommand::Restore)));
  } else if (d->isZoomed(hwnd)) {
    // A maximised window stays maximised: restoring it would shrink what the user chose.
    trace(u"RestoreWindow: Window is maximised");
  } else {
    trace(u"RestoreWindow: Window is normal");
  }
}

void VisualUtilities::WindowActivateAndRestore(std::int32_t hwnd) {
  trace(u"WindowActivateAndRestore: start of routine------------------------");
  // A zero handle is only warned about: the steps below run all the same, as they always did.
  if (hwnd == 0) warn(u"Invalid hWnd passed: zero");
  RestoreWindow(hwnd);
  BringWindowToFront(hwnd);
  trace(u"WindowActivateAndRestore: end  of routine------------------------");
}

VBool VisualUtilities::WindowVisible(std::int32_t hwnd) {
  return toVBool(desktop()->isWindowVisible(hwnd));
}

std::int32_t VisualUtilities::GetTopLevelWindow(std::int32_t hwnd) {
  const auto d = desktop();
  WindowHandle top = hwnd;
  for (int step = 0; step < kMostOwners; ++step) {
    const WindowHandle owner = d->windowOwner(top);
    if (owner == 0 || owner == top) break;
    top = owner;
  }
  return top;
}

void VisualUtilities::GetWorkArea(RECT& WorkAreaTwips, std::int32_t hwnd) {
  const auto d = desktop();
  const RECT screens = d->virtualScreen();
  std::optional<RECT> area;
  if (hwnd != 0) area = d->monitorWorkArea(hwnd);
  if (!area) {
    trace(u"GetWorkAreaTwips: PROBLEM - apiMonitorFromWindow failed");
    area = d->primaryWorkArea();
    if (!area) {
      trace(u"GetWorkAreaTwips: PROBLEM - SystemParametersInfo failed");
      area = RECT{};
    }
  }
  RECT r = *area;
  r.Left = std::max(r.Left, screens.Left);
  r.Right = std::min(r.Right, screens.Right);
  r.Top = std::max(r.Top, screens.Top);
  r.Bottom = std::min(r.Bottom, screens.Bottom);
  const TwipsPerPixel twips = d->twipsPerPixel();
  // Each field is converted on its own; one that does not fit 32 bits keeps what it held, as
  // the statement that failed was skipped.
  const auto convert = [](std::int32_t& field, std::int32_t pixels, double perPixel) {
    try {
      field = runtime::CLng(static_cast<double>(pixels) * perPixel);
    } catch (const Error&) {
      if (frame::InDevelopmentMode()) throw;
    }
  };
  convert(WorkAreaTwips.Left, r.Left, twips.horizontal);
  convert(WorkAreaTwips.Right, r.Right, twips.horizontal);
  convert(WorkAreaTwips.Top, r.Top, twips.vertical);
  convert(WorkAreaTwips.Bottom, r.Bottom, twips.vertical);
}

void VisualUtilities::GetWorkAreaTwips(RECT& WorkAreaTwips) { GetWorkArea(WorkAreaTwips, 0); }

}  // namespace orvo
