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

struct CompactCase {
  std::uint32_t cchMax;
  String path;
  String expected;
};

TEST(PathCompactTest, KeepsTheFileNameAndCutsTheHeadAnywhere) {
  const String longPath =
      u"C:\\Program Files\\Engineering Suite\\Projects\\2026\\Bridge "
      u"Design\\calculation_results.xlsx";
  const std::vector<CompactCase> cases = {
      {10, longPath, u"...\\ca..."},
      {20, longPath, u"...\\calculation_..."},
      {30, longPath, u"C...\\calculation_results.xlsx"},
      {40, longPath, u"C:\\Program ...\\calculation_results.xlsx"},
      {0, longPath, u""},
      {1, longPath, u""},
      {2, longPath, u"."},
      {4, longPath, u"..."},
      {5, longPath, u"...\\"},
      {8, longPath, u"...\\..."},
      // Whole only with one character to spare beyond the null.
      {static_cast<std::uint32_t>(longPath.size() + 2), longPath, longPath},
      {static_cast<std::uint32_t>(longPath.size() + 1), longPath,
       u"C:\\Program Files\\Engineering Suite\\Projects\\2026\\Bridge "
       u"Des...\\calculation_results.xlsx"},
      {20, u"C:/forward/slashes/only/file.txt", u"C:/forw.../file.txt"},
      {20, u"C:\\mixed\\separators/last/is/forward.txt", u"C:\\m.../forward.txt"},
      {12, u"nobackslash_just_a_long_file_name.txt", u"nobacksl..."},
      {4, u"nobackslash_just_a_long_file_name.txt", u"..."},
      {12, u"C:file_after_colon.txt", u"...:file..."},
      // A trailing separator is no file name: the last real component is kept.
      {12, u"D:\\Data\\Reports\\Quarterly\\", u"...\\Quar..."},
      {6, u"/", u"/"},
      {2, u"/", u"."},
      {3, u"", u""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(show(c.path) + " cchMax " + std::to_string(c.cchMax));
    EXPECT_EQ(show(PathCompactPathEx(c.path, c.cchMax)), show(c.expected));
  }
}

TEST(PathCompactTest, CutsSurrogatePairsLikeThePlatform) {
  // Code units, not code points: the cut may leave half a pair.
  const String path = u"C:\\x\\\U0001F600\U0001F601\U0001F602.png";
  const String got = PathCompactPathEx(path, 9);
  EXPECT_EQ(got, String(u"...\\") + char16_t(0xD83D) + u"...");
}

}  // namespace
}  // namespace orvo::text
