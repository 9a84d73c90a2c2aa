#include "files/log.hpp"

#include <algorithm>
#include <ctime>
#include <exception>
#include <memory>
#include <mutex>

#include "files/fileutils.hpp"
#include "files/textfiles.hpp"
#include "frame/parent_app.hpp"
#include "frame/state.hpp"
#include "frame/traps.hpp"
#include "platform/debug_output.hpp"
#include "platform/last_error.hpp"
#include "platform/locale.hpp"
#include "runtime/dates.hpp"
#include "runtime/format.hpp"
#include "runtime/strings.hpp"
#include "settings/ini_values.hpp"
#include "text/paths.hpp"

namespace orvo::files {

namespace {

using frame::LogSettings;

std::mutex gSinkMutex;
DebugOutputSink& sinkSlot() {
  static DebugOutputSink sink;
  return sink;
}

// A log write that fails traces the failure, and the trace is itself a log write: on the
// original platform that recursion ends only when the stack runs out. Here it stops at once: a
// write started while the write around it is handling its failure is dropped. Other writes
// from within a write (the encoding detector's verdict on the log itself, on ORVO.INI) are
// written, to a depth no real chain of them reaches.
thread_local int gDepth = 0;
constexpr int kDeepestNesting = 8;
struct DepthGuard {
  DepthGuard() { ++gDepth; }
  ~DepthGuard() { --gDepth; }
  DepthGuard(const DepthGuard&) = delete;
  DepthGuard& operator=(const DepthGuard&) = delete;
};

LogSettings settings() {
  frame::StaticGlobals& globals = frame::StaticGlobals::instance();
  if (const auto stored = globals.logSettings()) return *stored;
  // Read once per process; editing the file later has no effect until the next process.
  const String ini = text::PathWithBackslash(WinDir()) + u"ORVO.INI";
  LogSettings read;
  read.outputDebugString =
      isTrue(settings::bGetFromINI(ini, u"Logging", u"OutputDebugString", VBool::False));
  // A width from a file anyone may edit: beyond a string's sane size it would cost gigabytes
  // per line; the pad stops there.
  constexpr std::int32_t kWidestPrefix = 32767;
  read.outputDebugStringPrefixLen = std::min(
      settings::nGetFromINI(ini, u"Logging", u"OutputDebugStringPrefixLen", 32), kWidestPrefix);
  return globals.storeLogSettings(read);
}

// The time stamp of a log line. Formatting a date is the costliest step of a line, and a busy
// log writes many lines within one second: the text is made again only when the second or the
// user's regional settings change.
String timeStamp() {
  thread_local std::time_t lastSecond = -1;
  thread_local std::shared_ptr<const platform::RegionalSettings> lastSettings;
  thread_local String lastStamp;
  const std::time_t second = std::time(nullptr);
  auto rs = platform::userRegionalSettings();
  if (second != lastSecond || rs != lastSettings) {
    lastStamp = runtime::Format(Variant(runtime::Now()), u"yyyy-mmm-dd HH:NN:SS", *rs);
    lastSecond = second;
    lastSettings = std::move(rs);
  }
  return lastStamp;
}

}  // namespace

String LogFile() { return frame::sParentAppPathAndEXEName() + u".log"; }

void AddToLogB_File(const String& sMsg, const String& Prefix, std::int32_t CodePage,
                    VBool PutByte) {
  // The caller never sees an error, but the thread's last error tells whether the line was
  // written (0) or why not, for a tool that must say so.
  platform::setLastError(0);
  bool written = false;
  try {
    // The file's existence is the switch: the library never creates its log.
    const auto line = [&] {
      String text = sMsg;
      if (!text.empty()) {
        if (!Prefix.empty()) text = Prefix + u": " + text;
        text = timeStamp() + u": " + text;
      }
      return text;
    };
    written = PrintToExistingFile(line, LogFile(), CodePage, PutByte, VBool::True);
  } catch (...) {  // NOLINT(bugprone-empty-catch): a log line that cannot be written is dropped
  }
  const std::uint32_t why = platform::lastError();
  platform::setLastError(written ? 0 : (why != 0 ? why : platform::kErrorAccessDenied));
}

void AddToLog_OutputDebugString(const String& sMsg, const String& Prefix) {
  frame::trap(u"AddToLog_OutputDebugString", [&] {
    const LogSettings s = settings();
    if (!s.outputDebugString) return;
    String name = frame::sParentAppEXEName();
    if (!Prefix.empty()) name += u"[" + Prefix + u"]";
    name = runtime::Right(name, s.outputDebugStringPrefixLen);
    name.resize(static_cast<std::size_t>(s.outputDebugStringPrefixLen), u' ');
    const String line = name + u":" + sMsg + u"\r\n";
    DebugOutputSink sink;
    {
      const std::lock_guard lock(gSinkMutex);
      sink = sinkSlot();
    }
    if (sink) {
      sink(line);
    } else {
      platform::debugOutput(line);
    }
  });
}

void AddToLogB_Worker(const String& sMsg, const String& Prefix, std::int32_t CodePage,
                      VBool PutByte) {
  if (gDepth > 0 && (std::current_exception() != nullptr || gDepth >= kDeepestNesting)) return;
  const DepthGuard guard;
  try {
    AddToLogB_File(sMsg, Prefix, CodePage, PutByte);
    AddToLog_OutputDebugString(sMsg, Prefix);
  } catch (...) {  // NOLINT(bugprone-empty-catch): the caller of a log write never sees an error
  }
}

DebugOutputSink setDebugOutputSink(DebugOutputSink sink) {
  const std::lock_guard lock(gSinkMutex);
  std::swap(sinkSlot(), sink);
  return sink;
}

}  // namespace orvo::files
