#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "orvogeneric/types.hpp"
#include "orvogeneric/variant.hpp"
#include "platform/codepage.hpp"

// Text to bytes and back in a code page, as the file procedures convert: UTF-16 in either
// byte order as it stands, UTF-8 and the ANSI code pages through the platform's conversions,
// UTF-32 refused.
namespace orvo::files {

String FromBytesToVBString(const SafeArray& bytes, std::int32_t CodePage = 0);
SafeArray FromVBStringToBytes(const String& str, std::int32_t CodePage = 0);

// The same conversions on plain memory, for buffers of a file: decode appends to out.
void decodeBytes(std::span<const std::uint8_t> bytes, std::int32_t codePage, String& out);
void encodeText(std::u16string_view text, std::int32_t codePage, std::string& out);

// The same with the code page's conversions resolved beforehand (UTF-32 is the caller's to
// refuse): for the lines of one file.
void decodeBytes(std::span<const std::uint8_t> bytes, const platform::Converter& converter,
                 String& out);

// The code page an ANSI conversion uses for 0: the system's ANSI code page.
std::uint32_t effectiveCodePage(std::int32_t codePage);

}  // namespace orvo::files
