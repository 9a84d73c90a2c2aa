#include <gtest/gtest.h>

#include "text/strings.hpp"
#include "text/strings_fixture.hpp"

namespace orvo::text {
namespace {

using test::errorOf;
using test::handledBy;

TEST_F(StringsTest, BannedCharsInAllThreeForms) {
  for (const auto& row : test::readTestData("text/banned_chars.tsv", 8)) {
    const auto& f = row.fields;
    String value = f[1];
    String info = u"stale";
    const VBool got = bStringContainsBannedChars(value, f[2], flagOf(f[3]), f[4], &info);
    EXPECT_EQ(std::tuple(got, value, info), std::tuple(flagOf(f[5]), f[6], f[7]))
        << "data line " << row.line << ": " << toUtf8(f[0]);
  }
  String value = u"a-b";
  Error e = errorOf([&] { (void)bStringContainsBannedChars(value, u""); });
  EXPECT_EQ(e.number(), kLibraryErrorNumber);
  EXPECT_EQ(e.description(),
            handledBy(u"List of banned characters cannot be empty", u"bStringContainsBannedChars"));
  e = errorOf([&] { (void)bStringContainsBannedChars(value, u"-", T, u"__"); });
  EXPECT_EQ(e.number(), kLibraryErrorNumber);
  EXPECT_EQ(e.description(), handledBy(u"Inconsistent numbers of banned and replacement characters",
                                       u"bStringContainsBannedChars"));
  EXPECT_EQ(value, u"a-b");
  // Without Replace the replacement list is not looked at.
  EXPECT_EQ(bStringContainsBannedChars(value, u"-", F, u"__"), T);
}

TEST_F(StringsTest, AllowedCharsChecksAnsiCodesAgainstRanges) {
  for (const auto& row : test::readTestData("text/allowed_chars.tsv", 6)) {
    const auto& f = row.fields;
    test::TraceCapture trace;
    String info = u"stale";
    const VBool got = bStringContainsAllowedChars(f[1], f[2], &info);
    const auto lines = f[5].empty() ? std::vector<String>{} : std::vector{f[5]};
    EXPECT_EQ(std::tuple(got, info, trace.messages()), std::tuple(flagOf(f[3]), f[4], lines))
        << "data line " << row.line << ": " << toUtf8(f[0]);
  }
  // The limits are 16-bit integers.
  const Error e = errorOf([] { (void)bStringContainsAllowedChars(u"a", u"0,40000"); });
  EXPECT_EQ(e.number(), 6);
  EXPECT_NE(e.description().find(u"Error handled by bStringContainsAllowedChars"), String::npos);
  EXPECT_EQ(bStringContainsAllowedChars(u"a", u"-32768,32767"), T);

  // U+3042 is 0x82 0xA0 in code page 932: -32096 as a signed 16-bit code.
  test::ScopedLocale japanese("ja_JP.UTF-8");
  String info;
  EXPECT_EQ(bStringContainsAllowedChars(u"\u3042", u"-32096,-32096", &info), T);
  EXPECT_EQ(info, u"[\u3042 - \u3042]");
  EXPECT_EQ(bStringContainsAllowedChars(u"\u3042", u"0,255"), F);
  EXPECT_EQ(bStringContainsAllowedChars(u"a\u3042", u"97,97,-32768,-1"), T);
}

}  // namespace
}  // namespace orvo::text
