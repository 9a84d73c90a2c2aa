#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>

#include "files/files_fixture.hpp"
#include "files/textfiles.hpp"
#include "orvogeneric/error.hpp"

namespace orvo::test {
namespace {

namespace fs = std::filesystem;

// WriteStringToTextFileB writes a new file in place of the old one: what is there after a
// success is what deleting and creating gave (a link replaced, a new file's permissions), and
// after a refusal the old file is whole.
class TextFileWrites : public FilesTestWithUmask {
 protected:
  static std::int32_t write(const String& file, const String& text, std::int32_t codePage,
                            VBool putByte) {
    try {
      files::WriteStringToTextFileB(text, file, codePage, putByte);
    } catch (const Error& e) {
      return e.number();
    }
    return 0;
  }
};

TEST_F(TextFileWrites, ANewFileTakesThePlaceOfTheOld) {
  struct Case {
    const char* what;
    std::int32_t codePage;
    VBool putByte;
    std::string bytes;
  };
  const Case cases[] = {
      {"ANSI text", 0, VBool::False, "new"},
      {"UTF-8 with its BOM", 65001, VBool::True, "\xef\xbb\xbfnew"},
      {"UTF-16 LE with its BOM", 1200, VBool::True, std::string("\xff\xfen\0e\0w\0", 8)},
  };
  for (const auto& c : cases) {
    FilesTest::write("old.txt", "old content, longer than the new");
    fs::permissions(dir_ / "old.txt", fs::perms(0600));
    FilesTest::write("target.txt", "kept");
    fs::remove(dir_ / "link.txt");
    fs::create_symlink("target.txt", dir_ / "link.txt");
    for (const char* name : {"old.txt", "link.txt"}) {
      EXPECT_EQ(write(path(name), u"new", c.codePage, c.putByte), 0) << c.what << " " << name;
      EXPECT_EQ(read(name), c.bytes) << c.what << " " << name;
      EXPECT_FALSE(fs::is_symlink(dir_ / name)) << c.what << " " << name;
      EXPECT_EQ(fs::status(dir_ / name).permissions(), fs::perms(0644)) << c.what << " " << name;
    }
    EXPECT_EQ(read("target.txt"), "kept") << c.what;
  }
}

TEST_F(TextFileWrites, ARefusedWriteLeavesTheOldFileWhole) {
  FilesTest::write("readonly.txt", "kept");
  fs::permissions(dir_ / "readonly.txt", fs::perms(0444));
  EXPECT_EQ(write(path("readonly.txt"), u"new", 0, VBool::False), 76);
  EXPECT_EQ(write(path("readonly.txt"), u"new", 65001, VBool::True), 0);  // traced, not raised
  EXPECT_EQ(read("readonly.txt"), "kept");
  EXPECT_EQ(write(path("missing/x.txt"), u"new", 0, VBool::False), 76);
  EXPECT_EQ(static_cast<std::size_t>(std::distance(fs::directory_iterator(dir_), {})), 1U);
}

}  // namespace
}  // namespace orvo::test
