#pragma once

#include <cstddef>
#include <cstdint>

// The Windows code-page tables as the platform answered them (generated at build time from the
// recordings in data/codepages by tools/cpgen/cpgen.py).
namespace orvo::platform::tables {

struct CodePageTable {
  std::uint32_t codePage;
  bool doubleByte;
  bool asciiIdentity;  // bytes 00..7F are themselves and never lead bytes
  char16_t unicodeDefault;
  const char16_t* single;       // 256: what one byte alone gives (a lead byte: the default)
  const std::uint16_t* rowOf;   // 256: the lead byte's row in rows, 0xFFFF for no lead byte
  const char16_t* rows;         // 256 per lead byte: lead + trail (trail 00 never pairs)
  const std::uint16_t* pageOf;  // 256: the page of units hi00..hiFF in pages
  const std::uint16_t* pages;   // 256 per page: a byte below 0x100, else lead << 8 | trail
};

extern const CodePageTable kCodePages[];
extern const std::size_t kCodePageCount;

}  // namespace orvo::platform::tables
