#include "files/fileutils.hpp"
#include "frame/parent_app.hpp"
#include "frame/trace.hpp"
#include "frame/traps.hpp"
#include "platform/system_paths.hpp"

namespace orvo::files {

String TempDir() {
  return frame::trap(u"TempDir", [] {
    String dir = platform::temporaryDirectory();
    if (!isTrue(DirExists(dir))) {
      frame::LibraryTrace(u"TempDir: invalid candidate dir from GetTempPath: " + dir);
      dir = frame::sParentAppPath();
      frame::LibraryTrace(u"TempDir: falling back to ParentAppPath: " + dir);
    }
    return dir;
  });
}

String WinDir() {
  return frame::trap(u"WinDir", [] { return platform::windowsDirectory(); });
}

}  // namespace orvo::files
