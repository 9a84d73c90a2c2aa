#pragma once

#include <cstdint>
#include <memory>

#include "orvogeneric/collection.hpp"
#include "orvogeneric/types.hpp"

// Locale and code-page questions: the user's separators, the default locales, the ANSI code
// page of the system or of a locale, and lookups in the lists built at start-up.
namespace orvo::system {

// The locale values asked for by number (the platform's LCTypes).
constexpr std::int32_t kDecimalSeparator = 0x000E;
constexpr std::int32_t kListSeparator = 0x000C;
constexpr std::int32_t kThousandSeparator = 0x000F;

// The 8-bit form of the platform's locale information: the value comes back in the locale's
// own ANSI code page and is read as text in the system's, as the original's host does with
// any text an 8-bit call fills in.
String GetUserLocaleInfo(std::int32_t LCType, std::int32_t LCID = 1024);
// The wide form by locale name; "0" means the user's locale.
String GetUserLocaleInfoEx(std::int32_t LCType, const String& LocaleName = u"0");

String GetDecimalSeparator();
String GetListSeparator();
String GetThousandSeparator();

std::int32_t GetLCIDSystemDefault();
std::int32_t GetLCIDUserDefault();
std::int32_t GetWindowsCodePage();

// The locale's default ANSI code page; 0 for an unknown locale.
std::int32_t LCIDToCodePage(std::int32_t LCID);
// The representative locale of a code page; 0 when no installed locale uses it.
std::int32_t CodePageToLCID(std::int32_t CP);
// The list of the locales of a code page, or null when none uses it.
std::shared_ptr<Collection> LCIDsForCodePage(std::int32_t CP);

// The library's own lists, not copies.
std::shared_ptr<Collection> AvailableLCIDs();
std::shared_ptr<Collection> AvailableANSICodePages();

}  // namespace orvo::system
