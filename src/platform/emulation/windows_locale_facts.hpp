#pragma once

#include <cstdint>
#include <string_view>

// What the platform keeps per locale that ICU's data does not carry.
namespace orvo::platform::emulation {

struct WindowsCodePages {
  std::uint32_t ansi = 0;  // 0: a Unicode-only locale
  std::uint32_t oem = 1;   // 1 (CP_OEMCP) when the locale has no OEM code page of its own
};

// The default ANSI and OEM code pages of a locale (LOCALE_IDEFAULTANSICODEPAGE and
// LOCALE_IDEFAULTCODEPAGE).
WindowsCodePages windowsCodePages(std::uint32_t lcid);

// Whether the platform has assigned the LCID to a locale; ICU's table names a few that it
// never did (0x0812 for ko_KP, 0x0460 for ks_Arab_IN).
bool isWindowsLocale(std::uint32_t lcid);

// The locale an alternate-sort LCID (a sort ID in bits 16-19, such as 0x10407 for German
// phone-book order) sorts differently from, and agrees with in everything else; 0 when the
// platform has no such sort for the language.
std::uint32_t alternateSortBase(std::uint32_t lcid);

// LOCALE_SABBREVLANGNAME; "ZZZ", the platform's own answer for a locale without one, when
// the LCID is not in the table.
std::u16string_view windowsLanguageAbbreviation(std::uint32_t lcid);

// LOCALE_SLIST; empty when the LCID is not in the table.
std::u16string_view windowsListSeparator(std::uint32_t lcid);

}  // namespace orvo::platform::emulation
