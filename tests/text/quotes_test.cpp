#include <gtest/gtest.h>

#include "text/strings.hpp"
#include "text/strings_fixture.hpp"

namespace orvo::text {
namespace {

TEST_F(StringsTest, QuotesAreAddedAfterStrippingEveryNestedPairAndRemovedOnePairAtATime) {
  for (const auto& row : test::readTestData("text/quotes.tsv", 6)) {
    const auto& f = row.fields;
    const String got =
        f[0] == u"Add"         ? AddQuotesToString(f[1], flagOf(f[2]), flagOf(f[3]), flagOf(f[4]))
        : f[0] == u"Remove"    ? RemoveQuotesFromString(f[1], flagOf(f[2]), flagOf(f[3]))
        : f[0] == u"AddToPath" ? AddQuotesToPath(f[1])
        : f[0] == u"RemoveFromPath" ? RemoveQuotesFromPath(f[1])
        : f[0] == u"Encode"         ? EncodeQuotes(f[1])
                                    : u"unknown function";
    EXPECT_EQ(test::show(got), test::show(f[5])) << "data line " << row.line;
  }
}

}  // namespace
}  // namespace orvo::text
