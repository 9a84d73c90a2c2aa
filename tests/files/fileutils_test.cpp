#include "files/fileutils.hpp"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "files/encoding.hpp"
#include "files/files_fixture.hpp"
#include "orvogeneric/error.hpp"
#include "support/test_support.hpp"

namespace orvo::files {
namespace {

using FileUtils = test::FilesTest;
using test::errorOf;
using test::handledBy;
using test::show;

TEST_F(FileUtils, PathQueries) {
  const String file = write("model.txt", "x");
  std::filesystem::create_directory(dir_ / "sub");
  for (const auto& row : test::readTestData("files/path_queries.tsv", 4)) {
    const auto& f = row.fields;
    const String given = inScratch(f[1]);
    test::expectCall(row, inScratch(f[3]), [&]() -> Variant {
      if (f[0] == u"FileExists") return FileExists(given);
      if (f[0] == u"DirExists") return DirExists(given);
      if (f[0] == u"PathWithoutBackslash")
        return PathWithoutBackslash(given, toVBool(f[2] == u"1"));
      String folder = u"stale";
      const VBool answer = PathExists(given, folder);
      return answer == toVBool(!folder.empty())
                 ? folder
                 : String(u"an answer that disagrees with the folder");
    });
  }
  EXPECT_EQ(GetAttributes(path("missing.txt")), -1);
  EXPECT_EQ(GetAttributes(path("sub")) & 16, 16);
  EXPECT_EQ(GetAttributes(file) & 16, 0);
}

TEST_F(FileUtils, FileReadOnlyReadsTheBitOrSaysWhyItCannot) {
  const String writable = write("w.txt", "x");
  const String locked = write("r.txt", "x");
  std::filesystem::permissions(dir_ / "r.txt", std::filesystem::perms::owner_write,
                               std::filesystem::perm_options::remove);
  EXPECT_EQ(FileReadOnly(writable), VBool::False);
  EXPECT_EQ(FileReadOnly(locked), VBool::True);

  const String missing = path("missing.txt");
  EXPECT_EQ(errorOf([&] { (void)FileReadOnly(missing); }).description(),
            handledBy(u"Error (FileReadOnly): No attributes can be found. The file does not "
                      u"exist\r\n" +
                          missing,
                      u"FileReadOnly"));
  const String folder = fromUtf8(dir_.string());
  const Error e = errorOf([&] { (void)FileReadOnly(folder); });
  EXPECT_EQ(e.number(), kLibraryErrorNumber);
  EXPECT_EQ(e.description(),
            handledBy(u"Error (FileReadOnly): This is a folder, not a file.\r\n" + folder,
                      u"FileReadOnly"));
}

TEST_F(FileUtils, ShortNameIsTheUpperCaseCanonicalPath) {
  write("Model.txt", "x");
  std::filesystem::create_directory(dir_ / "sub");
  const String canonical = fromUtf8(std::filesystem::canonical(dir_ / "Model.txt").string());
  String upper;
  for (const char16_t c : canonical) upper += (c >= u'a' && c <= u'z') ? c - 32 : c;
  EXPECT_EQ(FileShortName(path("sub") + u"/../Model.txt"), upper);
  EXPECT_EQ(FileShortName(path("missing.txt")), u"");
}

TEST_F(FileUtils, SafeKillDeletesAndForgetsTheEncoding) {
  const String file = write("a.txt", "\xEF\xBB\xBFx");
  ASSERT_EQ(TextFileEncoding(file), encUTF8_BOM);
  SafeKill(file);
  EXPECT_FALSE(std::filesystem::exists(dir_ / "a.txt"));
  // Rewritten in another encoding, the file is classified afresh.
  write("a.txt", "plain");
  EXPECT_EQ(TextFileEncoding(file), encANSI);
  SafeKill(path("missing.txt"));  // no error
  SafeKill(u"");
  std::filesystem::create_directory(dir_ / "sub");
  SafeKill(path("sub"));
  EXPECT_TRUE(std::filesystem::exists(dir_ / "sub"));
}

TEST_F(FileUtils, CopyOverwritesOnlyWhenAllowed) {
  const String from = write("from.txt", "new");
  const String to = write("to.txt", "old");
  EXPECT_EQ(bFileCopy(from, to, VBool::False), VBool::False);
  EXPECT_EQ(read("to.txt"), "old");
  EXPECT_EQ(bFileCopy(from, to), VBool::True);
  EXPECT_EQ(read("to.txt"), "new");
  EXPECT_EQ(bFileCopy(from, path("fresh.txt"), VBool::False), VBool::True);
  EXPECT_EQ(read("fresh.txt"), "new");
  // Failures are answers, not errors.
  EXPECT_EQ(bFileCopy(path("missing.txt"), path("x.txt")), VBool::False);
  EXPECT_EQ(bFileCopy(from, path("no/such/dir.txt")), VBool::False);
  EXPECT_EQ(bFileCopy(from, from), VBool::False);
  EXPECT_EQ(read("from.txt"), "new");
}

TEST_F(FileUtils, CopyKeepsTheReadOnlyBitAndNeverWritesOverIt) {
  const String from = write("from.txt", "new");
  std::filesystem::permissions(dir_ / "from.txt", std::filesystem::perms::owner_write,
                               std::filesystem::perm_options::remove);
  ASSERT_EQ(bFileCopy(from, path("copy.txt")), VBool::True);
  EXPECT_EQ(FileReadOnly(path("copy.txt")), VBool::True);
  const String locked = write("locked.txt", "old");
  std::filesystem::permissions(dir_ / "locked.txt", std::filesystem::perms::owner_write,
                               std::filesystem::perm_options::remove);
  EXPECT_EQ(bFileCopy(write("other.txt", "new"), locked), VBool::False);
  EXPECT_EQ(read("locked.txt"), "old");
}

TEST_F(FileUtils, BackupsAreNumberedInPlaceOfTheExtension) {
  EXPECT_EQ(FileBackup(path("missing.txt")), u"");
  const String model = write("model.txt", "data");
  write("model.000", "");
  write("model.001", "");
  EXPECT_EQ(FileBackup(model), path("model.002"));
  EXPECT_EQ(read("model.002"), "data");
  EXPECT_EQ(FileBackup(model), path("model.003"));
  EXPECT_EQ(FileBackup(model, u"_bak", u"b"), path("model_bak.b000"));
  const String noExtension = write("notes", "n");
  EXPECT_EQ(FileBackup(noExtension), path("notes.000"));
}

TEST_F(FileUtils, BackupIsRefusedWhenAllThousandNumbersAreTaken) {
  const String model = write("m.txt", "data");
  for (int n = 0; n <= 999; ++n) {
    char name[16];
    std::snprintf(name, sizeof name, "m.%03d", n);
    write(name, "old");
  }
  EXPECT_EQ(FileBackup(model), u"");
  EXPECT_EQ(read("m.999"), "old");
}

TEST_F(FileUtils, IsEqualFileComparesTextsNotBytes) {
  const String utf16 = write("w.txt", std::string("\xFF\xFE"
                                                  "c\0a\0f\0\xE9\0",
                                                  10));
  const String utf8 = write("u.txt",
                            "\xEF\xBB\xBF"
                            "caf\xC3\xA9");
  const String other = write("o.txt",
                             "\xEF\xBB\xBF"
                             "cafe");
  EXPECT_EQ(IsEqualFile(utf16, utf8), VBool::True);
  EXPECT_EQ(IsEqualFile(utf8, other), VBool::False);
  const Error e = errorOf([&] { (void)IsEqualFile(utf8, path("missing.txt")); });
  EXPECT_EQ(e.number(), 53);
  EXPECT_TRUE(e.description().ends_with(u"Error handled by IsEqualFile")) << show(e.description());
}

}  // namespace
}  // namespace orvo::files
