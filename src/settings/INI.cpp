#include "frame/parent_app.hpp"
#include "frame/state.hpp"
#include "orvogeneric/classes.hpp"
#include "runtime/strings.hpp"
#include "settings/app_ini.hpp"
#include "settings/ini_values.hpp"

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

// The class methods take the file first for Get/Put and last for the read-or-create forms, as
// the module procedures do; the not-found flag stays inside.
String INI::GetStringFromINI(const String& INIFile, const String& SectionHeader,
                             const String& VarName, const String& Default) {
  return settings::sGetFromINI(INIFile, SectionHeader, VarName, Default);
}
VBool INI::GetBooleanFromINI(const String& INIFile, const String& SectionHeader,
                             const String& VarName, VBool Default) {
  return settings::bGetFromINI(INIFile, SectionHeader, VarName, Default);
}
double INI::GetDoubleFromINI(const String& INIFile, const String& SectionHeader,
                             const String& VarName, double Default) {
  return settings::dGetFromINI(INIFile, SectionHeader, VarName, Default);
}
std::int32_t INI::GetLongFromINI(const String& INIFile, const String& SectionHeader,
                                 const String& VarName, std::int32_t Default) {
  return settings::nGetFromINI(INIFile, SectionHeader, VarName, Default);
}
Date INI::GetDateFromINI(const String& INIFile, const String& SectionHeader, const String& VarName,
                         Date Default) {
  return settings::GetDateFromINI(INIFile, SectionHeader, VarName, Default);
}
VBool INI::PutStringToINI(const String& INIFile, const String& SectionHeader, const String& VarName,
                          const String& Entry) {
  return settings::PutToINI(INIFile, SectionHeader, VarName, Entry);
}
VBool INI::PutBooleanToINI(const String& INIFile, const String& SectionHeader,
                           const String& VarName, VBool Entry) {
  return settings::PutBooleanToINI(INIFile, SectionHeader, VarName, Entry);
}
VBool INI::PutDoubleToINI(const String& INIFile, const String& SectionHeader, const String& VarName,
                          double Entry) {
  return settings::PutDoubleToINI(INIFile, SectionHeader, VarName, Entry);
}
VBool INI::PutLongToINI(const String& INIFile, const String& SectionHeader, const String& VarName,
                        std::int32_t Entry) {
  return settings::PutLongToINI(INIFile, SectionHeader, VarName, Entry);
}
VBool INI::PutDateToINI(const String& FileName, const String& SectionHeader, const String& VarName,
                        Date Entry) {
  return settings::PutDateToINI(FileName, SectionHeader, VarName, Entry);
}
String INI::ReadWriteINIString(const String& SectionHeader, const String& VarName,
                               const String& Default, const String& INIFile) {
  return settings::ReadWriteINIString(SectionHeader, VarName, Default, INIFile);
}
VBool INI::ReadWriteINIBoolean(const String& SectionHeader, const String& VarName, VBool Default,
                               const String& INIFile) {
  return settings::ReadWriteINIBoolean(SectionHeader, VarName, Default, INIFile);
}
double INI::ReadWriteINIDouble(const String& SectionHeader, const String& VarName, double Default,
                               const String& INIFile) {
  return settings::ReadWriteINIDouble(SectionHeader, VarName, Default, INIFile);
}
std::int32_t INI::ReadWriteINILong(const String& SectionHeader, const String& VarName,
                                   std::int32_t Default, const String& INIFile) {
  return settings::ReadWriteINILong(SectionHeader, VarName, Default, INIFile);
}
Date INI::ReadWriteINIDate(const String& SectionHeader, const String& VarName, Date Default,
                           const String& INIFile) {
  return settings::ReadWriteINIDate(SectionHeader, VarName, Default, INIFile);
}
String INI::AppINIFile() { return settings::sAppINIFile(); }
VBool INI::FindINI(String& INIFile, const String& FileStem, VBool ShowMsg) {
  return settings::FindINI(INIFile, FileStem, ShowMsg, VBool::False);
}
void INI::SetAppINIFile(const String& INIFile) { settings::SetAppINIFile(INIFile); }
void INI::DisplayINIFileForThisApp() { settings::DisplayINIFileForThisApp(); }

}  // namespace orvo
