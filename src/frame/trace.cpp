#include "frame/trace.hpp"

#include <sys/syscall.h>
#include <unistd.h>

#include <mutex>
#include <string>

#include "frame/library_info.hpp"
#include "frame/state.hpp"

namespace orvo::frame {

namespace {

std::mutex gSinkMutex;
TraceSink& sinkSlot() {
  static TraceSink sink;
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
  const auto tid = static_cast<long>(syscall(SYS_gettid));
  String field = moduleName + u" " + fromUtf8(std::to_string(tid));
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
