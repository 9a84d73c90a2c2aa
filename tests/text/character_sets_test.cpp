#include <gtest/gtest.h>

#include <tuple>
#include <vector>

#include "orvogeneric/error.hpp"
#include "support/test_support.hpp"
#include "text/strings.hpp"
#include "text/strings_fixture.hpp"

namespace orvo::text {
namespace {

using test::errorOf;
using test::handledBy;

TEST_F(StringsTest, BannedCharsInAllThreeForms) {
  // Name, value, BannedChars, Replace, ReplacementChars, result, value afterwards, Info.
  const std::vector<std::tuple<const char*, String, String, VBool, String, VBool, String, String>>
      cases = {
          {"fewer replacements remove", u"a-bx", u"-x", T, u"_", T, u"a_b", u"-x"},
          {"replacements chain", u"ab", u"ab", T, u"bc", T, u"cc", u"ab"},
          {"case change only counts as equal", u"abc", u"a", T, u"A", F, u"Abc", u"a"},
          {"outer blank removal counts as equal", u" abc", u" ", T, u"", F, u"abc", u" "},
          {"inner blank removal differs", u"a bc", u" ", T, u"", T, u"abc", u" "},
          {"any banned character", u"a-b", u"+-", F, u"", T, u"a-b", u"+-"},
          {"character list is case-sensitive", u"abc", u"B", F, u"", F, u"abc", u"B"},
          {"allowed digits broken", u"12a", u"allowed:48,57", F, u"", T, u"12a", u"[0 - 9]"},
          {"allowed any case", u"abc", u"ALLOWED:48,57,97,122", F, u"", F, u"abc", u"[a - z]"},
          {"allowed not trimmed", u"8", u" allowed:48,57", F, u"", T, u"8", u" allowed:48,57"},
          {"equals ignores case and blanks", u" abc ", u"Equals:ABC", F, u"", F, u" abc ", u"ABC"},
          {"equals is whole", u"abcd", u"equals:abc", F, u"", T, u"abcd", u"abc"},
          {"replace wins over keywords", u"e:", u"equals:", T, u"", T, u"", u"equals:"},
      };
  for (const auto& [name, before, banned, replace, replacement, expected, after, info] : cases) {
    String value = before;
    String gotInfo = u"stale";
    const VBool got = bStringContainsBannedChars(value, banned, replace, replacement, &gotInfo);
    EXPECT_EQ(std::tuple(got, value, gotInfo), std::tuple(expected, after, info)) << name;
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
  // Name, value, AllowedAsciiRanges, result, Info, the trace line if any. Info describes only the
  // last complete pair.
  const std::vector<std::tuple<const char*, String, String, VBool, String, String>> cases = {
      {"blank value", u"", u"48,57", T, u"48,57",
       u"bStringContainsAllowedChars was passed blank string for sValue"},
      {"blank ranges", u"1", u"", F, u"",
       u"bStringContainsAllowedChars was passed blank string for AllowedAsciiRanges"},
      {"single number", u"1", u"48", F, u"48",
       u"bStringContainsAllowedChars was not passed any valid ranges of characters: 48"},
      {"too many numbers", u"5", u"48,57,1,2,3,4,5,6,7,8,9,10", T, u"[\u0007 - \u0008]",
       u"bStringContainsAllowedChars was passed too many ranges, AllowedAsciiRanges = "
       u"48,57,1,2,3,4,5,6,7,8,9,10"},
      {"second range", u"9Z", u"48,57,65,90", T, u"[A - Z]", u""},
      {"outside every range", u"9z", u"48,57,65,90", F, u"[A - Z]", u""},
      {"incomplete pair is no range", u"A", u"48,57,65", F, u"[0 - 9]", u""},
      {"non-numeric limits are zero", u"a", u"x,y", F, String(u"[\0 - \0]", 7), u""},
      {"code page character", u"\u20AC", u"128,128", T, u"[\u20AC - \u20AC]", u""},
      // 8364 is 0x20AC: the bytes 0x20 0xAC, two characters of the single-byte code page.
      {"not the UTF-16 code", u"\u20AC", u"8364,8364", F, u"[ \u00AC -  \u00AC]", u""},
      {"no complete pair", u"5", u"48,-1", F, u"48,", u""},
  };
  for (const auto& [name, value, ranges, expected, info, logged] : cases) {
    test::TraceCapture trace;
    String gotInfo = u"stale";
    const VBool got = bStringContainsAllowedChars(value, ranges, &gotInfo);
    const auto lines = logged.empty() ? std::vector<String>{} : std::vector{logged};
    EXPECT_EQ(std::tuple(got, gotInfo, trace.messages()), std::tuple(expected, info, lines))
        << name;
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
