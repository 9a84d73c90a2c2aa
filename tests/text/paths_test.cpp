#include "text/paths.hpp"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

#include "orvogeneric/error.hpp"
#include "runtime/strings.hpp"
#include "support/test_support.hpp"
#include "text/path_compact.hpp"

namespace orvo::text {
namespace {

using test::show;

TEST(PathsTest, SplitPathTakesPathsApart) {
  const auto rows = test::readTestData("split_path.tsv");
  ASSERT_GE(rows.size(), 15U);
  for (const auto& row : rows) {
    ASSERT_EQ(row.fields.size(), 5U) << "line " << row.line;
    String drive = u"junk", dir = u"junk", name = u"junk", extension = u"junk";
    SplitPath(row.fields[0], &drive, &dir, &name, &extension);
    EXPECT_EQ(
        show(drive + u"|" + dir + u"|" + name + u"|" + extension),
        show(row.fields[1] + u"|" + row.fields[2] + u"|" + row.fields[3] + u"|" + row.fields[4]))
        << show(row.fields[0]);
  }

  // Lengths are 16-bit: 32767 characters still split, one more is Overflow. There is no handler
  // of its own, so the plain run-time error reaches the caller.
  const String longest = u"C:\\" + String(32767 - 7, u'a') + u".txt";
  String drive = u"junk", name;
  SplitPath(longest, &drive, nullptr, &name);
  EXPECT_EQ(std::pair(drive, name.size()), std::pair(String(u"C:"), std::size_t{32767 - 7}));
  const Error e = test::errorOf([&] { SplitPath(longest + u"x", &drive); });
  EXPECT_EQ(std::pair(e.number(), e.description().find(u"Error handled by")),
            std::pair(6, String::npos));
  EXPECT_EQ(drive, u"");
}

TEST(PathsTest, MakePathPutsPartsTogether) {
  const std::vector<std::tuple<String, String, String, String, String>> cases = {
      {u"C", u"temp", u"a", u"txt", u"C:\\temp\\a.txt"},
      {u"Cxyz", u"", u"a", u"", u"C:a"},
      {u"\\\\server\\share\\", u"dir", u"f", u"", u"\\\\server\\share\\dir\\f"},
      {u"  C  ", u"  temp  ", u"  a  ", u"  txt  ", u"C:\\temp\\a  .  txt"},
      {u"", u"", u"", u"txt", u".txt"},
      {u"", u"/opt/app", u"file", u"txt", u"/opt/app/file.txt"},
      {u"", u"opt/app", u"f", u"", u"/opt/app/f"},
      {u"", u"a\\b/c", u"f", u"", u"\\a\\b/c\\f"},
      {u"//server/share/", u"dir", u"f", u"", u"//server/share\\dir\\f"},
      {u"D", u"..\\up", u"f", u"..x", u"D:\\..\\up\\f..x"},
  };
  for (const auto& [drive, dir, name, extension, expected] : cases) {
    String full = u"junk";
    MakePath(full, drive, dir, name, extension);
    EXPECT_EQ(full, expected) << show(drive + u"|" + dir + u"|" + name + u"|" + extension);
  }
}

TEST(PathsTest, PathWithBackslashFollowsThePathsOwnStyle) {
  const std::vector<std::pair<String, String>> cases = {
      {u"C:\\", u"C:\\"},         {u"temp", u"temp\\"},        {u"  C:\\temp  ", u"C:\\temp\\"},
      {u"C:", u"C:\\"},           {u"/opt/app", u"/opt/app/"}, {u"   ", u""},
      {u"C:\\a/b", u"C:\\a/b\\"}, {u"dir\t", u"dir\t\\"},
  };
  for (const auto& [in, expected] : cases) EXPECT_EQ(PathWithBackslash(in), expected) << show(in);
}

TEST(PathsTest, LongDirFixCompactsLongPathsAndFromMaxPathOn) {
  // The compaction has room for MaxTotalLength characters; from MAX_PATH on it runs even for a
  // short path, which then fits.
  const std::vector<std::tuple<String, std::int16_t, String>> cases = {
      {u"  C:\\short\\file.txt  ", 50, u"C:\\short\\file.txt"},
      {u"C:\\a\\b.txt", 10, u"C:\\a\\b.txt"},
      {u"abc", -32768, u""},
      {u"C:\\a\\bc.txt", 10, u"...\\bc.txt"},
      {u"C:\\abcdef\\g.txt", 12, u"C:\\...\\g.txt"},
      {u"C:\\a\\b.txt", 300, u"C:\\a\\b.txt"},
      {u"/opt/app/data/file.txt", 12, u".../file.txt"},
  };
  for (const auto& [path, max, expected] : cases) {
    EXPECT_EQ(show(LongDirFix(path, max)), show(expected)) << show(path) << " max " << max;
  }

  // The limit is capped at the buffer: 30 directories make a path longer than MAX_PATH.
  String longPath = u"C:";
  for (int i = 0; i < 30; ++i) longPath += u"\\dir" + fromUtf8(std::to_string(10000 + i));
  longPath += u"\\final_file_name.txt";
  ASSERT_GT(longPath.size(), 261U);
  for (const std::int16_t max : {260, 261, 300, 32767}) {
    EXPECT_EQ(LongDirFix(longPath, max), PathCompactPathEx(longPath, 261)) << max;
  }
  // A path of exactly MAX_PATH characters is compacted too: the platform wants a spare one.
  const String exact = u"C:\\" + String(260 - 7, u'x') + u"\\y.z";
  ASSERT_EQ(exact.size(), 260U);
  const String got = LongDirFix(exact, 260);
  EXPECT_NE(got, exact);
  EXPECT_EQ(got.size(), 260U);
}

TEST(PathsTest, LongDirFixAgreesWithTheRecordedPlatform) {
  int checked = 0;
  for (const auto& row : test::readGolden("path_compact.tsv")) {
    const long cchMax = std::stol(toUtf8(row.fields[0]));
    const String& path = row.fields[1];
    if (cchMax < 1 || cchMax > 261 || runtime::Trim(path) != path) continue;
    const auto max = static_cast<std::int16_t>(cchMax - 1);
    const bool unchanged = static_cast<long>(path.size()) <= max && max < 260;
    const String& expected = unchanged ? path : row.fields[3];
    EXPECT_EQ(show(LongDirFix(path, max)), show(expected)) << "line " << row.line;
    ++checked;
  }
  EXPECT_GT(checked, 3000);
}

}  // namespace
}  // namespace orvo::text
