#include "runtime/strings.hpp"

#include <gtest/gtest.h>

#include <vector>

#include "orvogeneric/error.hpp"
#include "support/test_support.hpp"

namespace orvo::runtime {
namespace {

using test::show;

struct TrimCase {
  String in, trim, ltrim, rtrim;
};

TEST(StringsRuntimeTest, TrimRemovesBlanksOnly) {
  const std::vector<TrimCase> cases = {
      {u"", u"", u"", u""},
      {u"   ", u"", u"", u""},
      {u"  a b  ", u"a b", u"a b  ", u"  a b"},
      {u"\ta\t", u"\ta\t", u"\ta\t", u"\ta\t"},
      {u" \t a \n ", u"\t a \n", u"\t a \n ", u" \t a \n"},
      {u"\u00A0x\u3000", u"\u00A0x\u3000", u"\u00A0x\u3000", u"\u00A0x\u3000"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(show(c.in));
    EXPECT_EQ(Trim(c.in), c.trim);
    EXPECT_EQ(LTrim(c.in), c.ltrim);
    EXPECT_EQ(RTrim(c.in), c.rtrim);
    EXPECT_EQ(String(trimView(c.in)), c.trim);
  }
}

struct CaseMapCase {
  String in, upper, lower;
};

TEST(StringsRuntimeTest, CaseMappingIsOneToOnePerCodePoint) {
  const std::vector<CaseMapCase> cases = {
      {u"abc XYZ 123", u"ABC XYZ 123", u"abc xyz 123"},
      {u"\u00E9t\u00E9", u"\u00C9T\u00C9", u"\u00E9t\u00E9"},
      // No expansion: sharp s keeps its place and length.
      {u"stra\u00DFe", u"STRA\u00DFE", u"stra\u00DFe"},
      // Dotless i and dotted capital I map without Turkish tailoring.
      {u"\u0131", u"I", u"\u0131"},
      {u"\u0130", u"\u0130", u"i"},
      // Title-case digraph goes to its upper and lower forms.
      {u"\u01C5", u"\u01C4", u"\u01C6"},
      {u"\u03C3\u03C2", u"\u03A3\u03A3", u"\u03C3\u03C2"},
      // Deseret: a letter outside the basic plane is mapped as one code point.
      {u"\U00010428", u"\U00010400", u"\U00010428"},
      {u"\U00010400", u"\U00010400", u"\U00010428"},
      // Unpaired surrogates pass through untouched.
      {String(1, char16_t(0xD801)) + u"a", String(1, char16_t(0xD801)) + u"A",
       String(1, char16_t(0xD801)) + u"a"},
      {u"a" + String(1, char16_t(0xDC28)), u"A" + String(1, char16_t(0xDC28)),
       u"a" + String(1, char16_t(0xDC28))},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(show(c.in));
    EXPECT_EQ(UCase(c.in), c.upper);
    EXPECT_EQ(LCase(c.in), c.lower);
    EXPECT_EQ(UCase(c.in).size(), c.in.size());
  }
}

struct InStrCase {
  std::int32_t start;
  String s, find;
  std::int32_t expected;
};

TEST(StringsRuntimeTest, InStrFollowsTheLanguage) {
  const std::vector<InStrCase> cases = {
      {1, u"abcabc", u"bc", 2}, {3, u"abcabc", u"bc", 5}, {6, u"abcabc", u"bc", 0},
      {1, u"abc", u"", 1},      {3, u"abc", u"", 3},      {4, u"abc", u"", 4},
      {5, u"abc", u"", 0},      {1, u"", u"", 0},         {1, u"", u"a", 0},
      {1, u"abc", u"ABC", 0},   {1, u"abc", u"abcd", 0},  {7, u"abcabc", u"c", 0},
      {6, u"abcabc", u"c", 6},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(show(c.s) + " / " + show(c.find) + " from " + std::to_string(c.start));
    EXPECT_EQ(InStr(c.start, c.s, c.find), c.expected);
  }
}

TEST(StringsRuntimeTest, InStrRevFindsTheLastOccurrence) {
  const std::vector<InStrCase> cases = {
      {0, u"abcabc", u"bc", 5}, {0, u"abcabc", u"x", 0}, {0, u"abc", u"", 3},
      {0, u"", u"", 0},         {0, u"aaa", u"aa", 2},   {0, u"a\\b/c", u"\\", 2},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(show(c.s) + " / " + show(c.find));
    EXPECT_EQ(InStrRev(c.s, c.find), c.expected);
  }
}

struct ReplaceCase {
  String s, find, with, expected;
};

TEST(StringsRuntimeTest, ReplaceIsLeftToRightAndNonOverlapping) {
  const std::vector<ReplaceCase> cases = {
      {u"aaaa", u"aa", u"a", u"aa"},    {u"aaa", u"aa", u"b", u"ba"},  {u"abc", u"", u"x", u"abc"},
      {u"", u"a", u"b", u""},           {u"a.b.c", u".", u"", u"abc"}, {u"AbA", u"a", u"x", u"AbA"},
      {u"ab", u"ab", u"abab", u"abab"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(show(c.s));
    EXPECT_EQ(Replace(c.s, c.find, c.with), c.expected);
  }
}

struct SplitCase {
  String s, delimiter;
  std::vector<String> expected;
};

TEST(StringsRuntimeTest, SplitKeepsEmptyPieces) {
  const std::vector<SplitCase> cases = {
      {u"", u",", {}},          {u"a", u",", {u"a"}},    {u"a,b,,c", u",", {u"a", u"b", u"", u"c"}},
      {u",", u",", {u"", u""}}, {u"a,b", u"", {u"a,b"}}, {u"a<>b<>", u"<>", {u"a", u"b", u""}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(show(c.s));
    EXPECT_EQ(Split(c.s, c.delimiter), c.expected);
  }
}

TEST(StringsRuntimeTest, LeftRightMidClampAndRejectNegativeCounts) {
  EXPECT_EQ(Left(u"abc", 2), u"ab");
  EXPECT_EQ(Left(u"abc", 10), u"abc");
  EXPECT_EQ(Left(u"abc", 0), u"");
  EXPECT_EQ(Right(u"abc", 2), u"bc");
  EXPECT_EQ(Right(u"abc", 10), u"abc");
  EXPECT_EQ(Mid(u"abcdef", 2, 3), u"bcd");
  EXPECT_EQ(Mid(u"abcdef", 4), u"def");
  EXPECT_EQ(Mid(u"abcdef", 5, 10), u"ef");
  EXPECT_EQ(Mid(u"abc", 4), u"");
  EXPECT_EQ(Mid(u"abc", 1, 0), u"");

  auto expectInvalidCall = [](auto&& call) {
    try {
      call();
      ADD_FAILURE() << "no error";
    } catch (const Error& e) {
      EXPECT_EQ(e.number(), 5);
    }
  };
  expectInvalidCall([] { (void)Left(u"abc", -1); });
  expectInvalidCall([] { (void)Right(u"abc", -1); });
  expectInvalidCall([] { (void)Mid(u"abc", 0, 1); });
  expectInvalidCall([] { (void)Mid(u"abc", 1, -2); });
}

}  // namespace
}  // namespace orvo::runtime
