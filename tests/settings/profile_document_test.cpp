#include "settings/profile_document.hpp"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "support/test_support.hpp"

namespace orvo::test {
namespace {

using settings::privateprofile::detail::Document;
using settings::privateprofile::detail::upper;

String numbered(const String& pattern, std::size_t n) {
  char digits[20];
  const int count = std::snprintf(digits, sizeof digits, "%zx", n);
  String out;
  for (const char16_t c : pattern) {
    if (c == u'#') {
      out.append(digits, digits + count);
    } else {
      out.push_back(c);
    }
  }
  return out;
}

// The file's bytes: units of an ANSI file are its bytes; UTF-16 gets its BOM.
std::string bytesIn(const String& form, const String& text) {
  if (form != u"utf-16le" && form != u"utf-16be") return bytesOf(text);
  const bool little = form == u"utf-16le";
  std::string out = little ? "\xFF\xFE" : "\xFE\xFF";
  for (const char16_t c : text) {
    const char lo = static_cast<char>(c & 0xFF);
    const char hi = static_cast<char>(c >> 8);
    out += little ? std::string{lo, hi} : std::string{hi, lo};
  }
  return out;
}

// Names in the file's bytes are hashed four at a time, lookups unit by unit: every ASCII name
// must hash the same both ways, whatever its length, and a byte beyond ASCII is left to the
// slow way.
TEST(ProfileDocument, NamesHashTheSameFromBytesAndFromText) {
  using settings::privateprofile::detail::hashAsciiBytes;
  using settings::privateprofile::detail::hashUnits;
  std::string all;
  for (int c = 1; c < 0x80; ++c) all.push_back(static_cast<char>(c));
  for (std::size_t length = 0; length <= 11; ++length) {
    for (std::size_t start = 0; start + length <= all.size(); ++start) {
      const std::string name = all.substr(start, length);
      const auto* bytes = reinterpret_cast<const std::uint8_t*>(name.data());
      const auto fromBytes = hashAsciiBytes(bytes, name.size());
      ASSERT_TRUE(fromBytes) << name;
      EXPECT_EQ(*fromBytes, hashUnits(upper(String(name.begin(), name.end())))) << name;
    }
  }
  EXPECT_NE(hashUnits(u"AB"), hashUnits(std::u16string_view(u"AB\0", 3)))
      << "a trailing NUL unit is not padding";
  for (const char* name : {"\x80", "abc\xE9", "abcdefgh\xFF"}) {
    EXPECT_FALSE(hashAsciiBytes(reinterpret_cast<const std::uint8_t*>(name), std::strlen(name)))
        << name;
  }
}

// Names matched by index, and read through where the file is too dense for a key index (a
// mebibyte of sections of tiny keys after the case's own): there no hash stands between the
// asked name and the comparison of names.
TEST(ProfileDocument, NamesMatchWithAndWithoutTheKeyIndex) {
  String padding;
  for (std::size_t n = 0; padding.size() < (std::size_t{1} << 20); ++n) {
    padding += numbered(u"[pad#]\na=#\nb=\nc=\nd=\ne=\nf=\ng=\nh=\ni=\nj=\nk=\nl=\nm=\n", n);
  }
  for (const GoldenRow& row : readTestData("settings/profile_names.tsv", 5)) {
    const auto& f = row.fields;
    SCOPED_TRACE(testing::Message() << "profile_names.tsv:" << row.line);
    for (const bool dense : {false, true}) {
      const Document document(bytesOf(f[1]) + (dense ? bytesOf(padding) : std::string()), 1252);
      EXPECT_EQ(document.keysIndexed(), !dense);
      String found = u"<def>";
      if (const auto section = document.findSection(upper(f[2]))) {
        if (const auto line = document.findKey(*section, upper(f[3]))) {
          found = document.text(line->valueBegin, line->valueEnd);
        }
      }
      EXPECT_EQ(show(found), show(f[4])) << (dense ? "read through" : "by index");
    }
  }
}

TEST(ProfileDocument, MemoryFollowsTheFileNotItsLines) {
  constexpr std::size_t kAtLeast = std::size_t{1} << 20;
  for (const GoldenRow& row : readTestData("settings/profile_memory.tsv", 8)) {
    const auto& f = row.fields;
    SCOPED_TRACE(testing::Message() << "profile_memory.tsv:" << row.line);
    String text = f[2];
    for (std::size_t n = 0; text.size() < kAtLeast; ++n) text += numbered(f[3], n);
    const std::string bytes = bytesIn(f[1], text);
    const bool ansi = f[1] != u"utf-16le" && f[1] != u"utf-16be";
    const Document document(bytes, ansi ? static_cast<std::uint32_t>(integerOf(f[1])) : 1252);

    EXPECT_LE(document.memoryUse(), 4 * bytes.size());
    String indexed;
    if (document.sectionsIndexed()) indexed += u"sections";
    if (document.keysIndexed()) indexed += u" keys";
    EXPECT_EQ(indexed, f[4]);

    String found = u"<none>";
    if (const auto section = document.findSection(upper(numbered(f[5], 1000)))) {
      if (const auto line = document.findKey(*section, upper(numbered(f[6], 1000)))) {
        found = document.text(line->valueBegin, line->valueEnd);
      }
    }
    EXPECT_EQ(found, numbered(f[7], 1000));
  }
}

}  // namespace
}  // namespace orvo::test
