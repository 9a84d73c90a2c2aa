#include <gtest/gtest.h>

#include <tuple>
#include <vector>

#include "orvogeneric/error.hpp"
#include "support/test_support.hpp"
#include "text/strings.hpp"
#include "text/strings_fixture.hpp"

namespace orvo::text {
namespace {

using test::show;

TEST_F(StringsTest, CountingSpacingAndSplitting) {
  const std::vector<std::tuple<String, String, std::int32_t>> counts = {
      {u"a,b,,c", u",", 3}, {u"", u",", 0},    {u"abc", u"", 0},  {u"aaaa", u"aa", 2},
      {u"aaa", u"aa", 1},   {u"abc", u"x", 0}, {u"ABC", u"b", 0}, {u",", u",", 1},
  };
  for (const auto& [s, find, expected] : counts) EXPECT_EQ(StringCount(s, find), expected);
  const std::vector<std::pair<String, String>> spaces = {
      {u"a    b", u"a b"}, {u"   a  ", u" a "}, {u"a\t\tb", u"a\t\tb"},  {u"a \t  b", u"a \t b"},
      {u"", u""},          {u"     ", u" "},    {u"a  b   c", u"a b c"},
  };
  for (const auto& [in, expected] : spaces) EXPECT_EQ(ReplaceMultipleSpaces(in), expected);
  EXPECT_EQ(LenTrim(u"  ab  "), 2);
  EXPECT_EQ(LenTrim(u"\tab\t"), 4);
  EXPECT_EQ(LenTrim(u"     "), 0);

  // SplitOnSpaces: a zero-based String array and its element count.
  const std::vector<std::tuple<String, VBool, std::vector<String>>> splits = {
      {u"  a   b ", T, {u"a", u"b"}}, {u"  a   b ", F, {u"", u"a", u"b", u""}}, {u"   ", T, {}},
      {u"   ", F, {u"", u""}},        {u"a\tb c", T, {u"a\tb", u"c"}},
  };
  for (const auto& [text, trimFirst, words] : splits) {
    std::int32_t numWords = -5;
    const Variant v = SplitOnSpaces(text, &numWords, trimFirst);
    const SafeArray& a = *v.array();
    EXPECT_TRUE(a.dimensioned() && a.lowerBound() == 0 && a.elementType() == VarType::String);
    ASSERT_NE(a.elements<String>(), nullptr) << "words are held as strings, not variants";
    const std::vector<String> got = *a.elements<String>();
    EXPECT_EQ(std::pair(got, numWords), std::pair(words, std::int32_t(words.size()))) << show(text);
  }
  EXPECT_EQ(SplitOnSpaces(u" x ").array()->upperBound(), 0);
}

}  // namespace
}  // namespace orvo::text
