#include "frame/state.hpp"

#include <mutex>

#include "system/locale_lists.hpp"

namespace orvo::frame {

StaticGlobals& StaticGlobals::instance() {
  static StaticGlobals globals;
  return globals;
}

// Type is a type name, which cannot be parenthesised.
// NOLINTBEGIN(bugprone-macro-parentheses)
#define ORVO_STATE_ACCESSORS(Type, getter, setter, field) \
  Type StaticGlobals::getter() const {                    \
    const std::lock_guard lock(mutex_);                   \
    return field;                                         \
  }                                                       \
  void StaticGlobals::setter(Type v) {                    \
    const std::lock_guard lock(mutex_);                   \
    field = std::move(v);                                 \
  }
// NOLINTEND(bugprone-macro-parentheses)

ORVO_STATE_ACCESSORS(String, parentAppPath, setParentAppPath, parentAppPath_)
ORVO_STATE_ACCESSORS(String, parentAppEXEName, setParentAppEXEName, parentAppEXEName_)
ORVO_STATE_ACCESSORS(String, parentAppTitle, setParentAppTitle, parentAppTitle_)
ORVO_STATE_ACCESSORS(String, appINIFileOverride, setAppINIFileOverride, appINIFileOverride_)
ORVO_STATE_ACCESSORS(bool, loggingSuppressed, setLoggingSuppressed, loggingSuppressed_)
ORVO_STATE_ACCESSORS(String, eol, setEol, eol_)
ORVO_STATE_ACCESSORS(String, decimalSeparatorCache, setDecimalSeparatorCache, decimalSeparator_)
ORVO_STATE_ACCESSORS(LocaleLists, localeLists, setLocaleLists, localeLists_)
ORVO_STATE_ACCESSORS(bool, writeUnicodeBOM, setWriteUnicodeBOM, writeUnicodeBOM_)
ORVO_STATE_ACCESSORS(String, errorLogPath, setErrorLogPath, errorLogPath_)
#undef ORVO_STATE_ACCESSORS

bool StaticGlobals::parentAppInitialised() const {
  const std::lock_guard lock(mutex_);
  return parentAppInitialised_;
}

// Initialisation happens once and is never undone while the library stays loaded.
void StaticGlobals::setParentAppInitialised() {
  const std::lock_guard lock(mutex_);
  parentAppInitialised_ = true;
}

bool StaticGlobals::localeListsBuilt() const {
  const std::lock_guard lock(mutex_);
  return localeListsBuilt_;
}

void StaticGlobals::setLocaleListsBuilt() {
  const std::lock_guard lock(mutex_);
  localeListsBuilt_ = true;
}

bool StaticGlobals::initialiseParentApp(String path, String exeName, String title) {
  const std::lock_guard lock(mutex_);
  if (parentAppInitialised_) return false;
  parentAppPath_ = std::move(path);
  parentAppEXEName_ = std::move(exeName);
  parentAppTitle_ = std::move(title);
  parentAppInitialised_ = true;
  return true;
}

std::optional<LogSettings> StaticGlobals::logSettings() const {
  const std::lock_guard lock(mutex_);
  return logSettings_;
}

LogSettings StaticGlobals::storeLogSettings(LogSettings v) {
  const std::lock_guard lock(mutex_);
  if (!logSettings_) logSettings_ = v;
  return *logSettings_;
}

void StaticGlobals::resetForTesting() {
  const std::lock_guard lock(mutex_);
  parentAppPath_.clear();
  parentAppEXEName_.clear();
  parentAppTitle_.clear();
  parentAppInitialised_ = false;
  appINIFileOverride_.clear();
  loggingSuppressed_ = false;
  eol_ = u"\r\n";
  decimalSeparator_.clear();
  writeUnicodeBOM_ = true;
  errorLogPath_.clear();
  logSettings_.reset();
}

bool InDevelopmentMode() {
  // Nothing ever switches it on in a built library; a developer flips this constant to run
  // without traps and see faults where they happen.
  static const bool value = false;
  return value;
}

void SetLoggingSuppressed(bool suppressed) {
  StaticGlobals::instance().setLoggingSuppressed(suppressed);
}

void main() {}

void ensureLocaleLists() {
  static std::once_flag once;
  std::call_once(once, [] { system::InitialiseLCIDCodePageLists(); });
}

}  // namespace orvo::frame
