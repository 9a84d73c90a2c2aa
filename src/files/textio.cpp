#include "files/textio.hpp"

#include <cstring>

#include "frame/traps.hpp"
#include "platform/codepage.hpp"
#include "runtime/errors.hpp"

namespace orvo::files {

namespace {

void refuseUtf32(std::int32_t codePage, const char16_t* direction) {
  if (codePage == CP_UTF32_LE) {
    frame::RaiseLibraryError(u"UTF-32 LE is not supported. Cannot convert " + String(direction));
  }
  if (codePage == CP_UTF32_BE) {
    frame::RaiseLibraryError(u"UTF-32 BE is not supported. Cannot convert " + String(direction));
  }
}

}  // namespace

std::uint32_t effectiveCodePage(std::int32_t codePage) {
  return codePage == CP_ACP ? platform::systemAnsiCodePage() : static_cast<std::uint32_t>(codePage);
}

void decodeBytes(std::span<const std::uint8_t> bytes, std::int32_t codePage, String& out) {
  refuseUtf32(codePage, u"to string.");
  const std::size_t had = out.size();
  if (codePage == CP_UTF16_LE || codePage == CP_UTF16_BE) {
    // The bytes are the code units; an odd last byte is half a unit, kept as the low half.
    out.resize(had + (bytes.size() + 1) / 2);
    char16_t* units = out.data() + had;
    const bool swap = codePage == CP_UTF16_BE;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
      units[i / 2] = swap ? static_cast<char16_t>(bytes[i] << 8 | bytes[i + 1])
                          : static_cast<char16_t>(bytes[i] | bytes[i + 1] << 8);
    }
    if (bytes.size() % 2 != 0) units[bytes.size() / 2] = bytes.back();
    return;
  }
  const std::uint32_t cp = effectiveCodePage(codePage);
  if (!platform::hasRecordedTables(cp)) {
    // A page the platform does not know converts to nothing, as its conversion fails there.
    out += platform::multiByteToWide(
        cp, std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
    return;
  }
  out.resize(had + bytes.size());
  const std::size_t n = platform::multiByteToWide(cp, bytes, out.data() + had);
  out.resize(had + n);
}

void decodeBytes(std::span<const std::uint8_t> bytes, const platform::Converter& converter,
                 String& out) {
  const std::size_t had = out.size();
  out.resize(had + bytes.size());
  out.resize(had + converter.toWide(bytes, out.data() + had));
}

void encodeText(std::u16string_view text, std::int32_t codePage, std::string& out) {
  refuseUtf32(codePage, u"from string.");
  const std::size_t had = out.size();
  if (codePage == CP_UTF16_LE || codePage == CP_UTF16_BE) {
    out.resize(had + text.size() * 2);
    const bool swap = codePage == CP_UTF16_BE;
    for (std::size_t i = 0; i < text.size(); ++i) {
      const auto lo = static_cast<char>(text[i] & 0xFF);
      const auto hi = static_cast<char>(text[i] >> 8);
      out[had + 2 * i] = swap ? hi : lo;
      out[had + 2 * i + 1] = swap ? lo : hi;
    }
    return;
  }
  const std::uint32_t cp = effectiveCodePage(codePage);
  if (!platform::hasRecordedTables(cp)) {
    out += platform::wideToMultiByte(cp, text);
    return;
  }
  out.resize(had + text.size() * 3);
  const std::size_t n =
      platform::wideToMultiByte(cp, text, reinterpret_cast<std::uint8_t*>(out.data() + had));
  out.resize(had + n);
}

String FromBytesToVBString(const SafeArray& bytes, std::int32_t CodePage) {
  if (!bytes.dimensioned() || bytes.size() == 0) return {};
  String out;
  if (bytes.elementType() == VarType::Byte) {
    decodeBytes(bytes.bytes(), CodePage, out);
    return out;
  }
  // An array of another type is converted element by element to bytes first.
  std::vector<std::uint8_t> copy;
  copy.reserve(bytes.size());
  for (std::int64_t i = bytes.lowerBound(); i <= bytes.upperBound(); ++i) {
    copy.push_back(
        *SafeArray(VarType::Byte, 0, {bytes.get(static_cast<std::int32_t>(i))}).bytes().data());
  }
  decodeBytes(copy, CodePage, out);
  return out;
}

SafeArray FromVBStringToBytes(const String& str, std::int32_t CodePage) {
  std::string bytes;
  encodeText(str, CodePage, bytes);
  return SafeArray(0, std::vector<std::uint8_t>(bytes.begin(), bytes.end()));
}

}  // namespace orvo::files
