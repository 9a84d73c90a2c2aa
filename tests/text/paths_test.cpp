#include "text/paths.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "orvogeneric/classes.hpp"
#include "orvogeneric/error.hpp"
#include "runtime/strings.hpp"
#include "support/test_support.hpp"
#include "text/path_compact.hpp"

namespace orvo::text {
namespace {

using test::show;

struct SplitCase {
  String path;
  String drive, dir, name, extension;
};

TEST(PathsTest, SplitPathTakesPathsApart) {
  const std::vector<SplitCase> cases = {
      {u"C:\\dir\\sub\\file.tar.gz", u"C:", u"\\dir\\sub\\", u"file.tar", u".gz"},
      {u"\\\\server\\share\\dir\\a.txt", u"\\\\server\\share", u"\\dir\\", u"a", u".txt"},
      {u"\\\\server", u"\\\\server", u"", u"", u""},
      {u"\\\\server\\share", u"\\\\server\\share", u"", u"", u""},
      {u"\\\\server\\share\\", u"\\\\server\\share", u"\\", u"", u""},
      {u"readme", u"", u"", u"readme", u""},
      {u"dir\\", u"", u"dir\\", u"", u""},
      {u"C:", u"C:", u"", u"", u""},
      {u"C:file.txt", u"C:", u"", u"file", u".txt"},
      {u".hidden", u"", u"", u"", u".hidden"},
      {u"name.", u"", u"", u"name", u"."},
      {u"dir.v2\\file", u"", u"dir.v2\\", u"file", u""},
      // The path is trimmed as a whole; a name without extension is trimmed again.
      {u"  C:\\a b\\  x y .txt  ", u"C:", u"\\a b\\", u"  x y ", u".txt"},
      {u"C:\\dir\\  name  ", u"C:", u"\\dir\\", u"name", u""},
      {u"   ", u"", u"", u"", u""},
      {u"", u"", u"", u"", u""},
      // The first colon ends the drive, wherever it is.
      {u"a:b:c", u"a:", u"", u"b:c", u""},
      {u"dir\\a:b.c", u"dir\\a:", u"", u"b", u".c"},
      // Forward slashes count wherever a backslash would.
      {u"/opt/app/data/file.txt", u"", u"/opt/app/data/", u"file", u".txt"},
      {u"/", u"", u"/", u"", u""},
      {u"//server/share/x.ini", u"//server/share", u"/", u"x", u".ini"},
      {u"C:/forward/file", u"C:", u"/forward/", u"file", u""},
      {u"C:\\mixed/sep\\last/name.txt", u"C:", u"\\mixed/sep\\last/", u"name", u".txt"},
      {u"\\single\\rooted.txt", u"", u"\\single\\", u"rooted", u".txt"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(show(c.path));
    String drive = u"junk", dir = u"junk", name = u"junk", extension = u"junk";
    SplitPath(c.path, &drive, &dir, &name, &extension);
    EXPECT_EQ(show(drive), show(c.drive));
    EXPECT_EQ(show(dir), show(c.dir));
    EXPECT_EQ(show(name), show(c.name));
    EXPECT_EQ(show(extension), show(c.extension));
    String onlyName = u"junk";
    SplitPath(c.path, nullptr, nullptr, &onlyName);
    EXPECT_EQ(onlyName, c.name);
  }
}

TEST(PathsTest, SplitPathLengthsAreSixteenBit) {
  String drive = u"junk";
  String name;
  const String longest = u"C:\\" + String(32767 - 7, u'a') + u".txt";
  ASSERT_EQ(longest.size(), 32767U);
  SplitPath(longest, &drive, nullptr, &name);
  EXPECT_EQ(drive, u"C:");
  EXPECT_EQ(name.size(), 32767U - 7);

  const String tooLong = longest + u"x";
  try {
    SplitPath(tooLong, &drive);
    ADD_FAILURE() << "no error";
  } catch (const Error& e) {
    EXPECT_EQ(e.number(), 6);
    // No handler of its own: the plain run-time error reaches the caller.
    EXPECT_EQ(e.description().find(u"Error handled by"), String::npos);
  }
  EXPECT_EQ(drive, u"");
}

struct MakeCase {
  String drive, dir, name, extension;
  String expected;
};

TEST(PathsTest, MakePathPutsPartsTogether) {
  const std::vector<MakeCase> cases = {
      {u"C", u"temp", u"a", u"txt", u"C:\\temp\\a.txt"},
      {u"", u"temp", u"a", u"txt", u"\\temp\\a.txt"},
      {u"C:\\", u"\\temp\\", u"a", u".txt", u"C:\\temp\\a.txt"},
      {u"Cxyz", u"", u"a", u"", u"C:a"},
      {u"C", u"", u"f", u"txt", u"C:f.txt"},
      {u"\\\\server\\share\\", u"dir", u"f", u"", u"\\\\server\\share\\dir\\f"},
      {u"\\\\server\\share", u"\\dir", u"f", u"ini", u"\\\\server\\share\\dir\\f.ini"},
      {u"  C  ", u"  temp  ", u"  a  ", u"  txt  ", u"C:\\temp\\a  .  txt"},
      {u"", u"", u"f", u"", u"f"},
      {u"", u"", u"", u"", u""},
      {u"", u"", u"", u"txt", u".txt"},
      {u"", u"/opt/app", u"file", u"txt", u"/opt/app/file.txt"},
      {u"", u"opt/app", u"f", u"", u"/opt/app/f"},
      {u"", u"a\\b/c", u"f", u"", u"\\a\\b/c\\f"},
      {u"//server/share/", u"dir", u"f", u"", u"//server/share\\dir\\f"},
      {u"D", u"..\\up", u"f", u"..x", u"D:\\..\\up\\f..x"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(show(c.drive) + " | " + show(c.dir) + " | " + show(c.name) + " | " +
                 show(c.extension));
    String full = u"junk";
    MakePath(full, c.drive, c.dir, c.name, c.extension);
    EXPECT_EQ(show(full), show(c.expected));
  }
}

TEST(PathsTest, PathWithBackslashFollowsThePathsOwnStyle) {
  const std::vector<std::pair<String, String>> cases = {
      {u"  C:\\temp  ", u"C:\\temp\\"},
      {u"", u""},
      {u"   ", u""},
      {u"C:\\", u"C:\\"},
      {u"temp", u"temp\\"},
      {u"C:", u"C:\\"},
      {u"/opt/app", u"/opt/app/"},
      {u"/opt/", u"/opt/"},
      {u"/", u"/"},
      {u"C:\\a/b", u"C:\\a/b\\"},
      {u"\\\\server\\share", u"\\\\server\\share\\"},
      {u"dir\t", u"dir\t\\"},
  };
  for (const auto& [in, expected] : cases) {
    SCOPED_TRACE(show(in));
    EXPECT_EQ(PathWithBackslash(in), expected);
  }
}

TEST(PathsTest, LongDirFixReturnsShortPathsUnchanged) {
  struct Case {
    String path;
    std::int16_t max;
    String expected;
  };
  const std::vector<Case> cases = {
      {u"  C:\\short\\file.txt  ", 50, u"C:\\short\\file.txt"},
      {u"C:\\a\\b.txt", 10, u"C:\\a\\b.txt"},
      {u"", 0, u""},
      {u"abc", 0, u""},
      {u"abc", -1, u""},
      {u"abc", -32768, u""},
      // One character too long: the compaction has room for MaxTotalLength characters.
      {u"C:\\a\\bc.txt", 10, u"...\\bc.txt"},
      {u"C:\\abcdef\\g.txt", 12, u"C:\\...\\g.txt"},
      {u"C:\\abcdef\\g.txt", 13, u"C:\\a...\\g.txt"},
      // From MAX_PATH on the compaction runs even for a short path, which then fits.
      {u"C:\\a\\b.txt", 300, u"C:\\a\\b.txt"},
      {u"/opt/app/data/file.txt", 12, u".../file.txt"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(show(c.path) + " max " + std::to_string(c.max));
    EXPECT_EQ(show(LongDirFix(c.path, c.max)), show(c.expected));
  }
}

TEST(PathsTest, LongDirFixCapsTheLimitAtTheBuffer) {
  // 30 directories make a path longer than MAX_PATH.
  String longPath = u"C:";
  for (int i = 0; i < 30; ++i) longPath += u"\\dir" + fromUtf8(std::to_string(10000 + i));
  longPath += u"\\final_file_name.txt";
  ASSERT_GT(longPath.size(), 261U);
  for (const std::int16_t max : {260, 261, 300, 32767}) {
    SCOPED_TRACE(max);
    const String got = LongDirFix(longPath, max);
    EXPECT_EQ(got.size(), 260U);
    EXPECT_EQ(got, PathCompactPathEx(longPath, 261));
    EXPECT_NE(got.find(u"...\\final_file_name.txt"), String::npos);
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

TEST(PathsTest, ClassMembersForwardTheirArguments) {
  StringUtilities su;
  String drive, dir, name, extension;
  su.SplitPath(u"C:\\x\\y.z", &drive, &dir, &name, &extension);
  EXPECT_EQ(drive + u"|" + dir + u"|" + name + u"|" + extension, u"C:|\\x\\|y|.z");
  String full;
  su.MakePath(full, u"C", u"temp", u"a", u"txt");
  EXPECT_EQ(full, u"C:\\temp\\a.txt");
  EXPECT_EQ(su.PathWithBackslash(u"/opt"), u"/opt/");
  EXPECT_EQ(su.LongDirFix(u"C:\\abcdef\\g.txt", 12), u"C:\\...\\g.txt");
}

}  // namespace
}  // namespace orvo::text
