#include <gtest/gtest.h>

#include <tuple>
#include <vector>

#include "text/strings.hpp"
#include "text/strings_fixture.hpp"

namespace orvo::text {
namespace {

using test::show;

TEST_F(StringsTest, CountingSpacingAndSplitting) {
  for (const auto& row : test::readTestData("text/words.tsv", 4)) {
    const auto& f = row.fields;
    if (f[0] == u"ReplaceMultipleSpaces") {
      EXPECT_EQ(show(ReplaceMultipleSpaces(f[1])), show(f[3])) << "data line " << row.line;
      continue;
    }
    const std::int32_t got = f[0] == u"LenTrim"       ? LenTrim(f[1])
                             : f[0] == u"StringCount" ? StringCount(f[1], f[2])
                                                      : -1;
    EXPECT_EQ(got, test::integerOf(f[3])) << "data line " << row.line;
  }
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
    const std::vector<String> got = a.elements<String>()->toVector();
    EXPECT_EQ(std::pair(got, numWords), std::pair(words, std::int32_t(words.size()))) << show(text);
  }
  EXPECT_EQ(SplitOnSpaces(u" x ").array()->upperBound(), 0);
}

}  // namespace
}  // namespace orvo::text
