#pragma once

#include <cstdint>

#include "orvogeneric/types.hpp"
#include "settings/profile.hpp"

// Typed settings on top of the one-value profile functions: getters with a default and a
// not-found flag, writers of the stored forms, and read-or-create operations that fill an
// application's INI file with every setting it consults.
namespace orvo::settings {

// The profile functions' form for a file: wide for a UTF-16 LE file, 8-bit for any other.
privateprofile::ProfileForm formFor(const String& file);

// Raw read and write through the profile functions, the wide form for a UTF-16 LE file and the
// 8-bit form for any other.
String ReadProfileString(const String& File, const String& Section, const String& Key,
                         const String& DefaultText);
bool WritePrivateProfileString(const String& Section, const String& Key, const String& Value,
                               const String& File);

String sGetFromINI(const String& File, const String& Section, const String& Key,
                   const String& Default, VBool* NotFound = nullptr);
VBool bGetFromINI(const String& File, const String& Section, const String& Key, VBool Default,
                  VBool* NotFound = nullptr);
double dGetFromINI(const String& File, const String& Section, const String& Key, double Default,
                   VBool* NotFound = nullptr);
std::int32_t nGetFromINI(const String& File, const String& Section, const String& Key,
                         std::int32_t Default, VBool* NotFound = nullptr);
Date GetDateFromINI(const String& File, const String& Section, const String& Key, Date Default,
                    VBool* NotFound = nullptr);

VBool PutToINI(const String& File, const String& Section, const String& Key, const String& Entry);
VBool PutBooleanToINI(const String& File, const String& Section, const String& Key, VBool Entry);
VBool PutDoubleToINI(const String& File, const String& Section, const String& Key, double Entry);
VBool PutLongToINI(const String& File, const String& Section, const String& Key,
                   std::int32_t Entry);
VBool PutDateToINI(const String& File, const String& Section, const String& Key, Date Entry);

String ReadWriteINIString(const String& Section, const String& Key, const String& Default,
                          const String& INIFile);
VBool ReadWriteINIBoolean(const String& Section, const String& Key, VBool Default,
                          const String& INIFile);
double ReadWriteINIDouble(const String& Section, const String& Key, double Default,
                          const String& INIFile);
std::int32_t ReadWriteINILong(const String& Section, const String& Key, std::int32_t Default,
                              const String& INIFile);
Date ReadWriteINIDate(const String& Section, const String& Key, Date Default,
                      const String& INIFile);

// The default date of the date getters: 1 January 100.
inline constexpr Date kDefaultINIDate{-657434};

}  // namespace orvo::settings
