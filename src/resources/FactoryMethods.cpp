#include <memory>
#include <string>

#include "frame/library_info.hpp"
#include "frame/parent_app.hpp"
#include "frame/trace.hpp"
#include "frame/traps.hpp"
#include "orvogeneric/classes.hpp"
#include "orvogeneric/error.hpp"
#include "resources/resource_manager.hpp"
#include "runtime/strings.hpp"
#include "settings/ini_values.hpp"
#include "system/locale_queries.hpp"

namespace orvo {

std::shared_ptr<ResourceManager> FactoryMethods::GetResourceManager(String& FileStub,
                                                                    String* SearchDirectory,
                                                                    std::int32_t* LocaleID) {
  auto manager = std::make_shared<ResourceManager>();
  try {
    resources::Initialise(*manager, FileStub, SearchDirectory != nullptr ? *SearchDirectory : u"",
                          LocaleID != nullptr ? *LocaleID : -1);
  } catch (...) {
    // Never half a manager: the new one goes, its error goes on under the library's name.
    manager.reset();
    const Error e = frame::asError(std::current_exception());
    throw Error(e.number(), e.description(), u"orvoGeneric DLL");
  }
  return manager;
}

std::shared_ptr<ResourceManager> FactoryMethods::GetResourceManagerUseINI(
    const String& FileStub, const String& SearchDirectory, std::int32_t DefaultLocaleID,
    const String& LocaleINIPath) {
  String directory = runtime::Trim(SearchDirectory);
  if (directory.empty()) directory = frame::sParentAppPath();
  const String iniPath =
      LocaleINIPath.empty() ? frame::sParentAppPath() + u"Locale.ini" : LocaleINIPath;
  const String section = u"Locale";
  std::int32_t localeID =
      settings::nGetFromINI(iniPath, section, u"LocaleIDDecimal", DefaultLocaleID);
  String stub = runtime::Trim(FileStub);
  auto manager = GetResourceManager(stub, &directory, &localeID);
  ResourceManager& m = *manager;
  m.AllowBoldInFarEast(
      settings::bGetFromINI(iniPath, section, u"AllowBoldInFarEast", m.AllowBoldInFarEast()));
  m.ChangeFontNameInFarEast(settings::bGetFromINI(iniPath, section, u"ChangeFontNameInFarEast",
                                                  m.ChangeFontNameInFarEast()));
  m.FontNameInFarEast(
      settings::sGetFromINI(iniPath, section, u"FontNameInFarEast", m.FontNameInFarEast()));
  m.IncreasePointSizeInFarEast(settings::bGetFromINI(
      iniPath, section, u"IncreasePointSizeInFarEast", m.IncreasePointSizeInFarEast()));

  // Labels padded to 28 so the values line up; the closing line has one tilde more than the
  // opening one, as it always had.
  const auto& info = frame::libraryInfo();
  const String lines[] = {
      u"GetResourceManagerUseINI~~~~~~~~~~~~~~~~~~~~~~~~~~~~start",
      u"FileStub:                   " + m.FileStub(),
      u"LocaleID:                   " + runtime::DecimalText(m.LocaleID()),
      u"SearchDirectory:            " + m.SearchDirectory(),
      u"Locale.ini:                 " + iniPath,
      u"orvoGeneric Version:        " + info.version,
      u"Revision:                   " + info.revision,
      u"WindowsCodePage:            " + runtime::DecimalText(system::GetWindowsCodePage()),
      u"GetResourceManagerUseINI~~~~~~~~~~~~~~~~~~~~~~~~~~~~~end",
  };
  for (const String& line : lines) frame::LibraryTrace(line);
  return manager;
}

}  // namespace orvo
