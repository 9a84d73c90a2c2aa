#include "system/processes.hpp"

#include "files/fileutils.hpp"
#include "frame/trace.hpp"
#include "frame/traps.hpp"
#include "orvogeneric/desktop.hpp"
#include "orvogeneric/user_interface.hpp"
#include "platform/file.hpp"
#include "platform/process.hpp"
#include "runtime/numbers.hpp"
#include "runtime/strings.hpp"
#include "text/paths.hpp"

namespace orvo::system {

namespace {}  // namespace

String ORVOMutexName(const String& Path, const String& Stub) {
  return frame::trap(u"ORVOMutexName", [&]() -> String {
    // The canonical absolute path stands in for the short form the platform would give: one
    // name for every way of writing one existing directory.
    String name = text::PathWithBackslash(files::FileShortName(Path)) + Stub;
    for (char16_t& c : name) {
      if (c == u'\\') c = u'/';
    }
    return runtime::UCase(name);
  });
}

std::int32_t CreateMutex(const String& Mutex, CreateMutexEnum& Status) {
  return frame::trap(u"CreateMutex", [&]() -> std::int32_t {
    std::uint32_t lastError = 0;
    std::int32_t handle = platform::createNamedMutex(Mutex, lastError);
    if (lastError == platform::kErrorAlreadyExists) {
      handle = 0;
      Status = nMUTEX_EXISTS;
    } else {
      Status = handle != 0 ? nMUTEX_CREATED : nMUTEX_ERROR;
    }
    frame::LibraryTrace(u"CreateMutex: Mutex created " + Mutex + u": Mutex handle =" +
                        runtime::DecimalText(handle) + u", LastDLLError = " +
                        runtime::DecimalText(lastError));
    return handle;
  });
}

VBool MutexAlreadyExists(const String& MutexName) {
  return frame::trap(u"MutexAlreadyExists", [&]() -> VBool {
    std::uint32_t lastError = 0;
    const bool held = platform::namedMutexHeld(MutexName, lastError);
    // The platform's open gives a handle only while the name exists; it is closed at once.
    frame::LibraryTrace(u"MutexAlreadyExists: Mutex tested " + MutexName + u": Mutex handle =" +
                        runtime::DecimalText(held ? 1 : 0) + u": LastDllError =" +
                        runtime::DecimalText(lastError));
    return toVBool(held);
  });
}

void SleepCurrentThread(double Seconds) {
  frame::trap(u"SleepCurrentThread", [&] {
    const std::int32_t ms = runtime::CLng(Seconds * 1000);
    if (ms == -1) frame::RaiseLibraryError(u"SleepCurrentThread: Infinite wait not allowed");
    // Other negative values are long unsigned waits to the platform, as they always were.
    platform::sleepMilliseconds(static_cast<std::uint32_t>(ms));
  });
}

std::int32_t StartProcess(const String& CommandLine, VBool /*Hide*/) {
  // There is no window to hide: a program started here gets none from us either way.
  return frame::trap(u"StartProcess", [&] { return platform::startProcess(CommandLine); });
}

VBool SyncShell(const String& CommandLine, std::int32_t TimeoutMilliseconds, VBool WaitForInputIdle,
                VBool Hide) {
  return frame::trap(u"SyncShell", [&]() -> VBool {
    const std::int64_t timeout = TimeoutMilliseconds > 0 ? TimeoutMilliseconds : -1;
    const std::int32_t pid = StartProcess(CommandLine, Hide);
    if (pid == 0) return VBool::False;
    if (isTrue(WaitForInputIdle)) {
      // A program here has no input queue to become idle on: started is as far as it gets.
      platform::reapWhenEnded(pid);
      return VBool::True;
    }
    return toVBool(platform::waitForProcess(pid, timeout) == platform::WaitResult::Ended);
  });
}

VBool WaitForProcess(std::int32_t taskId, std::int32_t milliseconds) {
  return frame::trap(u"WaitForProcess", [&]() -> VBool {
    // True means still running when the wait ended, deliberately.
    return toVBool(platform::waitForProcess(taskId, milliseconds) ==
                   platform::WaitResult::TimedOut);
  });
}

VBool IsKeyDown(std::int32_t lKeyCode) {
  return frame::trap(u"IsKeyDown", [&] { return toVBool(desktop()->isKeyDown(lKeyCode)); });
}

VBool b1or0ToBoolean(std::int16_t nInput) {
  return frame::trap(u"b1or0ToBoolean", [&]() -> VBool {
    if (nInput == 0) return VBool::False;
    if (nInput == 1) return VBool::True;
    frame::RaiseLibraryError(u"Invalid input value for conversion: nInput = " +
                             runtime::DecimalText(nInput));
  });
}

std::int16_t nBooleanTo1or0(VBool bInput) {
  // Only the true value itself is 1: a non-standard true such as 1 gives 0.
  return frame::trap(u"nBooleanTo1or0",
                     [&]() -> std::int16_t { return bInput == VBool::True ? 1 : 0; });
}

}  // namespace orvo::system
