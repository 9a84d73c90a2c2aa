#include <gtest/gtest.h>

#include <filesystem>

#include "files/files_fixture.hpp"
#include "files/fileutils.hpp"
#include "orvogeneric/error.hpp"
#include "support/test_support.hpp"

namespace orvo::files {
namespace {

using test::errorOf;
using test::handledBy;

class ListFilesTest : public test::FilesTest {
 protected:
  std::vector<String> list(const String& start, bool recurse = true,
                           const String& filter = u"*.*") {
    SafeArray files(VarType::String);
    std::int32_t count = -5;
    ListFiles(start, files, count, toVBool(recurse), filter);
    EXPECT_EQ(count, static_cast<std::int32_t>(files.size()));
    EXPECT_EQ(files.lowerBound(), files.size() == 0 ? 0 : 1);
    std::vector<String> out;
    for (std::int64_t i = files.lowerBound(); i <= files.upperBound(); ++i) {
      out.push_back(*files.get(static_cast<std::int32_t>(i)).get<String>());
    }
    return out;
  }
  String base() const { return fromUtf8(dir_.string()); }
};

TEST_F(ListFilesTest, OwnFilesComeBeforeThoseOfSubfolders) {
  std::filesystem::create_directories(dir_ / "sub" / "deeper");
  std::filesystem::create_directory(dir_ / "Another");
  write("sub/b.txt", "");
  write("sub/deeper/c.txt", "");
  write("Another/d.txt", "");
  write("a.txt", "");
  write("Z.txt", "");
  const String b = base();
  EXPECT_EQ(list(b), (std::vector<String>{b + u"/a.txt", b + u"/Z.txt", b + u"/Another/d.txt",
                                          b + u"/sub/b.txt", b + u"/sub/deeper/c.txt"}));
  EXPECT_EQ(list(b, false), (std::vector<String>{b + u"/a.txt", b + u"/Z.txt"}));
  // A start written with a separator already gets no second one.
  EXPECT_EQ(list(b + u"/sub/", false), (std::vector<String>{b + u"/sub/b.txt"}));
}

TEST_F(ListFilesTest, TheFilterChoosesFilesButNeverFolders) {
  std::filesystem::create_directory(dir_ / "data.txt");  // a folder that matches the filter
  write("data.txt/inner.csv", "");
  write("one.TXT", "");
  write("two.csv", "");
  write("three", "");
  const String b = base();
  EXPECT_EQ(list(b, true, u"*.txt"), (std::vector<String>{b + u"/one.TXT"}));
  EXPECT_EQ(list(b, true, u"*.csv"),
            (std::vector<String>{b + u"/two.csv", b + u"/data.txt/inner.csv"}));
  EXPECT_EQ(list(b, false, u"*."), (std::vector<String>{b + u"/three"}));
}

TEST_F(ListFilesTest, NothingFoundIsAnEmptyArray) {
  SafeArray files(0, std::vector<String>{u"stale"});
  std::int32_t count = 7;
  ListFiles(base(), files, count);
  EXPECT_EQ(count, 0);
  EXPECT_TRUE(files.dimensioned());
  EXPECT_EQ(files.size(), 0);
}

TEST_F(ListFilesTest, AMissingStartIsRefused) {
  for (const String& start : {path("missing"), write("file.txt", ""), String()}) {
    SafeArray files(VarType::String);
    std::int32_t count = 0;
    const Error e = errorOf([&] { ListFiles(start, files, count); });
    EXPECT_EQ(e.number(), kLibraryErrorNumber);
    EXPECT_EQ(e.description(), handledBy(u"Starting directory does not exist", u"ListFiles"));
  }
}

TEST_F(ListFilesTest, ALinkBackUpTheTreeIsNotFollowedForever) {
  std::filesystem::create_directory(dir_ / "sub");
  write("sub/b.txt", "");
  std::filesystem::create_directory_symlink(dir_, dir_ / "sub" / "loop");
  const String b = base();
  EXPECT_EQ(list(b), (std::vector<String>{b + u"/sub/b.txt"}));
}

}  // namespace
}  // namespace orvo::files
