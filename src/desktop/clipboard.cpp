#include "desktop/clipboard.hpp"

#include "files/fileutils.hpp"
#include "files/textfiles.hpp"
#include "frame/traps.hpp"
#include "orvogeneric/desktop.hpp"
#include "platform/process.hpp"
#include "runtime/strings.hpp"
#include "text/paths.hpp"
#include "text/strings.hpp"

namespace orvo::clipboard {

namespace {

// What the language raises when the clipboard cannot be opened.
constexpr std::int32_t kCantOpenClipboard = 521;

// The answers of one pass over the clipboard's lines: the first of each kind.
struct Found {
  String anyPath;  // the existing folder of a line (the line's own, or its parent)
  String folder;   // a line that names an existing folder
  String badFile;  // the existing folder of a line that names no existing file
  String file;     // a line that names an existing file
};

Found searchLines(String text) {
  Found found;
  SafeArray lines;
  files::TextToLines(text, lines);
  const auto* store = lines.elements<String>();
  if (store == nullptr) return found;
  for (std::size_t i = 0; i < store->size(); ++i) {
    const String candidate = text::RemoveQuotesFromPath(String((*store)[i]));
    String folder;
    const bool fileThere = isTrue(files::FileExists(candidate));
    if (isTrue(files::PathExists(candidate, folder))) {
      if (found.anyPath.empty()) found.anyPath = folder;
      const bool namesFolder = runtime::UCase(runtime::Trim(text::PathWithBackslash(candidate))) ==
                               runtime::UCase(runtime::Trim(folder));
      if (namesFolder) {
        if (found.folder.empty()) found.folder = folder;
      } else if (!fileThere && found.badFile.empty()) {
        found.badFile = folder;
      }
    }
    if (fileThere && found.file.empty()) found.file = candidate;
  }
  return found;
}

}  // namespace

String GetPathFromClipboard(enumGetPathFromClipboardSearch Search) {
  return frame::trap(u"GetPathFromClipboard", [&]() -> String {
    const auto text = desktop()->clipboardText();
    if (!text) return String();
    const Found found = searchLines(*text);
    switch (Search) {
      case GETPATH_PREFERFILEPATH:
        return found.file.empty() ? found.anyPath : found.file;
      case GETPATH_PATHANY:
        return found.anyPath;
      case GETPATH_FILE:
        return found.file;
      case GETPATH_PATHNOFILE:
        return found.folder;
      case GETPATH_PATHBADFILE:
        return found.badFile;
    }
    frame::RaiseLibraryError(u"Unrecognised value for nSearch: " +
                             runtime::DecimalText(static_cast<std::int64_t>(Search)) +
                             u" is not a member of enumGetPathFromClipboardSearch.");
  });
}

String ClipboardGetText() {
  return frame::trap(u"ClipboardGetText",
                     [] { return desktop()->clipboardText().value_or(String()); });
}

void ClipboardSetText(const String& text) {
  frame::trap(u"ClipboardSetText", [&] {
    // Emptied first and set 10 ms later, the two steps the applications have always taken; the
    // desktop has no separate "clear", so emptying is setting no text.
    if (!desktop()->setClipboardText(u"")) runtime::raise(kCantOpenClipboard);
    platform::sleepMilliseconds(10);
    if (!desktop()->setClipboardText(text)) runtime::raise(kCantOpenClipboard);
  });
}

}  // namespace orvo::clipboard
