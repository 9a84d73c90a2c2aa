#include "files/fileutils.hpp"
#include "frame/parent_app.hpp"
#include "frame/traps.hpp"
#include "runtime/strings.hpp"
#include "text/paths.hpp"

namespace orvo::files {

String ExpandInstallDir(const String& Path, const String& InstallDir) {
  return frame::trap(u"ExpandInstallDir", [&]() -> String {
    const String directory = InstallDir.empty() ? frame::sParentAppPath() : InstallDir;
    // Upper-casing keeps every length, so positions found in the copy hold in the path.
    const String upperPath = runtime::UCase(Path);
    const String placeholder = runtime::UCase(gsINSTALL_DIR);
    std::size_t at = upperPath.find(placeholder);
    if (at == String::npos) return Path;
    // Exactly one separator stands between the directory and what follows the placeholder,
    // decided once, by the first occurrence.
    const std::size_t after = at + placeholder.size();
    const bool separatorFollows =
        after < Path.size() && (Path[after] == u'\\' || Path[after] == u'/');
    const String replacement = separatorFollows ? PathWithoutBackslash(directory, VBool::True)
                                                : text::PathWithBackslash(directory);
    String result;
    std::size_t from = 0;
    for (; at != String::npos; at = upperPath.find(placeholder, from)) {
      result.append(Path, from, at - from).append(replacement);
      from = at + placeholder.size();
    }
    result.append(Path, from);
    return result;
  });
}

}  // namespace orvo::files
