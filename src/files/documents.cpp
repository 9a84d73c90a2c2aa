#include <string>

#include "files/fileutils.hpp"
#include "frame/trace.hpp"
#include "frame/traps.hpp"
#include "orvogeneric/user_interface.hpp"
#include "platform/shell.hpp"
#include "runtime/strings.hpp"
#include "text/paths.hpp"

namespace orvo::files {

String shellErrorText(std::int32_t code, const String& Document) {
  switch (code) {
    case 0:
      return u"The operating system is out of memory or resources.";
    case 2:
      return u"The specified file was not found.";
    case 3:
      return u"The specified path was not found.";
    case 5:
      return u"The operating system denied access to the specified file.";
    case 8:
      return u"There was not enough memory to complete the operation.";
    case 11:
      return u"The .exe file is invalid (non-Microsoft Win32 .exe or error in .exe image).";
    case 26:
      return u"A sharing violation occurred.";
    case 27:
      return u"The file name association is incomplete or invalid.";
    case 28:
      return u"The DDE transaction could not be completed because the request timed out.";
    case 29:
      return u"The DDE transaction failed.";
    case 30:
      return u"The Dynamic Data Exchange (DDE) transaction could not be completed because other "
             u"DDE transactions were being processed.";
    case kShellNoAssociation: {
      String text = u"There is no application associated with the given file name extension.";
      String extension;
      text::SplitPath(Document, nullptr, nullptr, nullptr, &extension);
      if (runtime::LCase(extension) == u".pdf") {
        text += u"\r\nYou need to install an Adobe Acrobat document viewer.";
      }
      return text;
    }
    case 32:
      return u"The specified dynamic-link library (DLL) was not found.";
    default:
      return u"An unrecognised error occurred.";
  }
}

void OpenDocument(const String& Document, std::int32_t /*hwnd*/, VBool& Success, String& Error) {
  frame::trap(u"OpenDocument", [&] {
    // No window owns the program started here: the owner only parents the shell's own
    // message boxes, which this platform does not show.
    const std::int32_t code = platform::openDocument(Document);
    if (code >= kShellFirstSuccess) {
      Success = VBool::True;
      return;
    }
    // Success is left as the caller set it: callers set it false before the call.
    Error = shellErrorText(code, Document);
  });
}

void AutocompleteFilePaths(std::int32_t hwnd) {
  frame::trap(u"AutocompleteFilePaths", [&] {
    constexpr std::int32_t kFileSystem = 1;  // SHACF_FILESYSTEM
    const std::int32_t code = userInterface()->autoCompleteFilePaths(hwnd, kFileSystem);
    if (code < 0) {
      frame::LibraryTrace(u"SHAutoComplete(" + runtime::DecimalText(hwnd) + u", " +
                          runtime::DecimalText(kFileSystem) + u") failed. Return code " +
                          runtime::DecimalText(code));
    }
  });
}

}  // namespace orvo::files
