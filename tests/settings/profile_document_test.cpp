#include "settings/profile_document.hpp"

#include <gtest/gtest.h>

#include <cstdio>
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
