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

TEST_F(StringsTest, QuotesAreAddedAfterStrippingEveryNestedPairAndRemovedOnePairAtATime) {
  // Input, TrimInput, TrimInsideQuotes, AddSingleQuotes, result. Untrimmed outer blanks hide the
  // quotes, mismatched marks are no pair, and trimming inside can expose the next pair.
  const std::vector<std::tuple<String, VBool, VBool, VBool, String>> add = {
      {u"   ", T, T, F, u"\"\""},          {u"", F, T, T, u"''"},
      {u"abc", F, T, T, u"'abc'"},         {u" \"abc\" ", F, T, F, u"\" \"abc\" \""},
      {u"'\"abc\"'", F, T, F, u"\"abc\""}, {u"\"abc'", F, T, F, u"\"\"abc'\""},
      {u"\"", F, T, F, u"\"\"\""},         {u"\" 'a' \"", F, F, F, u"\" 'a' \""},
      {u"\" 'a' \"", F, T, F, u"\"a\""},
  };
  for (const auto& [in, trimInput, trimInside, single, expected] : add) {
    EXPECT_EQ(AddQuotesToString(in, trimInput, trimInside, single), expected)
        << show(in) << " " << value(trimInput) << value(trimInside) << value(single);
  }
  // Input, TrimInput, TrimInsideQuotes, result: an unquoted input comes back exactly as given.
  const std::vector<std::tuple<String, VBool, VBool, String>> remove = {
      {u"  abc  ", T, F, u"  abc  "}, {u"  \" abc \"  ", T, F, u" abc "},
      {u"'abc'", T, F, u"abc"},       {u"  \" abc \"  ", F, T, u"  \" abc \"  "},
      {u"'abc\"", T, F, u"'abc\""},   {u"\"\"\"abc\"\"\"", T, F, u"\"\"abc\"\""},
      {u"\"a\"b\"", T, F, u"a\"b"},
  };
  for (const auto& [in, trimInput, trimInside, expected] : remove) {
    EXPECT_EQ(RemoveQuotesFromString(in, trimInput, trimInside), expected) << show(in);
  }
  // Input, AddQuotesToPath, RemoveQuotesFromPath.
  const std::vector<std::tuple<String, String, String>> paths = {
      {u"    ", u"", u""},
      {u"  C:\\a b\\c.txt  ", u"\"C:\\a b\\c.txt\"", u"C:\\a b\\c.txt"},
      {u"  \" C:\\x \"  ", u"\"C:\\x\"", u"C:\\x"},
      {u"'/opt/x'", u"\"/opt/x\"", u"/opt/x"},
  };
  for (const auto& [in, added, removed] : paths) {
    EXPECT_EQ(std::pair(AddQuotesToPath(in), RemoveQuotesFromPath(in)), std::pair(added, removed));
  }
  EXPECT_EQ(EncodeQuotes(u"it's ''x'' \"q\" \u2019"), u"it`s ``x`` \"q\" \u2019");
}

}  // namespace
}  // namespace orvo::text
