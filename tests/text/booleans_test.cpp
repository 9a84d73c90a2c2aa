#include <gtest/gtest.h>

#include "text/strings.hpp"
#include "text/strings_fixture.hpp"

namespace orvo::text {
namespace {

TEST_F(StringsTest, BooleanKeywordsAndNames) {
  for (const auto& row : test::readTestData("text/booleans.tsv", 4)) {
    const auto& f = row.fields;
    SCOPED_TRACE("data line " + std::to_string(row.line));
    VBool used = static_cast<VBool>(7);
    EXPECT_EQ(bStringToBoolean(f[0], flagOf(f[1]), &used), flagOf(f[2]));
    EXPECT_EQ(used, flagOf(f[3]));
    EXPECT_EQ(bStringToBoolean(f[0], flagOf(f[1])), flagOf(f[2]));
  }
  EXPECT_EQ(bStringToBoolean(u"x", static_cast<VBool>(1)), static_cast<VBool>(1));
  EXPECT_EQ(sBooleanToString(T), u"True");
  EXPECT_EQ(sBooleanToString(F), u"False");
  EXPECT_EQ(sBooleanToString(static_cast<VBool>(1)), u"");
}

}  // namespace
}  // namespace orvo::text
