#include <unicode/ucnv.h>
#include <unicode/utf16.h>

#include <map>
#include <memory>
#include <optional>
#include <string>

#include "platform/codepage.hpp"

namespace orvo::platform {

namespace {

struct ConverterCloser {
  void operator()(UConverter* c) const { ucnv_close(c); }
};
using ConverterPtr = std::unique_ptr<UConverter, ConverterCloser>;

// ICU names the Windows tables "windows-NNNN"; the double-byte ones carry other names.
ConverterPtr openConverter(std::uint32_t codePage) {
  std::string names[3];
  switch (codePage) {
    case 932:
      names[0] = "windows-31j";
      names[1] = "ibm-943_P15A-2003";
      break;
    case 936:
      names[0] = "windows-936-2000";
      names[1] = "GBK";
      break;
    case 949:
      names[0] = "windows-949-2000";
      names[1] = "windows-949";
      break;
    case 950:
      names[0] = "windows-950-2000";
      names[1] = "Big5";
      break;
    case 874:
      names[0] = "windows-874-2000";
      names[1] = "TIS-620";
      break;
    case 65001:
      names[0] = "UTF-8";
      break;
    case 28603:
      names[0] = "ISO-8859-13";
      break;
    case 28605:
      names[0] = "ISO-8859-15";
      break;
    default:
      names[0] = "windows-" + std::to_string(codePage);
      names[1] = "cp" + std::to_string(codePage);
      names[2] = "ibm-" + std::to_string(codePage);
      // ICU knows the ISO 8859 pages 28591-28599 by their ISO names only.
      if (codePage >= 28591 && codePage <= 28599) {
        names[1] = "ISO-8859-" + std::to_string(codePage - 28590);
      }
  }
  for (const auto& name : names) {
    if (name.empty()) continue;
    UErrorCode status = U_ZERO_ERROR;
    ConverterPtr c(ucnv_open(name.c_str(), &status));
    if (U_SUCCESS(status) && c) {
      status = U_ZERO_ERROR;
      ucnv_setSubstChars(c.get(), "?", 1, &status);
      // ICU's fallback mappings are the nearest it has to the platform's best fit (a macron
      // letter to its base letter) for the pages without recorded tables.
      ucnv_setFallback(c.get(), true);
      return c;
    }
  }
  return nullptr;
}

// Converters are not thread-safe; each thread keeps its own per code page. nullptr for a page
// ICU has no table for.
UConverter* converter(std::uint32_t codePage) {
  thread_local std::map<std::uint32_t, ConverterPtr> converters;
  auto& slot = converters[codePage];
  if (!slot) slot = openConverter(codePage);
  return slot.get();
}

}  // namespace

bool detail::icuHasConverter(std::uint32_t codePage) { return converter(codePage) != nullptr; }

std::optional<std::string> detail::icuWideToMultiByte(std::uint32_t codePage,
                                                      std::u16string_view text) {
  UConverter* found = converter(codePage);
  if (found == nullptr) return std::nullopt;
  UConverter& cnv = *found;
  std::string out;
  out.reserve(text.size());
  char buffer[8];
  // One code point at a time: the platform writes one default character per UTF-16 code unit
  // it cannot map, where ICU would write one per code point.
  for (std::size_t i = 0; i < text.size();) {
    std::size_t len = 1;
    if (U16_IS_LEAD(text[i]) && i + 1 < text.size() && U16_IS_TRAIL(text[i + 1])) len = 2;
    UErrorCode status = U_ZERO_ERROR;
    ucnv_resetFromUnicode(&cnv);
    ucnv_setFromUCallBack(&cnv, UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    status = U_ZERO_ERROR;
    const auto n = ucnv_fromUChars(&cnv, buffer, sizeof buffer,
                                   reinterpret_cast<const UChar*>(text.data() + i),
                                   static_cast<int32_t>(len), &status);
    if (U_SUCCESS(status) && n > 0) {
      out.append(buffer, static_cast<std::size_t>(n));
    } else {
      out.append(len, '?');
    }
    i += len;
  }
  return out;
}

std::optional<String> detail::icuMultiByteToWide(std::uint32_t codePage, std::string_view bytes) {
  UConverter* found = converter(codePage);
  if (found == nullptr) return std::nullopt;
  UConverter& cnv = *found;
  ucnv_resetToUnicode(&cnv);
  String out(bytes.size() * 2 + 2, u'\0');
  UErrorCode status = U_ZERO_ERROR;
  const auto n =
      ucnv_toUChars(&cnv, reinterpret_cast<UChar*>(out.data()), static_cast<int32_t>(out.size()),
                    bytes.data(), static_cast<int32_t>(bytes.size()), &status);
  if (U_FAILURE(status) && status != U_STRING_NOT_TERMINATED_WARNING) return std::nullopt;
  out.resize(static_cast<std::size_t>(n));
  return out;
}

}  // namespace orvo::platform
