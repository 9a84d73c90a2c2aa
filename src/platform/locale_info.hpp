#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>

#include "orvogeneric/types.hpp"

// The platform's locale-information services in their Windows shapes (GetLocaleInfoA/Ex,
// EnumSystemLocales, the default LCIDs), so that the procedures above can follow the original
// calls step by step: buffer sizes, terminating NULs, failures as a zero count.
namespace orvo::platform {

inline constexpr std::uint32_t kLocaleInvariant = 0x007F;
inline constexpr std::uint32_t kLocaleUserDefault = 0x0400;
inline constexpr std::uint32_t kLocaleSystemDefault = 0x0800;

// Flags a caller may add to an LCType.
inline constexpr std::uint32_t kLocaleNoUserOverride = 0x80000000U;
inline constexpr std::uint32_t kLocaleUseCpAcp = 0x40000000U;

enum class LocaleSet : std::uint32_t { Installed = 1, Supported = 2 };

// Calls `callback` with each locale's identifier as eight hexadecimal digits ("00000409"),
// as the platform's enumeration passes it, until the callback returns false. On POSIX the
// locales are the ones ICU has data for under an LCID that Windows assigned, in the order of
// ICU's locale names; ICU knows no difference between installed and supported, so both sets
// are the same.
void enumSystemLocales(LocaleSet which, const std::function<bool(std::string_view)>& callback);

// GetLocaleInfoA: the value as bytes in the locale's default ANSI code page (the system's
// when the locale has none or with kLocaleUseCpAcp), followed by a NUL. Returns the count
// written including the NUL, the count needed when `size` is 0, and 0 on failure (unknown
// locale or type, or a buffer too small).
int getLocaleInfoA(std::uint32_t lcid, std::uint32_t lcType, char* buffer, int size);

// GetLocaleInfoEx: `localeName` NUL-terminated, nullptr for the user's locale, "" for the
// invariant locale; counts in UTF-16 code units, otherwise as getLocaleInfoA.
int getLocaleInfoEx(const char16_t* localeName, std::uint32_t lcType, char16_t* buffer, int size);

// The value GetLocaleInfoW gives, or nothing when the platform fails.
std::optional<String> localeInfo(std::uint32_t lcid, std::uint32_t lcType);

// The system default LCID follows the character-type locale (LC_ALL, LC_CTYPE, LANG), as the
// system locale decides the ANSI code page on Windows; the user default follows the
// number-format locale (LC_ALL, LC_NUMERIC, LANG), the one the regional settings come from.
std::uint32_t systemDefaultLCID();
std::uint32_t userDefaultLCID();

// The specific LCID of a POSIX or ICU locale name: a language-only or unknown region is
// taken to its language's usual country ("en_AE" -> 0x0409); 0x0409 when ICU knows none.
std::uint32_t lcidForLocaleName(std::string_view localeName);

}  // namespace orvo::platform
