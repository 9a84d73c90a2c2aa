#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "orvogeneric/types.hpp"

namespace orvo::platform {

// The system's ANSI code page: the one that belongs to the user's locale (1252 for English and
// most western locales, 932 Japanese, 936 Chinese (PRC), 949 Korean, 950 Chinese (Taiwan),
// 1250/1251/1253/1254/1255/1256/1257/1258/874 by region).
std::uint32_t systemAnsiCodePage();

// Text to bytes in a Windows code page with the platform's default character "?" for what the
// code page cannot represent, one "?" per UTF-16 code unit of an unmappable surrogate pair.
std::string wideToMultiByte(std::uint32_t codePage, std::u16string_view text);
// Bytes to text; invalid sequences become the code page's default character.
String multiByteToWide(std::uint32_t codePage, std::string_view bytes);

}  // namespace orvo::platform
