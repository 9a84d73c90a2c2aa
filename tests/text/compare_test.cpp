#include <gtest/gtest.h>

#include "text/strings.hpp"
#include "text/strings_fixture.hpp"

namespace orvo::text {
namespace {

TEST_F(StringsTest, StrCompTrimsSpacesAndUpperCasesOnRequest) {
  for (const auto& row : test::readTestData("text/compare.tsv", 5)) {
    const auto& f = row.fields;
    EXPECT_EQ(bStrComp(f[0], f[1], flagOf(f[2]), flagOf(f[3])), flagOf(f[4]))
        << "data line " << row.line;
  }
}

}  // namespace
}  // namespace orvo::text
