#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <string_view>

#include "orvogeneric/types.hpp"

namespace orvo::frame {

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

  // Back to the state of a freshly loaded library; for tests that need a clean process.
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
};

// Development-mode switch: constantly false in the built library; it exists so that a
// development build can run with its error traps off.
bool InDevelopmentMode();

void SetLoggingSuppressed(bool suppressed);

// Start-up procedure, run once when the library is first used in a process.
void main();

}  // namespace orvo::frame
