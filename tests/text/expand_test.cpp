#include <gtest/gtest.h>

#include <tuple>
#include <vector>

#include "text/strings.hpp"
#include "text/strings_fixture.hpp"

namespace orvo::text {
namespace {

using test::errorOf;

TEST_F(StringsTest, ExpandStringReplacesHighestIndexFirst) {
  for (const auto& row : test::readTestData("text/expand.tsv", 4)) {
    EXPECT_EQ(ExpandString_Worker(row.fields[1], test::variantOf(row.fields[2])), row.fields[3])
        << "data line " << row.line << ": " << toUtf8(row.fields[0]);
  }
  // Two digits before one.
  std::vector<Variant> twelve;
  for (int i = 0; i < 12; ++i) twelve.emplace_back(u"<" + fromUtf8(std::to_string(i)) + u">");
  EXPECT_EQ(ExpandString_Worker(u"%11|%1|%10", arrayOf(twelve)), u"<11>|<1>|<10>");
  const Error e = errorOf([] { (void)ExpandString_Worker(u"%0", SafeArray()); });
  EXPECT_EQ(e.number(), 9);
  EXPECT_NE(e.description().find(u"Error handled by ExpandString_Worker"), String::npos);

  test::ScopedLocale german("de_DE.UTF-8");
  EXPECT_EQ(ExpandString_Worker(u"v=%0", arrayOf({Variant(2.5)})), u"v=2,5");
}

}  // namespace
}  // namespace orvo::text
