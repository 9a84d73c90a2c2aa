// Code-page conversion in both directions on any input, against a plain one-character-at-a-time
// reading of the same recorded tables (and of the UTF-8 rules): the whole-buffer fast paths must
// give exactly the same text and bytes, and stay inside buffers of the documented sizes.
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "fuzz_input.hpp"
#include "platform/codepage.hpp"
#include "platform/emulation/codepage_tables.hpp"
#include "support/reference_utf8.hpp"

namespace {

using orvo::platform::tables::CodePageTable;

std::u16string referenceDecode(const CodePageTable& t, const std::uint8_t* in, std::size_t n) {
  std::u16string out;
  for (std::size_t i = 0; i < n;) {
    const std::uint16_t row = t.rowOf[in[i]];
    if (row != 0xFFFF && i + 1 < n && in[i + 1] != 0) {
      out += t.rows[row * 256U + in[i + 1]];
      i += 2;
    } else {
      out += t.single[in[i++]];
    }
  }
  return out;
}

std::vector<std::uint8_t> referenceEncode(const CodePageTable& t, const std::u16string& text) {
  std::vector<std::uint8_t> out;
  for (const char16_t c : text) {
    const std::uint16_t v = t.pages[t.pageOf[c >> 8] * 256U + (c & 0xFF)];
    if (v >= 0x100) out.push_back(static_cast<std::uint8_t>(v >> 8));
    out.push_back(static_cast<std::uint8_t>(v));
  }
  return out;
}

// Units mostly below 0x800, so that the eight-at-once paths of the UTF-8 writer are taken: the
// high bits of each input unit are folded away unless its top bit asks for the whole unit.
std::u16string narrowUnits(const std::u16string& units) {
  std::u16string out(units);
  for (char16_t& c : out) {
    if ((c & 0x8000) == 0) c = static_cast<char16_t>(c % 0x900);
  }
  return out;
}

// Each UTF-16 round trip through UTF-8 keeps every unit except lone surrogates.
std::u16string withoutLoneSurrogates(const std::u16string& text) {
  std::u16string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char16_t c = text[i];
    if (c >= 0xD800 && c <= 0xDBFF && i + 1 < text.size() && text[i + 1] >= 0xDC00 &&
        text[i + 1] <= 0xDFFF) {
      out += c;
      out += text[++i];
    } else {
      out += (c >= 0xD800 && c <= 0xDFFF) ? u'\xFFFD' : c;
    }
  }
  return out;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 1) return 0;
  namespace cp = orvo::platform;
  const std::size_t pick = data[0] % (cp::tables::kCodePageCount + 1);
  const std::uint8_t* in = data + 1;
  const std::size_t n = size - 1;
  const std::u16string units = orvo::fuzz::unitsOf(in, n);
  // Exactly the documented buffer sizes, on the heap, so that a write past them is caught.
  std::vector<char16_t> wide(n);
  std::vector<std::uint8_t> narrow(units.size() * 3);
  if (pick == cp::tables::kCodePageCount) {
    const std::size_t w = cp::multiByteToWide(cp::kCodePageUtf8, {in, n}, wide.data());
    if (w > n) __builtin_trap();
    const std::size_t b = cp::wideToMultiByte(cp::kCodePageUtf8, units, narrow.data());
    // What was written decodes back to the text, lone surrogates as U+FFFD.
    std::vector<char16_t> back(b);
    const std::size_t r = cp::multiByteToWide(cp::kCodePageUtf8, {narrow.data(), b}, back.data());
    if (std::u16string(back.data(), r) != withoutLoneSurrogates(units)) __builtin_trap();
    if (std::string(narrow.begin(), narrow.begin() + static_cast<std::ptrdiff_t>(b)) !=
        orvo::test::referenceUtf8(units)) {
      __builtin_trap();
    }
    const std::u16string mostlyNarrow = narrowUnits(units);
    const std::size_t m = cp::wideToMultiByte(cp::kCodePageUtf8, mostlyNarrow, narrow.data());
    if (std::string(narrow.begin(), narrow.begin() + static_cast<std::ptrdiff_t>(m)) !=
        orvo::test::referenceUtf8(mostlyNarrow)) {
      __builtin_trap();
    }
    return 0;
  }
  const CodePageTable& t = cp::tables::kCodePages[pick];
  const std::size_t w = cp::multiByteToWide(t.codePage, {in, n}, wide.data());
  if (std::u16string(wide.data(), w) != referenceDecode(t, in, n)) __builtin_trap();
  const std::size_t b = cp::wideToMultiByte(t.codePage, units, narrow.data());
  if (std::vector<std::uint8_t>(narrow.begin(), narrow.begin() + static_cast<std::ptrdiff_t>(b)) !=
      referenceEncode(t, units)) {
    __builtin_trap();
  }
  return 0;
}
