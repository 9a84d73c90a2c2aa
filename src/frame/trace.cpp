#include "frame/trace.hpp"

#include <dlfcn.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <mutex>
#include <string>

#include "frame/state.hpp"

namespace orvo::frame {

namespace {

std::mutex gSinkMutex;
TraceSink& sinkSlot() {
  static TraceSink sink;
  return sink;
}

// The module is whatever file holds this code: "libORVOGeneric.so.0" gives "ORVOGeneric", a
// test executable that links the code statically gives its own name.
String computeModuleName() {
  Dl_info info{};
  std::string name = "ORVOGeneric";
  if (dladdr(reinterpret_cast<void*>(&computeModuleName), &info) != 0 &&
      info.dli_fname != nullptr && *info.dli_fname != '\0') {
    name = info.dli_fname;
    if (const auto slash = name.rfind('/'); slash != std::string::npos) name.erase(0, slash + 1);
    if (name.rfind("lib", 0) == 0 && name.find(".so") != std::string::npos) name.erase(0, 3);
    if (const auto dot = name.find('.'); dot != std::string::npos && dot > 0) name.erase(dot);
  }
  return fromUtf8(name);
}

}  // namespace

TraceSink setTraceSink(TraceSink sink) {
  const std::lock_guard lock(gSinkMutex);
  std::swap(sinkSlot(), sink);
  return sink;
}

String tracePrefix() {
  static const String moduleName = computeModuleName();
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
