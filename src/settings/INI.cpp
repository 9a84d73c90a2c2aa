#include "frame/parent_app.hpp"
#include "frame/state.hpp"
#include "orvogeneric/classes.hpp"
#include "runtime/strings.hpp"

namespace orvo {

// Every new INI object re-enables the library's tracing, on purpose, even when an earlier
// caller suppressed it; and it puts the line terminator back to CR LF.
void INI::Class_Initialize() {
  auto& globals = frame::StaticGlobals::instance();
  globals.setEol(u"\r\n");
  frame::SetLoggingSuppressed(false);
}

void INI::SuppressORVOGenericLogging(VBool bSuppress) {
  // Any non-zero value suppresses: the flag is the language's own Boolean test.
  frame::SetLoggingSuppressed(nonZero(bSuppress));
}

void INI::InitialiseAppProperties(const String& AppPath, const String& AppEXEName) {
  frame::InitialiseParentAppProperties(runtime::Trim(AppPath), AppEXEName);
}

void INI::SetAppTitle(const String& AppTitle) { frame::SetAppTitle(AppTitle); }

}  // namespace orvo
