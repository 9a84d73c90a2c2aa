#include "runtime/strings.hpp"

#include <gtest/gtest.h>

#include <tuple>
#include <vector>

#include "orvogeneric/error.hpp"
#include "support/test_support.hpp"

namespace orvo::runtime {
namespace {

using test::show;

TEST(StringsRuntimeTest, TrimRemovesSpacesOnly) {
  // Input, Trim (and trimView), LTrim, RTrim.
  const std::vector<std::tuple<String, String, String, String>> cases = {
      {u"", u"", u"", u""},
      {u"   ", u"", u"", u""},
      {u"  a b  ", u"a b", u"a b  ", u"  a b"},
      {u" \t a \n ", u"\t a \n", u"\t a \n ", u" \t a \n"},
      {u"\u00A0x\u3000", u"\u00A0x\u3000", u"\u00A0x\u3000", u"\u00A0x\u3000"},
  };
  for (const auto& [in, trim, ltrim, rtrim] : cases) {
    EXPECT_EQ(std::tuple(Trim(in), String(trimView(in)), LTrim(in), RTrim(in)),
              std::tuple(trim, trim, ltrim, rtrim))
        << show(in);
  }
}

TEST(StringsRuntimeTest, CaseMappingIsOneToOnePerCodePoint) {
  const std::vector<std::tuple<String, String, String>> cases = {
      {u"abc XYZ 1 \u00E9\u00C9", u"ABC XYZ 1 \u00C9\u00C9", u"abc xyz 1 \u00E9\u00E9"},
      // No expansion of sharp s, no Turkish tailoring, digraphs and final sigma by code point.
      {u"stra\u00DFe", u"STRA\u00DFE", u"stra\u00DFe"},
      {u"\u0131\u0130", u"I\u0130", u"\u0131i"},
      {u"\u01C5\u03C3\u03C2", u"\u01C4\u03A3\u03A3", u"\u01C6\u03C3\u03C2"},
      // Deseret lies outside the basic plane; unpaired surrogates pass through untouched.
      {u"\U00010428\U00010400", u"\U00010400\U00010400", u"\U00010428\U00010428"},
      {String{0xD801, u'a', 0xDC28}, String{0xD801, u'A', 0xDC28}, String{0xD801, u'a', 0xDC28}},
  };
  for (const auto& [in, upper, lower] : cases) {
    EXPECT_EQ(std::pair(UCase(in), LCase(in)), std::pair(upper, lower)) << show(in);
  }
}

TEST(StringsRuntimeTest, InStrAndInStrRevFollowTheLanguage) {
  const std::vector<std::tuple<std::int32_t, String, String, std::int32_t>> cases = {
      {1, u"abcabc", u"bc", 2}, {3, u"abcabc", u"bc", 5}, {6, u"abcabc", u"bc", 0},
      {6, u"abcabc", u"c", 6},  {7, u"abcabc", u"c", 0},  {3, u"abc", u"", 3},
      {4, u"abc", u"", 4},      {5, u"abc", u"", 0},      {1, u"", u"", 0},
      {1, u"", u"a", 0},        {1, u"abc", u"ABC", 0},   {1, u"abc", u"abcd", 0}};
  for (const auto& [start, s, find, expected] : cases) {
    EXPECT_EQ(InStr(start, s, find), expected) << show(s) << "/" << show(find) << "@" << start;
  }
  const std::vector<std::tuple<String, String, std::int32_t>> reverse = {
      {u"abcabc", u"bc", 5}, {u"abcabc", u"x", 0}, {u"abc", u"", 3},
      {u"", u"", 0},         {u"aaa", u"aa", 2},   {u"a\\b/c", u"\\", 2}};
  for (const auto& [s, find, expected] : reverse) EXPECT_EQ(InStrRev(s, find), expected) << show(s);
}

TEST(StringsRuntimeTest, ReplaceAndSplitWorkLeftToRightWithoutOverlap) {
  const std::vector<std::tuple<String, String, String, String>> replace = {
      {u"aaaa", u"aa", u"a", u"aa"},   {u"aaa", u"aa", u"b", u"ba"},  {u"abc", u"", u"x", u"abc"},
      {u"", u"a", u"b", u""},          {u"a.b.c", u".", u"", u"abc"}, {u"AbA", u"a", u"x", u"AbA"},
      {u"ab", u"ab", u"abab", u"abab"}};
  for (const auto& [s, find, with, expected] : replace) {
    EXPECT_EQ(Replace(s, find, with), expected) << show(s);
  }

  const std::vector<std::tuple<String, String, std::vector<String>>> split = {
      {u"", u",", {}},          {u"a", u",", {u"a"}},    {u"a,b,,c", u",", {u"a", u"b", u"", u"c"}},
      {u",", u",", {u"", u""}}, {u"a,b", u"", {u"a,b"}}, {u"a<>b<>", u"<>", {u"a", u"b", u""}}};
  for (const auto& [s, delimiter, expected] : split)
    EXPECT_EQ(Split(s, delimiter), expected) << show(s);
}

TEST(StringsRuntimeTest, LeftRightMidClampAndRejectNegativeCounts) {
  EXPECT_EQ(Left(u"abc", 2), u"ab");
  EXPECT_EQ(Left(u"abc", 10), u"abc");
  EXPECT_EQ(Right(u"abc", 2), u"bc");
  EXPECT_EQ(Right(u"abc", 10), u"abc");
  EXPECT_EQ(Mid(u"abcdef", 2, 3), u"bcd");
  EXPECT_EQ(Mid(u"abcdef", 4), u"def");
  EXPECT_EQ(Mid(u"abcdef", 5, 10), u"ef");
  EXPECT_EQ(Mid(u"abc", 4), u"");
  EXPECT_EQ(Mid(u"abc", 1, 0), u"");
  EXPECT_EQ(test::errorNumber([] { (void)Left(u"abc", -1); }), 5);
  EXPECT_EQ(test::errorNumber([] { (void)Right(u"abc", -1); }), 5);
  EXPECT_EQ(test::errorNumber([] { (void)Mid(u"abc", 0, 1); }), 5);
  EXPECT_EQ(test::errorNumber([] { (void)Mid(u"abc", 1, -2); }), 5);
}

}  // namespace
}  // namespace orvo::runtime
