#include "settings/profile.hpp"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <random>

#include "files/files_fixture.hpp"
#include "support/test_support.hpp"

namespace orvo::settings::privateprofile {
namespace {

using Profile = test::FilesTest;

String get(const String& file, const String& section, const String& key, std::size_t size = 2048,
           ProfileForm form = ProfileForm::Wide) {
  return GetPrivateProfileString(section, key, u"<def>", size, file, form);
}

bool put(const String& file, const String& section, const String& key, const String& value,
         ProfileForm form = ProfileForm::Wide) {
  return WritePrivateProfileString(&section, &key, &value, file, form);
}

TEST_F(Profile, ReadsAsThePlatformParses) {
  const test::ScopedLocale english("en_US.UTF-8");
  const auto data = test::readFileAndCases("settings/profile_read.tsv", 3);
  const String ini = write("read.ini", data.bytes);
  for (const auto& row : data.cases) {
    SCOPED_TRACE("data line " + std::to_string(row.line));
    const auto& f = row.fields;
    EXPECT_EQ(test::show(get(ini, f[0], f[1])), test::show(f[2]));
  }
}

TEST_F(Profile, BufferAndDefaults) {
  const String ini =
      write("buffer.ini", "[S]\r\nlong=" + std::string(3000, 'x') + "\r\nq=\"hello world\"\r\n");
  EXPECT_EQ(get(ini, u"S", u"long").size(), 2047U);
  EXPECT_EQ(get(ini, u"S", u"q", 6), u"hello") << "cut after the quotes are removed";
  EXPECT_EQ(get(ini, u"S", u"q", 1), u"");
  EXPECT_EQ(get(ini, u"S", u"q", 0), u"");
  bool found = true;
  EXPECT_EQ(GetPrivateProfileString(u"S", u"none", u"  def with blanks  ", 2048, ini,
                                    ProfileForm::Wide, &found),
            u"  def with blanks");
  EXPECT_FALSE(found);
  EXPECT_EQ(get(path("missing.ini"), u"S", u"q"), u"<def>");
  EXPECT_EQ(get(u"", u"S", u"q"), u"<def>");
}

TEST_F(Profile, EncodingsOfTheFile) {
  const test::ScopedLocale english("en_US.UTF-8");  // ANSI code page 1252
  for (const auto& row : test::readTestData("settings/profile_encodings.tsv", 4)) {
    SCOPED_TRACE("data line " + std::to_string(row.line));
    const auto& f = row.fields;
    const String ini = write("enc" + std::to_string(row.line) + ".ini", test::bytesOf(f[1]));
    EXPECT_EQ(test::show(get(ini, u"S", u"v")), test::show(f[2]));
    EXPECT_EQ(test::show(get(ini, u"S", u"v", 2048, ProfileForm::Ansi)), test::show(f[3]));
  }
}

TEST_F(Profile, NamesMatchWhateverTheirCaseAndEncoding) {
  const test::ScopedLocale english("en_US.UTF-8");  // ANSI code page 1252
  for (const auto& row : test::readTestData("settings/profile_names.tsv", 5)) {
    SCOPED_TRACE("data line " + std::to_string(row.line) + ": " + toUtf8(row.fields[0]));
    const auto& f = row.fields;
    const String ini = write("names" + std::to_string(row.line) + ".ini", test::bytesOf(f[1]));
    for (const ProfileForm form : {ProfileForm::Wide, ProfileForm::Ansi}) {
      EXPECT_EQ(test::show(get(ini, f[2], f[3], 2048, form)), test::show(f[4]));
    }
  }
}

TEST_F(Profile, DoubleBytePagesAreReadAsText) {
  const test::ScopedEnvironment japanese("ORVO_ANSI_CODEPAGE", "932");
  // In code page 932 U+8868 is 95 5C ("\\" as a trail byte) and U+30BE is 83 5D ("]"): a
  // scan of the bytes would end the section name early.
  const String ini = write("sjis.ini",
                           "[\x83\x5D]\r\n"
                           "\x95\x5C=\x83\x5D\r\n");
  EXPECT_EQ(get(ini, u"\u30be", u"\u8868"), u"\u30be");
  ASSERT_TRUE(put(ini, u"\u30be", u"\u8868", u"\u8868"));
  EXPECT_EQ(read("sjis.ini"), "[\x83\x5D]\r\n\x95\x5C=\x95\x5C\r\n");
  EXPECT_EQ(get(ini, u"\u30be", u"\u8868"), u"\u8868") << "the writer's parse is of what it wrote";
}

TEST_F(Profile, WritesChangeOnlyTheirLine) {
  const test::ScopedLocale english("en_US.UTF-8");
  const auto data = test::readFileAndCases("settings/profile_write.tsv", 4);
  auto given = [](const String& field) { return field == u"<none>" ? nullptr : &field; };
  for (const auto& row : data.cases) {
    SCOPED_TRACE("data line " + std::to_string(row.line));
    const auto& f = row.fields;
    const String ini = write("w.ini", data.bytes);
    EXPECT_TRUE(WritePrivateProfileString(&f[0], given(f[1]), given(f[2]), ini, ProfileForm::Wide));
    EXPECT_EQ(read("w.ini"), test::bytesOf(f[3]));
  }
}

TEST_F(Profile, NewFilesAndFailures) {
  const test::ScopedLocale english("en_US.UTF-8");
  const String ini = path("new.ini");
  ASSERT_TRUE(put(ini, u"App1", u"key1", u"string1"));
  ASSERT_TRUE(put(ini, u"App1", u"key2", u"string2"));
  ASSERT_TRUE(put(ini, u"App2", u"key4", u"caf\u00e9 \u3042 \u20ac"));
  EXPECT_EQ(read("new.ini"),
            "[App1]\r\nkey1=string1\r\nkey2=string2\r\n[App2]\r\nkey4=caf\xE9 ? \x80\r\n")
      << "created as ANSI";
  const String section = u"S";
  const String key = u"k";
  EXPECT_TRUE(
      WritePrivateProfileString(&section, &key, nullptr, path("absent.ini"), ProfileForm::Wide));
  EXPECT_FALSE(std::filesystem::exists(dir_ / "absent.ini")) << "a delete creates nothing";
  struct Failure {
    const char* name;
    const String* section;
    String file;
    std::uint32_t error;
  };
  const Failure failures[] = {
      {"no section", nullptr, ini, 2},
      {"no file name", &section, u"", 5},
      {"no directory", &section, path("no/such/dir.ini"), 3},
  };
  for (const auto& f : failures) {
    std::uint32_t error = 0;
    EXPECT_FALSE(
        WritePrivateProfileString(f.section, &key, &key, f.file, ProfileForm::Wide, &error))
        << f.name;
    EXPECT_EQ(error, f.error) << f.name;
  }
  if (::geteuid() != 0) {
    std::filesystem::permissions(
        dir_, std::filesystem::perms::owner_read | std::filesystem::perms::owner_exec);
    std::uint32_t error = 0;
    EXPECT_FALSE(WritePrivateProfileString(&section, &key, &key, ini, ProfileForm::Wide, &error));
    EXPECT_EQ(error, 5U);
    std::filesystem::permissions(dir_, std::filesystem::perms::owner_all);
  }
}

TEST_F(Profile, UnicodeFilesStayUnicode) {
  const String le = write("le.ini", std::string("\xFF\xFE[\0S\0]\0\r\0\n\0", 12));
  ASSERT_TRUE(put(le, u"S", u"k", u"\u00e9\u3042"));
  EXPECT_EQ(read("le.ini"),
            std::string("\xFF\xFE[\0S\0]\0\r\0\n\0k\0=\0\xE9\0\x42\x30\r\0\n\0", 24));
  const String u8 = write("u8.ini", "\xEF\xBB\xBF[S]\r\n");
  ASSERT_TRUE(put(u8, u"S", u"k", u"\u3042"));
  EXPECT_EQ(read("u8.ini"), "\xEF\xBB\xBF[S]\r\nk=\xE3\x81\x82\r\n");
}

TEST_F(Profile, ReplacingKeepsModeAndLinksAndSeesOtherWriters) {
  const String ini = write("target.ini", "[S]\r\nk=1\r\n");
  std::filesystem::permissions(dir_ / "target.ini", std::filesystem::perms(0640));
  std::filesystem::create_symlink("target.ini", dir_ / "link.ini");
  EXPECT_EQ(get(path("link.ini"), u"S", u"k"), u"1");
  ASSERT_TRUE(put(path("link.ini"), u"S", u"k", u"2"));
  EXPECT_TRUE(std::filesystem::is_symlink(dir_ / "link.ini"));
  EXPECT_EQ(read("target.ini"), "[S]\r\nk=2\r\n");
  EXPECT_EQ(std::filesystem::status(dir_ / "target.ini").permissions(),
            std::filesystem::perms(0640));
  // Another program rewrites the file in place with the same size: seen at once.
  for (const char* value : {"3", "4", "5"}) {
    write("target.ini", std::string("[S]\r\nk=") + value + "\r\n");
    EXPECT_EQ(toUtf8(get(ini, u"S", u"k")), value);
  }
  std::size_t entries = 0;
  for ([[maybe_unused]] const auto& e : std::filesystem::directory_iterator(dir_)) ++entries;
  EXPECT_EQ(entries, 2U) << "no temporary file left behind";
}

// A program reading values again and again is answered from its parse, yet sees at its very
// next lookup whatever another process has done to the file, however it was done.
TEST_F(Profile, AnotherProcesssChangeIsSeenAtTheNextLookup) {
  std::filesystem::create_directory(dir_ / "other");
  struct Change {
    const char* how;
    std::function<void(const std::filesystem::path&)> make;
    const char16_t* value;
  };
  const auto overwrite = [](const std::filesystem::path& f, const std::string& bytes) {
    std::fstream(f, std::ios::in | std::ios::out | std::ios::binary) << bytes;
  };
  const Change changes[] = {
      {"rewritten in place, same size", [&](const auto& f) { overwrite(f, "[S]\r\nk=2\r\n"); },
       u"2"},
      {"replaced by a rename",
       [](const auto& f) {
         std::ofstream(f.string() + ".tmp", std::ios::binary) << "[S]\r\nk=renamed\r\n";
         std::filesystem::rename(f.string() + ".tmp", f);
       },
       u"renamed"},
      {"written by this library",
       [](const auto& f) { put(fromUtf8(f.string()), u"S", u"k", u"3"); }, u"3"},
      {"removed", [](const auto& f) { std::filesystem::remove(f); }, u"<def>"},
      {"written through a second name elsewhere",
       [&](const auto& f) {
         std::filesystem::create_hard_link(f, dir_ / "other" / "alias.ini");
         overwrite(dir_ / "other" / "alias.ini", "[S]\r\nk=4\r\n");
       },
       u"4"},
      {"made unreadable",
       [](const auto& f) { std::filesystem::permissions(f, std::filesystem::perms::none); },
       ::geteuid() == 0 ? u"1" : u"<def>"},
  };
  int n = 0;
  for (const Change& c : changes) {
    const std::string name = "seen" + std::to_string(++n) + ".ini";
    const String ini = write(name, "[S]\r\nk=1\r\n");
    for (int i = 0; i < 3; ++i) ASSERT_EQ(get(ini, u"S", u"k"), u"1") << c.how;
    EXPECT_TRUE(test::runInProcesses(1, [&](int) {
      c.make(dir_ / name);
      return true;
    }));
    EXPECT_EQ(test::show(get(ini, u"S", u"k")), test::show(c.value)) << c.how;
    std::filesystem::remove(dir_ / "other" / "alias.ini");
  }
}

// Several processes writing distinct keys into one file: none is lost.
TEST_F(Profile, ConcurrentWritersLoseNothing) {
  const String ini = path("shared.ini");
  constexpr int kProcesses = 8;
  constexpr int kWrites = 300;
  EXPECT_TRUE(test::runInProcesses(kProcesses, [&](int p) {
    bool ok = true;
    for (int i = 0; i < kWrites; ++i) {
      const String section = u"S" + fromUtf8(std::to_string(i % 3));
      ok = put(ini, section, fromUtf8("p" + std::to_string(p) + "_" + std::to_string(i)),
               fromUtf8(std::to_string(i))) &&
           ok;
    }
    return ok;
  }));
  clearProfileCache();
  int present = 0;
  for (int p = 0; p < kProcesses; ++p) {
    for (int i = 0; i < kWrites; ++i) {
      const String section = u"S" + fromUtf8(std::to_string(i % 3));
      present += get(ini, section, fromUtf8("p" + std::to_string(p) + "_" + std::to_string(i))) ==
                 fromUtf8(std::to_string(i));
    }
  }
  EXPECT_EQ(present, kProcesses * kWrites);
}

// A writer killed at any moment leaves the old or the new file, whole.
TEST_F(Profile, KilledWritersLeaveWholeFiles) {
  const String ini = path("killed.ini");
  const std::string a(20000, 'a');
  const std::string b(20000, 'b');
  ASSERT_TRUE(put(ini, u"S", u"k", fromUtf8(a)));
  ASSERT_TRUE(put(ini, u"T", u"k", u"fixed"));
  const std::uintmax_t size = std::filesystem::file_size(dir_ / "killed.ini");
  std::mt19937 random(12345);
  for (int round = 0; round < 200; ++round) {
    const pid_t pid = ::fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
      for (int i = 0;; ++i) put(ini, u"S", u"k", fromUtf8(i % 2 == 0 ? b : a));
    }
    ::usleep(std::uniform_int_distribution<useconds_t>(0, 3000)(random));
    ::kill(pid, SIGKILL);
    int status = 0;
    ASSERT_EQ(::waitpid(pid, &status, 0), pid);
    ASSERT_EQ(std::filesystem::file_size(dir_ / "killed.ini"), size) << "round " << round;
    const std::string value = toUtf8(get(ini, u"S", u"k", 30000));
    ASSERT_TRUE(value == a || value == b) << "round " << round;
    ASSERT_EQ(get(ini, u"T", u"k"), u"fixed") << "round " << round;
  }
  ASSERT_TRUE(put(ini, u"S", u"k", u"after")) << "a left-over temporary file is no obstacle";
  EXPECT_EQ(get(ini, u"S", u"k"), u"after");
}

// Files that are not what a settings file should be: the documented answer, no crash, and
// nothing written where nothing may be.
TEST_F(Profile, BadFilesGiveTheDefaultOrAFailure) {
  std::filesystem::create_directory(dir_ / "adir");
  const String directory = path("adir");
  EXPECT_EQ(get(directory, u"S", u"k"), u"<def>");
  std::uint32_t error = 0;
  const String section = u"S";
  const String key = u"k";
  EXPECT_FALSE(
      WritePrivateProfileString(&section, &key, &key, directory, ProfileForm::Wide, &error));
  EXPECT_EQ(error, 5U);
  EXPECT_TRUE(std::filesystem::is_directory(dir_ / "adir"));

  auto expectReadAndKept = [&](const std::string& name, const std::string& bytes,
                               const String& value) {
    const String file = write(name, bytes);
    EXPECT_EQ(test::show(get(file, u"S", u"k")), test::show(value));
    ASSERT_TRUE(put(file, u"Other", u"n", u"1"));
    EXPECT_TRUE(read(name).starts_with(bytes));
  };
  for (const auto& row : test::readTestData("settings/profile_bad_files.tsv", 3)) {
    SCOPED_TRACE("data line " + std::to_string(row.line));
    expectReadAndKept("bad" + std::to_string(row.line), test::bytesOf(row.fields[1]),
                      row.fields[2]);
  }
  expectReadAndKept("big.ini", "[S]\r\nbig=" + std::string(10 << 20, 'x') + "\r\nk=2\r\n", u"2");
  EXPECT_EQ(get(path("big.ini"), u"S", u"big").size(), 2047U);

  if (::geteuid() != 0) {
    const String locked = write("locked.ini", "[S]\r\nk=1\r\n");
    std::filesystem::permissions(dir_ / "locked.ini", std::filesystem::perms::none);
    EXPECT_EQ(get(locked, u"S", u"k"), u"<def>") << "unreadable: the default";
    std::filesystem::permissions(dir_ / "locked.ini", std::filesystem::perms::owner_all);
  }
}

}  // namespace
}  // namespace orvo::settings::privateprofile
