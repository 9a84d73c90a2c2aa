#include <gtest/gtest.h>

#include "platform/file.hpp"
#include "support/test_support.hpp"

namespace orvo::platform {
namespace {

using test::show;

TEST(Wildcard, MatchesAsTheDirectorySearchDoes) {
  const auto rows = test::readTestData("wildcard.tsv");
  ASSERT_GE(rows.size(), 20U);
  for (const auto& row : rows) {
    ASSERT_GE(row.fields.size(), 3U) << "line " << row.line;
    const String& pattern = row.fields[0];
    const String& name = row.fields[1];
    EXPECT_EQ(matchesWildcard(name, pattern), row.fields[2] == u"1")
        << show(pattern) << " on " << show(name) << " (line " << row.line << ")";
  }
}

}  // namespace
}  // namespace orvo::platform
