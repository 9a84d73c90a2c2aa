#include "text/path_compact.hpp"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "support/test_support.hpp"

namespace orvo::text {
namespace {

using test::show;

TEST(PathCompactTest, MatchesEveryRecordedPlatformResult) {
  const auto rows = test::readGolden("path_compact.tsv");
  ASSERT_GT(rows.size(), 3000U);
  std::set<String> paths;
  int failures = 0;
  for (const auto& row : rows) {
    ASSERT_EQ(row.fields.size(), 4U) << "line " << row.line;
    const auto cchMax = static_cast<std::uint32_t>(std::stoul(toUtf8(row.fields[0])));
    const String& path = row.fields[1];
    const String& expected = row.fields[3];
    ASSERT_EQ(row.fields[2], u"1") << "line " << row.line;
    ASSERT_NE(expected, u"<unterminated>") << "line " << row.line;
    paths.insert(path);
    const String got = PathCompactPathEx(path, cchMax);
    if (got != expected && ++failures <= 20) {
      ADD_FAILURE() << "line " << row.line << ": cchMax " << cchMax << " path " << show(path)
                    << "\n  expected " << show(expected) << "\n  got      " << show(got);
    }
    // The result always fits the buffer with its terminating null.
    EXPECT_LT(got.size(), std::max<std::uint32_t>(cchMax, 1U));
  }
  EXPECT_EQ(failures, 0);
  // Forward slashes, UNC names, surrogate pairs and a path beyond MAX_PATH are all in the data.
  EXPECT_TRUE(paths.count(u"/opt/app/data/file.txt"));
  EXPECT_TRUE(paths.count(u"\\\\server\\share\\folder\\subfolder\\file.ini"));
  EXPECT_GT(paths.size(), 40U);
}

TEST(PathCompactTest, KeepsTheFileNameAndCutsTheHeadAnywhere) {
  for (const auto& row : test::readTestData("text/path_compact.tsv", 3)) {
    const auto cchMax = static_cast<std::uint32_t>(test::integerOf(row.fields[0]));
    EXPECT_EQ(show(PathCompactPathEx(row.fields[1], cchMax)), show(row.fields[2]))
        << "data line " << row.line;
  }
}

}  // namespace
}  // namespace orvo::text
