#include "orvogeneric/types.hpp"

#include <cmath>
#include <limits>

#include "orvogeneric/error.hpp"
#include "runtime/errors.hpp"

namespace orvo {

Currency Currency::fromDouble(double value) {
  const double scaledValue = value * static_cast<double>(scale);
  // The range check is on the scaled value: the largest Currency is 922337203685477.5807.
  if (!std::isfinite(scaledValue) || scaledValue >= 9223372036854775808.0 ||
      scaledValue < -9223372036854775808.0) {
    runtime::raise(runtime::errOverflow);
  }
  return Currency{static_cast<std::int64_t>(std::nearbyint(scaledValue))};
}

namespace {

// Lone surrogates U+DC80..U+DCFF stand for bytes that were not UTF-8 when escaped is set.
std::string encodeUtf8(std::u16string_view text, bool escaped) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    char32_t cp = text[i];
    if (cp >= 0xD800 && cp <= 0xDBFF && i + 1 < text.size() && text[i + 1] >= 0xDC00 &&
        text[i + 1] <= 0xDFFF) {
      cp = 0x10000 + ((cp - 0xD800) << 10) + (text[i + 1] - 0xDC00);
      ++i;
    } else if (escaped && cp >= 0xDC80 && cp <= 0xDCFF) {
      out += static_cast<char>(cp & 0xFF);
      continue;
    } else if (cp >= 0xD800 && cp <= 0xDFFF) {
      cp = 0xFFFD;
    }
    if (cp < 0x80) {
      out += static_cast<char>(cp);
    } else if (cp < 0x800) {
      out += static_cast<char>(0xC0 | (cp >> 6));
      out += static_cast<char>(0x80 | (cp & 0x3F));
    } else if (cp < 0x10000) {
      out += static_cast<char>(0xE0 | (cp >> 12));
      out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (cp & 0x3F));
    } else {
      out += static_cast<char>(0xF0 | (cp >> 18));
      out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
      out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (cp & 0x3F));
    }
  }
  return out;
}

String decodeUtf8(std::string_view text, bool escaped) {
  String out;
  out.reserve(text.size());
  std::size_t i = 0;
  while (i < text.size()) {
    const auto b = static_cast<unsigned char>(text[i]);
    char32_t cp = 0xFFFD;
    std::size_t len = 1;
    std::size_t need = 0;
    if (b < 0x80) {
      cp = b;
    } else if ((b & 0xE0) == 0xC0) {
      cp = b & 0x1F;
      need = 1;
    } else if ((b & 0xF0) == 0xE0) {
      cp = b & 0x0F;
      need = 2;
    } else if ((b & 0xF8) == 0xF0) {
      cp = b & 0x07;
      need = 3;
    }
    if (need > 0) {
      bool ok = true;
      for (std::size_t k = 1; ok && k <= need; ++k) {
        if (i + k >= text.size() || (static_cast<unsigned char>(text[i + k]) & 0xC0) != 0x80) {
          ok = false;
        } else {
          cp = (cp << 6) | (static_cast<unsigned char>(text[i + k]) & 0x3F);
        }
      }
      static constexpr char32_t kMin[] = {0, 0x80, 0x800, 0x10000};
      if (ok && cp >= kMin[need] && cp <= 0x10FFFF && !(cp >= 0xD800 && cp <= 0xDFFF)) {
        len = need + 1;
      } else {
        cp = 0xFFFD;
      }
    }
    if (escaped && cp == 0xFFFD && len == 1 && b >= 0x80) cp = 0xDC00 | b;
    if (cp >= 0x10000) {
      out += static_cast<char16_t>(0xD800 + ((cp - 0x10000) >> 10));
      out += static_cast<char16_t>(0xDC00 + ((cp - 0x10000) & 0x3FF));
    } else {
      out += static_cast<char16_t>(cp);
    }
    i += len;
  }
  return out;
}

}  // namespace

std::string toUtf8(std::u16string_view text) { return encodeUtf8(text, false); }
String fromUtf8(std::string_view text) { return decodeUtf8(text, false); }
std::string toSystemBytes(std::u16string_view text) { return encodeUtf8(text, true); }
String fromSystemBytes(std::string_view bytes) { return decodeUtf8(bytes, true); }

}  // namespace orvo
