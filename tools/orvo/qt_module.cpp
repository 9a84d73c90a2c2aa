#include "qt_module.hpp"

#include <dlfcn.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

namespace orvo::cli {

namespace {

constexpr const char* kModule = "libORVOGenericQt.so.0";

// The module is loaded for the one verb that shows a dialog, so that no other verb pays for Qt at
// start-up. It brings the shared core library with it; the report is made there, which is why
// the log path travels with the call.
void* loadModule() {
  std::string self(4096, '\0');
  const ssize_t n = readlink("/proc/self/exe", self.data(), self.size());
  if (n > 0 && static_cast<std::size_t>(n) < self.size()) {
    self.resize(static_cast<std::size_t>(n));
    const std::string beside =
        self.substr(0, self.rfind('/') + 1) + ORVO_LIB_FROM_BIN + "/" + kModule;
    if (void* module = dlopen(beside.c_str(), RTLD_NOW | RTLD_LOCAL)) return module;
  }
  return dlopen(kModule, RTLD_NOW | RTLD_LOCAL);
}

}  // namespace

bool reportInQtDialog(const String& procedure, const String& message, const String* logPath) {
  const char* display = std::getenv("DISPLAY");
  if (display == nullptr || *display == '\0') return false;
  void* module = loadModule();
  if (module == nullptr) return false;
  using Entry = int (*)(const char16_t*, const char16_t*, const char16_t*);
  const auto entry = reinterpret_cast<Entry>(dlsym(module, "orvo_qt_report_error"));
  // The module stays loaded: Qt's libraries do not expect to be unloaded before exit.
  return entry != nullptr && entry(procedure.c_str(), message.c_str(),
                                   logPath != nullptr ? logPath->c_str() : nullptr) == 0;
}

}  // namespace orvo::cli
