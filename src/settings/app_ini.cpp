#include "settings/app_ini.hpp"

#include "files/fileutils.hpp"
#include "frame/parent_app.hpp"
#include "frame/state.hpp"
#include "frame/trace.hpp"
#include "frame/traps.hpp"
#include "orvogeneric/error.hpp"
#include "orvogeneric/user_interface.hpp"
#include "platform/locale.hpp"
#include "resources/catalogue.hpp"
#include "runtime/dates.hpp"
#include "runtime/format.hpp"
#include "runtime/strings.hpp"
#include "settings/ini_values.hpp"
#include "text/paths.hpp"

namespace orvo::settings {

namespace {

// The library's catalogue error for an application INI file it cannot write.
constexpr std::int32_t kErrorAppINIWrite = static_cast<std::int32_t>(0x8004F145U);

}  // namespace

VBool FindINI(String& INIFile, const String& FileStem, VBool ShowMsg, VBool ReturnPathIfMissing) {
  INIFile.clear();
  String stem = runtime::Trim(FileStem);
  if (stem.empty()) {
    stem = frame::StaticGlobals::instance().appINIFileOverride();
    if (stem.empty()) stem = frame::sParentAppEXEName();
  }
  String drive;
  String dir;
  String name;
  String extension;
  text::SplitPath(stem, &drive, &dir, &name, &extension);
  if (extension.empty()) stem += u".ini";
  // A bare name lies in the application's directory; a stem with a directory is used where it
  // points and nowhere else.
  if (drive.empty() && dir.empty()) stem = text::PathWithBackslash(frame::sParentAppPath()) + stem;
  if (isTrue(files::FileExists(stem))) {
    INIFile = stem;
    return VBool::True;
  }
  if (isTrue(ReturnPathIfMissing)) INIFile = stem;
  if (isTrue(ShowMsg)) {
    userInterface()->messageBox(u"The following initialisation file could not be found\r\n" + stem,
                                frame::sParentAppEXEName(), vbExclamation);
  }
  return VBool::False;
}

String sAppINIFile() {
  String path;
  bool failed = false;
  frame::contextTrap(u"sAppINIFile", u"Unexpected error when finding application INI file", [&] {
    if (isTrue(FindINI(path, {}, VBool::False, VBool::True))) return;
    const auto rs = platform::userRegionalSettings();
    const Date now = runtime::Now();
    const String comment = u"This INI file created by default (sAppINIFile) on " +
                           runtime::Format(Variant(now), u"Long Date", *rs) + u" at " +
                           runtime::Format(Variant(now), u"Short Time", *rs);
    failed = !isTrue(PutToINI(path, u"NOTES", u"Comment", comment));
  });
  // Raised past this procedure's own trap, straight to the caller.
  if (failed) {
    throw Error(kErrorAppINIWrite,
                resources::LibraryMessage(326, {Variant(String(u"\r\n")), Variant(path)}),
                u"orvoGeneric DLL");
  }
  return path;
}

void SetAppINIFile(const String& INIFile) {
  frame::trap(u"SetAppINIFile", [&] {
    String value = runtime::Trim(INIFile);
    if (value == u".") value.clear();  // back to the default
    frame::StaticGlobals::instance().setAppINIFileOverride(value);
    frame::LibraryTrace(u"SetAppINIFile has set application INI file to: '" + value + u"'");
  });
}

void DisplayINIFileForThisApp() {
  frame::trap(u"DisplayINIFileForThisApp", [&] {
    const String title = frame::sParentAppTitle();
    String path;
    const String text =
        isTrue(FindINI(path))
            ? u"This application (" + title + u")" +
                  u" is using the following INItialisation file\r\n" + path
            : u"No initialisation (.INI) file found for this application (" + title + u")";
    userInterface()->messageBox(text, title, vbInformation);
  });
}

}  // namespace orvo::settings
