#include "text/paths.hpp"

#include <gtest/gtest.h>

#include <string>

#include "orvogeneric/error.hpp"
#include "runtime/strings.hpp"
#include "support/test_support.hpp"
#include "text/path_compact.hpp"

namespace orvo::text {
namespace {

using test::show;

TEST(PathsTest, SplitPathTakesPathsApart) {
  const auto rows = test::readTestData("split_path.tsv", 5);
  ASSERT_GE(rows.size(), 15U);
  for (const auto& row : rows) {
    const auto& f = row.fields;
    String drive = u"junk", dir = u"junk", name = u"junk", extension = u"junk";
    SplitPath(f[0], &drive, &dir, &name, &extension);
    EXPECT_EQ(show(drive + u"|" + dir + u"|" + name + u"|" + extension),
              show(f[1] + u"|" + f[2] + u"|" + f[3] + u"|" + f[4]))
        << "data line " << row.line;
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

TEST(PathsTest, MakePathPathWithBackslashAndLongDirFix) {
  for (const auto& row : test::readTestData("text/paths.tsv", 6)) {
    const auto& f = row.fields;
    String got = u"unknown function";
    if (f[0] == u"MakePath") MakePath(got, f[1], f[2], f[3], f[4]);
    if (f[0] == u"PathWithBackslash") got = PathWithBackslash(f[1]);
    if (f[0] == u"LongDirFix") got = LongDirFix(f[1], std::int16_t(test::integerOf(f[2])));
    EXPECT_EQ(show(got), show(f[5])) << "data line " << row.line;
  }
}

TEST(PathsTest, LongDirFixCompactsLongPathsFromMaxPathOn) {
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
