#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "orvogeneric/collection.hpp"
#include "orvogeneric/types.hpp"

namespace orvo::frame {

// The locale and code-page lists, built once per process by the start-up procedure. The
// list objects themselves are handed to callers, so what a caller changes in one stays.
struct LocaleLists {
  std::shared_ptr<Collection> installed;           // LCIDs keyed by their decimal text
  std::shared_ptr<Collection> supported;           // kept, not offered to callers
  std::shared_ptr<Collection> ansiCodePages;       // code page numbers keyed by their text
  std::shared_ptr<Collection> firstLocale;         // the first LCID met per code page
  std::shared_ptr<Collection> representative;      // the representative LCID per code page
  std::shared_ptr<Collection> localesPerCodePage;  // a Collection of LCIDs per code page
};

// What "ORVO.INI" says about mirroring the log to the debugger output.
struct LogSettings {
  bool outputDebugString = false;
  std::int32_t outputDebugStringPrefixLen = 32;
};

// Process-wide state shared by every object of the library. The applications use it from one
// thread, but hosts such as the command-line tool and the tests do not, so every field is
// reached under one lock; nothing here is held across a call into other code.
class StaticGlobals {
 public:
  static StaticGlobals& instance();

  String parentAppPath() const;
  void setParentAppPath(String v);
  String parentAppEXEName() const;
  void setParentAppEXEName(String v);
  String parentAppTitle() const;
  void setParentAppTitle(String v);
  bool parentAppInitialised() const;
  void setParentAppInitialised();
  // Stores the three parent-application fields and marks them initialised in one step, unless
  // they already are: the first initialisation wins. Returns whether this call stored them.
  bool initialiseParentApp(String path, String exeName, String title);
  String appINIFileOverride() const;
  void setAppINIFileOverride(String v);

  bool loggingSuppressed() const;
  void setLoggingSuppressed(bool v);

  // The line terminator used by the encoded text writers.
  String eol() const;
  void setEol(String v);

  // The regional decimal separator, computed once and never again (a change of the regional
  // settings while the process runs is deliberately not seen). Empty until first computed.
  String decimalSeparatorCache() const;
  void setDecimalSeparatorCache(String v);

  // Whether new Unicode files get a BOM; every new FileSubs object sets it back to true.
  bool writeUnicodeBOM() const;
  void setWriteUnicodeBOM(bool v);

  // The file error reports are appended to; empty while errors are not logged.
  String errorLogPath() const;
  void setErrorLogPath(String v);

  // The log's settings, read once per process: nullopt until they have been. Storing keeps
  // settings already stored (two threads may read the file at once; the first answer wins) and
  // returns what is stored.
  std::optional<LogSettings> logSettings() const;
  LogSettings storeLogSettings(LogSettings v);

  // Null lists until the start-up procedure has created them.
  LocaleLists localeLists() const;
  void setLocaleLists(LocaleLists v);
  bool localeListsBuilt() const;
  void setLocaleListsBuilt();

  // Back to the state of a freshly loaded library; for tests that need a clean process. The
  // locale lists stay: they are never rebuilt while the library is loaded.
  void resetForTesting();

 private:
  StaticGlobals() = default;
  mutable std::mutex mutex_;
  String parentAppPath_;
  String parentAppEXEName_;
  String parentAppTitle_;
  bool parentAppInitialised_ = false;
  String appINIFileOverride_;
  bool loggingSuppressed_ = false;
  String eol_ = u"\r\n";
  String decimalSeparator_;
  LocaleLists localeLists_;
  bool localeListsBuilt_ = false;
  bool writeUnicodeBOM_ = true;
  String errorLogPath_;
  std::optional<LogSettings> logSettings_;
};

// Development-mode switch: constantly false in the built library; it exists so that a
// development build can run with its error traps off.
bool InDevelopmentMode();

void SetLoggingSuppressed(bool suppressed);

// Start-up procedure, run when an object of the library is made. It builds nothing up front:
// the locale and code-page lists cost most of a short process's start and most calls never
// look at them, so they are built on first use (ensureLocaleLists).
void main();
// Builds the locale and code-page lists once per process.
void ensureLocaleLists();

}  // namespace orvo::frame
