#include "orvogeneric/classes.hpp"
#include "system/locale_queries.hpp"
#include "system/processes.hpp"
#include "system/spreadsheet.hpp"
#include "text/keypress.hpp"

namespace orvo {

String SystemUtilities::GetUserLocaleInfo(std::int32_t LCType, std::int32_t LCID) {
  return system::GetUserLocaleInfo(LCType, LCID);
}

String SystemUtilities::GetUserLocaleInfoEx(std::int32_t LCType, const String& LocaleName) {
  return system::GetUserLocaleInfoEx(LCType, LocaleName);
}

String SystemUtilities::GetDecimalSeparator() { return system::GetDecimalSeparator(); }

String SystemUtilities::GetListSeparator() { return system::GetListSeparator(); }

String SystemUtilities::GetThousandSeparator() { return system::GetThousandSeparator(); }

std::int32_t SystemUtilities::GetLCIDSystemDefault() { return system::GetLCIDSystemDefault(); }

std::int32_t SystemUtilities::GetLCIDUserDefault() { return system::GetLCIDUserDefault(); }

std::int32_t SystemUtilities::GetWindowsCodePage() { return system::GetWindowsCodePage(); }

std::int32_t SystemUtilities::LCIDToCodePage(std::int32_t LCID) {
  return system::LCIDToCodePage(LCID);
}

std::int32_t SystemUtilities::CodePageToLCID(std::int32_t CP) { return system::CodePageToLCID(CP); }

std::shared_ptr<Collection> SystemUtilities::LCIDsForCodePage(std::int32_t CP) {
  return system::LCIDsForCodePage(CP);
}

std::shared_ptr<Collection> SystemUtilities::AvailableLCIDs() { return system::AvailableLCIDs(); }

std::shared_ptr<Collection> SystemUtilities::AvailableANSICodePages() {
  return system::AvailableANSICodePages();
}

String SystemUtilities::ORVOMutexName(const String& Path, const String& Stub) {
  return system::ORVOMutexName(Path, Stub);
}
std::int32_t SystemUtilities::CreateMutex(const String& Mutex, CreateMutexEnum& Status) {
  return system::CreateMutex(Mutex, Status);
}
VBool SystemUtilities::MutexAlreadyExists(const String& MutexName) {
  return system::MutexAlreadyExists(MutexName);
}
void SystemUtilities::SleepCurrentThread(double Seconds) { system::SleepCurrentThread(Seconds); }
VBool SystemUtilities::SyncShell(const String& CommandLine, std::int32_t TimeoutMilliseconds,
                                 VBool WaitForInputIdle, VBool Hide) {
  return system::SyncShell(CommandLine, TimeoutMilliseconds, WaitForInputIdle, Hide);
}
VBool SystemUtilities::WaitForProcess(std::int32_t taskId, std::int32_t milliseconds) {
  return system::WaitForProcess(taskId, milliseconds);
}
VBool SystemUtilities::IsKeyDown(std::int32_t lKeyCode) { return system::IsKeyDown(lKeyCode); }
VBool SystemUtilities::b1or0ToBoolean(std::int16_t nInput) {
  return system::b1or0ToBoolean(nInput);
}
std::int16_t SystemUtilities::nBooleanTo1or0(VBool bInput) {
  return system::nBooleanTo1or0(bInput);
}

void SystemUtilities::ValidateKeyPressReal(std::int16_t& KeyAscii, const String& SelText,
                                           std::int32_t SelStart, std::int32_t SelLen,
                                           const String& TestText, VBool SuppressBeep) {
  text::ValidRs_subWorker(KeyAscii, SelText, SelStart, SelLen, TestText, SuppressBeep);
}
VBool SystemUtilities::IsValidReal(const String& text) { return text::ValidRString(text); }
void SystemUtilities::ValidateKeyPressString(std::int16_t& KeyAscii, const String& BannedChars,
                                             VBool SuppressBeep) {
  text::ValidStr_worker(KeyAscii, BannedChars, SuppressBeep);
}

VBool SystemUtilities::RunOrRestoreExcel(std::shared_ptr<Object>* objExcel, VBool SuppressWarning,
                                         VBool UseINIFile, std::int32_t WindowState) {
  return system::RunOrRestoreExcel(objExcel, SuppressWarning, UseINIFile, WindowState);
}

void SystemUtilities::OpenInExcel(const String& File, const Variant& FieldDelimiter, VBool USFormat,
                                  VBool SuppressWarning, VBool UseINIFile,
                                  std::int32_t WindowState) {
  system::OpenInExcel(File, FieldDelimiter, USFormat, SuppressWarning, UseINIFile, WindowState);
}

void SystemUtilities::SafeAppActivate(const String& Title) { system::SafeAppActivate(Title); }

}  // namespace orvo
