#include <chrono>
#include <thread>

#include "files/encoding.hpp"
#include "frame/trace.hpp"
#include "orvogeneric/classes.hpp"
#include "orvogeneric/desktop.hpp"
#include "platform/calc.hpp"
#include "platform/file.hpp"
#include "runtime/errors.hpp"
#include "runtime/strings.hpp"
#include "system/spreadsheet.hpp"

// The object that stands for the spreadsheet program: Calc's process and its windows on the
// desktop, with Excel's window states.
namespace orvo {

namespace {

constexpr std::u16string_view kProgramName = u"LibreOffice Calc";
// What Excel's automation raises when the program it stood for has gone.
constexpr std::int32_t kServerGone = 462;

bool isCalcWindow(Desktop& d, WindowHandle w, std::int32_t pid) {
  if (d.windowOwnerId(w) == pid) return true;
  const String cls = runtime::LCase(d.windowClassName(w));
  return cls.starts_with(u"libreoffice") || cls == u"soffice";
}

}  // namespace

struct SpreadsheetApplication::Impl {
  std::int32_t pid = 0;
};

void SpreadsheetApplication::Class_Initialize() { impl_ = std::make_shared<Impl>(); }

namespace {

// The program's main window: its topmost visible top-level window.
WindowHandle mainWindow(const SpreadsheetApplication& app) {
  const auto d = desktop();
  for (const WindowHandle w : d->topLevelWindows()) {
    if (d->windowOwner(w) == 0 && isCalcWindow(*d, w, app.impl().pid)) return w;
  }
  return 0;
}

// The main window of a program that still runs (0 while it has none, as a Calc without a
// window system never has); the program gone is the automation error.
WindowHandle windowOfRunning(const SpreadsheetApplication& app) {
  if (app.impl().pid == 0 || platform::runningCalc() != app.impl().pid) runtime::raise(kServerGone);
  return mainWindow(app);
}

}  // namespace

namespace system {

bool attachCalc(SpreadsheetApplication& app, std::chrono::milliseconds wait) {
  const auto deadline = std::chrono::steady_clock::now() + wait;
  // Its window is waited for only where it will have one: on a desktop, from a Calc that draws.
  const bool windowed = platform::calcShowsWindows() && desktop()->virtualScreen().Right > 0;
  for (;;) {
    app.impl().pid = platform::runningCalc();
    if (app.impl().pid != 0 && (!windowed || mainWindow(app) != 0)) return true;
    if (std::chrono::steady_clock::now() >= deadline) return app.impl().pid != 0;
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  }
}

String calcCaption(const SpreadsheetApplication& app) {
  const WindowHandle w = mainWindow(app);
  return w != 0 ? desktop()->windowTitle(w) : String(kProgramName);
}

}  // namespace system

std::int32_t SpreadsheetApplication::WindowState() {
  const WindowHandle w = windowOfRunning(*this);
  const auto d = desktop();
  if (w == 0) return system::xlNormal;
  if (d->isIconic(w)) return system::xlMinimized;
  return d->isZoomed(w) ? system::xlMaximized : system::xlNormal;
}

void SpreadsheetApplication::WindowState(std::int32_t value) {
  const WindowHandle w = windowOfRunning(*this);
  ShowCommand command = ShowCommand::ShowNormal;
  switch (value) {
    case system::xlMinimized:
      command = ShowCommand::Minimize;
      break;
    case system::xlMaximized:
      command = ShowCommand::Maximize;
      break;
    case system::xlNormal:
      break;
    default:
      runtime::raise(5);
  }
  if (w != 0) desktop()->showWindow(w, command);
}

VBool SpreadsheetApplication::Visible() {
  const WindowHandle w = mainWindow(*this);
  return w != 0 && desktop()->isWindowVisible(w) ? VBool::True : VBool::False;
}

void SpreadsheetApplication::Visible(VBool value) {
  const WindowHandle w = windowOfRunning(*this);
  if (value == VBool::False || w == 0) return;
  desktop()->showWindow(w, ShowCommand::Show);
}

String SpreadsheetApplication::Name() { return String(kProgramName); }

std::int32_t SpreadsheetApplication::Hwnd() { return mainWindow(*this); }

void SpreadsheetApplication::OpenText(const String& FileName, std::int32_t /*DataType*/,
                                      std::int32_t TextQualifier, VBool ConsecutiveDelimiter,
                                      VBool Tab, VBool Semicolon, VBool Comma, VBool Space,
                                      VBool Other, const String& OtherChar,
                                      const String& DecimalSeparator,
                                      const String& ThousandsSeparator) {
  system::DelimitedImport import;
  import.consecutiveDelimiter = ConsecutiveDelimiter != VBool::False;
  import.tab = Tab != VBool::False;
  import.semicolon = Semicolon != VBool::False;
  import.comma = Comma != VBool::False;
  import.space = Space != VBool::False;
  import.other = Other != VBool::False;
  import.otherChar = OtherChar;
  import.textQualifier = TextQualifier;
  import.decimalSeparator = DecimalSeparator;
  import.thousandsSeparator = ThousandsSeparator;
  // Only a file that can be read to its end is handed over: a missing one, a folder, or a pipe
  // or device (which would hold Calc reading forever) raises what Excel's OpenText raised for a
  // file it could not open.
  if (platform::File probe; !probe.open(FileName, platform::OpenOptions{})) runtime::raise(1004);
  const String options = system::calcImportOptions(import, files::TextFileEncoding(FileName));
  const bool handed = platform::openInCalc(FileName, options);
  frame::LibraryTrace(u"OpenText: " + FileName + (handed ? u" handed" : u" could not be handed") +
                      u" to " + String(kProgramName) + u" with the import options \"" + options +
                      u"\"");
  if (!handed) runtime::raise(kServerGone);
}

}  // namespace orvo
