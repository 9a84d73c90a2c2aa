#include "orvogeneric/classes.hpp"
#include "system/locale_queries.hpp"

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

}  // namespace orvo
