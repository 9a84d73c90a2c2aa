#include "platform/emulation/windows_locale_facts.hpp"

#include <algorithm>
#include <iterator>

namespace orvo::platform::emulation {

namespace {

constexpr std::uint32_t primaryLanguage(std::uint32_t lcid) { return lcid & 0x3FFU; }

// The code pages of the 8-bit era, by primary language; every language not listed here came
// to the platform as Unicode-only. The pages follow the script a language is written in, so
// a language written in two scripts has its second script among the exceptions below.
struct LanguageCodePages {
  std::uint16_t language;
  WindowsCodePages pages;
};
constexpr WindowsCodePages kWestern{1252, 850};
constexpr WindowsCodePages kWesternUs{1252, 437};
constexpr WindowsCodePages kCentral{1250, 852};
constexpr WindowsCodePages kCyrillic{1251, 866};
constexpr WindowsCodePages kTurkish{1254, 857};
constexpr WindowsCodePages kArabic{1256, 720};
constexpr WindowsCodePages kBaltic{1257, 775};
constexpr LanguageCodePages kByLanguage[] = {
    {0x01, kArabic},     {0x02, kCyrillic},    {0x03, kWestern},   {0x04, {950, 950}},
    {0x05, kCentral},    {0x06, kWestern},     {0x07, kWestern},   {0x08, {1253, 737}},
    {0x09, kWestern},    {0x0A, kWestern},     {0x0B, kWestern},   {0x0C, kWestern},
    {0x0D, {1255, 862}}, {0x0E, kCentral},     {0x0F, kWestern},   {0x10, kWestern},
    {0x11, {932, 932}},  {0x12, {949, 949}},   {0x13, kWestern},   {0x14, kWestern},
    {0x15, kCentral},    {0x16, kWestern},     {0x17, kWestern},   {0x18, kCentral},
    {0x19, kCyrillic},   {0x1A, kCentral},     {0x1B, kCentral},   {0x1C, kCentral},
    {0x1D, kWestern},    {0x1E, {874, 874}},   {0x1F, kTurkish},   {0x20, kArabic},
    {0x21, kWestern},    {0x22, kCyrillic},    {0x23, kCyrillic},  {0x24, kCentral},
    {0x25, kBaltic},     {0x26, kBaltic},      {0x27, kBaltic},    {0x28, kCyrillic},
    {0x29, kArabic},     {0x2A, {1258, 1258}}, {0x2C, kTurkish},   {0x2D, kWestern},
    {0x2E, kWestern},    {0x2F, kCyrillic},    {0x32, kWestern},   {0x34, kWestern},
    {0x35, kWestern},    {0x36, kWestern},     {0x38, kWestern},   {0x3B, kWestern},
    {0x3C, kWestern},    {0x3E, kWestern},     {0x40, kCyrillic},  {0x41, kWesternUs},
    {0x42, kCentral},    {0x43, kTurkish},     {0x44, kCyrillic},  {0x52, kWestern},
    {0x56, kWestern},    {0x5F, kWestern},     {0x62, kWestern},   {0x64, kWesternUs},
    {0x66, kWestern},    {0x67, kWestern},     {0x68, kWesternUs}, {0x6A, kWesternUs},
    {0x6B, kWestern},    {0x6C, kWestern},     {0x6D, kCyrillic},  {0x6E, kWestern},
    {0x6F, kWestern},    {0x70, kWesternUs},   {0x71, kWestern},   {0x74, kWestern},
    {0x75, kWesternUs},  {0x76, kWesternUs},   {0x7A, kWestern},   {0x7C, kWestern},
    {0x7E, kWestern},    {0x80, kArabic},      {0x82, kWestern},   {0x83, kWestern},
    {0x84, kWestern},    {0x85, kCyrillic},    {0x86, kWestern},   {0x87, kWesternUs},
    {0x88, kWestern},    {0x8C, kArabic},      {0x91, kWestern},   {0x92, kArabic},
};

// Locales whose pages are not their language's: Simplified Chinese, the English locales
// that kept the US OEM page, Cyrillic Serbian, Bosnian, Azerbaijani and Uzbek, Cyrillic
// Mongolian, the Arabic-script Punjabi and Sindhi, Latin Inuktitut, and English (UAE), which
// came late and Unicode-only.
struct LocaleCodePages {
  std::uint32_t lcid;
  WindowsCodePages pages;
};
constexpr LocaleCodePages kByLocale[] = {
    {0x0409, kWesternUs},  {0x0C1A, {1251, 855}}, {0x0450, kCyrillic},  {0x082C, kCyrillic},
    {0x0804, {936, 936}},  {0x0843, kCyrillic},   {0x0846, kArabic},    {0x0859, kArabic},
    {0x085D, kWesternUs},  {0x1004, {936, 936}},  {0x1C09, kWesternUs}, {0x1C1A, {1251, 855}},
    {0x201A, {1251, 855}}, {0x281A, {1251, 855}}, {0x3009, kWesternUs}, {0x301A, {1251, 855}},
    {0x3409, kWesternUs},  {0x4009, kWesternUs},  {0x4409, kWesternUs}, {0x4809, kWesternUs},
    {0x4C09, {0, 1}},
};

struct LocaleFacts {
  std::uint32_t lcid;
  std::u16string_view abbreviation;
  std::u16string_view listSeparator;
};
constexpr LocaleFacts kFacts[] = {
#include "platform/emulation/windows_locale_facts.inc"
};

// Locales the platform still answers for that the recording's enumeration no longer lists:
// Serbian (Latin and Cyrillic) of the former Serbia and Montenegro.
constexpr LocaleFacts kUnlisted[] = {
    {0x081A, u"SRL", u";"},
    {0x0C1A, u"SRB", u";"},
};

const LocaleFacts* factsOf(std::uint32_t lcid) {
  const auto* it =
      std::lower_bound(std::begin(kFacts), std::end(kFacts), lcid,
                       [](const LocaleFacts& f, std::uint32_t l) { return f.lcid < l; });
  if (it != std::end(kFacts) && it->lcid == lcid) return it;
  for (const auto& f : kUnlisted) {
    if (f.lcid == lcid) return &f;
  }
  return nullptr;
}

}  // namespace

WindowsCodePages windowsCodePages(std::uint32_t lcid) {
  for (const auto& l : kByLocale) {
    if (l.lcid == lcid) return l.pages;
  }
  for (const auto& l : kByLanguage) {
    if (l.language == primaryLanguage(lcid)) return l.pages;
  }
  return {};
}

bool isWindowsLocale(std::uint32_t lcid) { return factsOf(lcid) != nullptr; }

std::uint32_t alternateSortBase(std::uint32_t lcid) {
  // The sorts the platform defines besides each language's default (sort ID 0): Chinese
  // Unicode, PRC stroke, Bopomofo and radical-stroke; Japanese Unicode and radical-stroke;
  // Korean Unicode; German phone book; Hungarian technical; Georgian modern.
  struct AlternateSorts {
    std::uint16_t language;
    std::uint16_t sorts;  // bit n: sort ID n exists
  };
  constexpr AlternateSorts kSorts[] = {
      {0x04, 0b11110}, {0x11, 0b10010}, {0x12, 0b00010},
      {0x07, 0b00010}, {0x0E, 0b00010}, {0x37, 0b00010},
  };
  const std::uint32_t sort = (lcid >> 16) & 0xFU;
  const std::uint32_t base = lcid & 0xFFFFU;
  if (sort == 0 || (lcid >> 20) != 0 || !isWindowsLocale(base)) return 0;
  for (const auto& s : kSorts) {
    if (s.language == primaryLanguage(base) && ((s.sorts >> sort) & 1U) != 0) return base;
  }
  return 0;
}

std::u16string_view windowsLanguageAbbreviation(std::uint32_t lcid) {
  const LocaleFacts* f = factsOf(lcid);
  return f != nullptr ? f->abbreviation : u"ZZZ";
}

std::u16string_view windowsListSeparator(std::uint32_t lcid) {
  const LocaleFacts* f = factsOf(lcid);
  return f != nullptr ? f->listSeparator : std::u16string_view();
}

}  // namespace orvo::platform::emulation
