#include "frame/trace.hpp"

#include <mutex>
#include <string>

#include "files/log.hpp"
#include "frame/library_info.hpp"
#include "frame/state.hpp"
#include "platform/thread.hpp"
#include "runtime/strings.hpp"

namespace orvo::frame {

namespace {

std::mutex gSinkMutex;
TraceSink& sinkSlot() {
  // Trace lines go to the application's log, with the prefix field, in the log's own encoding.
  static TraceSink sink = [](std::u16string_view prefix, std::u16string_view message) {
    files::AddToLogB_Worker(String(message), String(prefix), 0, VBool::True);
  };
  return sink;
}

}  // namespace

TraceSink setTraceSink(TraceSink sink) {
  const std::lock_guard lock(gSinkMutex);
  std::swap(sinkSlot(), sink);
  return sink;
}

String tracePrefix() {
  static const String moduleName = libraryInfo().moduleName;
  String field = moduleName + u" " + runtime::DecimalText(platform::currentThreadId());
  field.resize(25, u' ');
  return field;
}

void LibraryTrace(std::u16string_view message) {
  if (StaticGlobals::instance().loggingSuppressed()) return;
  TraceSink sink;
  {
    const std::lock_guard lock(gSinkMutex);
    sink = sinkSlot();
  }
  if (sink) sink(tracePrefix(), message);
}

}  // namespace orvo::frame
