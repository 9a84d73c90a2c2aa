#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "orvogeneric/types.hpp"

namespace orvo::platform {

// The system's ANSI code page (GetACP): $ORVO_ANSI_CODEPAGE when it names one of the pages a
// system can have (874, 932, 936, 949, 950, 1250-1258, 65001), else the default ANSI code page
// of the system locale (LC_ALL, LC_CTYPE, LANG: 1252 for English and most western locales,
// 932 Japanese, 1251 Russian, ...), and 1252 for a Unicode-only system locale.
std::uint32_t systemAnsiCodePage();

inline constexpr std::uint32_t kCodePageUtf8 = 65001;

// Whether text converts to and from the page at all: the recorded pages, UTF-8, UTF-16 (1200,
// 1201) and every page ICU has a table for. The conversions below give nothing for any other
// page, as the platform's conversion fails there; callers that take a page from outside decide
// whether that is an error.
bool codePageAvailable(std::uint32_t codePage);

// Text to bytes in a Windows code page as the platform converts with flags 0: best-fit
// characters, the default character "?" for what the page cannot represent (one per UTF-16 code
// unit, so an unmappable surrogate pair gives "??"); UTF-8 writes a lone surrogate as U+FFFD.
std::string wideToMultiByte(std::uint32_t codePage, std::u16string_view text);
// Bytes to text: undefined bytes and broken sequences as the platform reads them.
String multiByteToWide(std::uint32_t codePage, std::string_view bytes);

// Whether the page converts through the platform's recorded tables (the ANSI code pages 874,
// 932, 936, 949, 950, 1250-1258) or the UTF-8 rules here; other pages go through ICU's tables,
// which can differ from the platform's in best fits and broken sequences.
bool hasRecordedTables(std::uint32_t codePage);
// The same conversions into a caller's buffer, for whole buffers of a file: out holds at least
// bytes.size() units (decoding) or 3 * text.size() bytes (encoding). Returns the count written.
std::size_t multiByteToWide(std::uint32_t codePage, std::span<const std::uint8_t> bytes,
                            char16_t* out);
std::size_t wideToMultiByte(std::uint32_t codePage, std::u16string_view text, std::uint8_t* out);

// A code page's conversions resolved once, for converting many pieces of one file: also UTF-16
// (1200, 1201) as its code units.
class Converter {
 public:
  explicit Converter(std::uint32_t codePage);
  // Whole-buffer conversions with the buffer sizes of the functions above (decoding: one unit
  // per byte; encoding: three bytes per unit).
  std::size_t toWide(std::span<const std::uint8_t> bytes, char16_t* out) const;
  std::size_t fromWide(std::u16string_view text, std::uint8_t* out) const;
  // Whether the page converts at all (codePageAvailable, decided once).
  [[nodiscard]] bool available() const noexcept { return available_; }

 private:
  std::uint32_t codePage_;
  const void* table_;  // the recorded tables, when the page has them
  bool available_;
};

// For tests: UTF-8 encoding with a given vector unit ("avx512", "ssse3", "portable"); false
// when the processor lacks it.
bool encodeUtf8With(const char* unit, std::u16string_view text, std::string& out);

namespace detail {
// ICU's converters, for the pages without recorded tables; nullopt where ICU has no table.
bool icuHasConverter(std::uint32_t codePage);
std::optional<std::string> icuWideToMultiByte(std::uint32_t codePage, std::u16string_view text);
std::optional<String> icuMultiByteToWide(std::uint32_t codePage, std::string_view bytes);
}  // namespace detail

}  // namespace orvo::platform
