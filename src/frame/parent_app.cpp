#include "frame/parent_app.hpp"

#include <string>

#include "files/fileutils.hpp"
#include "frame/library_info.hpp"
#include "frame/state.hpp"
#include "frame/trace.hpp"
#include "frame/traps.hpp"
#include "orvogeneric/user_interface.hpp"
#include "platform/system_paths.hpp"
#include "runtime/strings.hpp"
#include "text/paths.hpp"

namespace orvo::frame {

void InitialiseParentAppProperties(const String& AppPath, const String& AppEXEName) {
  // No trap of its own: bad arguments are not an error, they leave the properties to be
  // derived from the process later.
  auto& globals = StaticGlobals::instance();
  const String path = runtime::Trim(AppPath);
  const String exeName = runtime::Trim(AppEXEName);
  if (globals.parentAppInitialised()) {
    if (globals.parentAppPath() != path) {
      LibraryTrace(
          u"InitialiseParentAppProperties: existing & proposed new paths are different: '" +
          globals.parentAppPath() + u"' : '" + path + u"'");
    }
    if (globals.parentAppEXEName() != exeName) {
      LibraryTrace(
          u"InitialiseParentAppProperties: existing & proposed new exenames are different: '" +
          globals.parentAppEXEName() + u"' : '" + exeName + u"'");
    }
    return;
  }
  // The name's length is tested before trimming: a name of blanks passes and is stored empty.
  if (path.empty() || !isTrue(files::DirExists(path)) || AppEXEName.empty()) return;
  if (globals.initialiseParentApp(path, exeName, exeName)) writeLibraryInformationBlock();
}

void writeLibraryInformationBlock() {
  const LibraryInfo& info = libraryInfo();
  auto& globals = StaticGlobals::instance();
  const String lines[] = {
      u" ",
      u"----------------------< GENERIC DLL >----------------------",
      u"  Description           : " + info.description,
      u"  DLL Title             : " + info.title,
      u"  Company name          : " + info.companyName,
      u"  Copyright             : " + info.copyright,
      u"  Comments              : " + info.comments,
      u"  DLL name              : " + info.moduleName,
      u"  DLL path              : " + info.directory,
      u"  Start mode            : " + runtime::DecimalText(info.startMode),
      u"-----------------------------------------------------------",
      u"Parent App Properties -------------------------------------",
      u"ParentAppPath:              " + globals.parentAppPath(),
      u"ParentAppEXEName:           " + globals.parentAppEXEName(),
      u"msParentAppTitle:           " + globals.parentAppTitle(),
      u"Parent App Properties -------------------------------------",
      // The label says exepath; the value has always been the library's own directory.
      u"app.exepath:         " + info.directory,
  };
  for (const String& line : lines) LibraryTrace(line);
}

void deriveParentAppProperties(const String& modulePath) {
  String drive;
  String dir;
  String name;
  text::SplitPath(modulePath, &drive, &dir, &name);
  if (runtime::UCase(name) == u"VB6") {
    // A development run that never told the library who it is: said every time it is asked.
    userInterface()->messageBox(
        u"Programmer error: missing call to inibas.InitialiseAppProperties(App.Path, "
        u"App.EXEName) in program startup code",
        u"", vbOKOnly);
    return;
  }
  // No information block on this path: only an explicit initialisation writes it.
  StaticGlobals::instance().initialiseParentApp(drive + dir, name, name);
}

void CheckParentAppInitialised() {
  contextTrap(u"CheckParentAppInitialised",
              u"Unexpected error checking and initialising Parent App Properties", [] {
                if (StaticGlobals::instance().parentAppInitialised()) return;
                deriveParentAppProperties(sParentGetModulePathName());
              });
}

String sParentGetModulePathName() {
  return contextTrap(
      u"sParentGetModulePathName",
      u"Unexpected error while retrieving the parent application path and executable name",
      [] { return platform::executablePath(); });
}

String sParentAppEXEName() {
  return contextTrap(u"sParentAppEXEName",
                     u"Unexpected error retrieving the parent application EXEName", [] {
                       CheckParentAppInitialised();
                       return StaticGlobals::instance().parentAppEXEName();
                     });
}

String sParentAppPath() {
  return contextTrap(u"sParentAppPath", u"Unexpected error retrieving the parent application path",
                     [] {
                       CheckParentAppInitialised();
                       return text::PathWithBackslash(StaticGlobals::instance().parentAppPath());
                     });
}

String sParentAppPathAndEXEName() {
  // The same context sentence as sParentAppPath, as it always was.
  return contextTrap(u"sParentAppPathAndEXEName",
                     u"Unexpected error retrieving the parent application path", [] {
                       CheckParentAppInitialised();
                       return text::PathWithBackslash(sParentAppPath()) + sParentAppEXEName();
                     });
}

String sParentAppTitle() {
  return contextTrap(u"sParentAppTitle",
                     u"Unexpected error retrieving the parent application title", [] {
                       CheckParentAppInitialised();
                       return StaticGlobals::instance().parentAppTitle();
                     });
}

void SetAppTitle(const String& AppTitle) {
  trap(u"SetAppTitle", [&] {
    // Neither checks nor triggers initialisation: a title set first is replaced by the
    // executable name when the properties are initialised, an order dependence that is kept.
    StaticGlobals::instance().setParentAppTitle(runtime::Trim(AppTitle));
    LibraryTrace(u"SetAppTitle has set application title to: '" +
                 StaticGlobals::instance().parentAppTitle() + u"'");
  });
}

}  // namespace orvo::frame
