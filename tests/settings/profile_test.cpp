#include "settings/profile.hpp"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <random>

#include "files/files_fixture.hpp"
#include "support/test_support.hpp"

namespace orvo::settings::privateprofile {
namespace {

using Profile = test::FilesTest;
using namespace std::string_literals;

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
  const String ini = write("read.ini",
                           "orphan=before any section\r\n"
                           "  [Indented]  \r\n"
                           "  key_lead_blank=kv1\r\n"
                           "key_eq_both   =   kv3\r\n"
                           "two_eq=a=b\r\n"
                           "=nokey\r\n"
                           "noeq\r\n"
                           ";commented=1\r\n"
                           "#hashed=1\r\n"
                           "semi=abc ;not a comment?\r\n"
                           "dq=\"hello world\"\r\n"
                           "padded=   \" padded \"   \r\n"
                           "sq='single'\r\n"
                           "mixed=\"abc'\r\n"
                           "inner=\"a\" \"b\"\r\n"
                           "empty=\r\n"
                           "k=first\r\n"
                           "K=second\r\n"
                           "[ Spaced Section ]\n"
                           "a=1\r"
                           "[Trail]junk\n\r"
                           "b=2\r\r\n"
                           "[a]b]\r\n"
                           "c=3\r\n"
                           "[NoClose\r\n"
                           "d=4\r\n"
                           "[Dup]\r\n"
                           "only_first=1\r\n"
                           "[dup]\r\n"
                           "only_second=2\r\n"
                           "[Last]\r\n"
                           "no_newline=end");
  struct Case {
    const char16_t* section;
    const char16_t* key;
    const char16_t* value;
  };
  const Case cases[] = {
      {u"", u"orphan", u"<def>"},  // lines before the first section belong to none
      {u"indented", u"KEY_LEAD_BLANK", u"kv1"},
      {u"Indented", u"  key_eq_both ", u"kv3"},
      {u"Indented", u"two_eq", u"a=b"},
      {u"Indented", u"", u"nokey"},
      {u"Indented", u"noeq", u"<def>"},
      {u"Indented", u";commented", u"<def>"},
      {u"Indented", u"#hashed", u"1"},
      {u"Indented", u"semi", u"abc ;not a comment?"},
      {u"Indented", u"dq", u"hello world"},
      {u"Indented", u"padded", u" padded "},
      {u"Indented", u"sq", u"single"},
      {u"Indented", u"mixed", u"\"abc'"},
      {u"Indented", u"inner", u"a\" \"b"},
      {u"Indented", u"empty", u""},
      {u"Indented", u"k", u"first"},
      {u"Spaced Section", u"a", u"1"},
      {u"Trail", u"b", u"2"},
      {u"a]b", u"c", u"3"},
      {u"a]b", u"d", u"4"},  // "[NoClose" is no header: d stays in the section before
      {u"DUP", u"only_first", u"1"},
      {u"Dup", u"only_second", u"<def>"},  // only the first of duplicate sections is searched
      {u"Last", u"no_newline", u"end"},
      {u"Missing", u"a", u"<def>"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(test::show(get(ini, c.section, c.key)), test::show(c.value))
        << test::show(c.section) << "/" << test::show(c.key);
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
  struct Case {
    const char* name;
    std::string bytes;
    String wide;
    String ansi;
  };
  const Case cases[] = {
      {"ANSI", "[S]\r\nv=caf\xE9 \x80\x81\r\n", u"caf\u00e9 \u20ac\u0081",
       u"caf\u00e9 \u20ac\u0081"},
      {"UTF-16 LE", std::string("\xFF\xFE[\0S\0]\0\n\0v\0=\0\xE9\0 \0\x42\x30", 20),
       u"\u00e9 \u3042", u"\u00e9 ?"},
      {"UTF-16 BE", std::string("\xFE\xFF\0[\0S\0]\0\n\0v\0=\0\xE9", 16), u"\u00e9", u"\u00e9"},
      {"UTF-8 with BOM", "\xEF\xBB\xBF[S]\nv=caf\xC3\xA9", u"caf\u00e9", u"caf\u00e9"},
      {"UTF-8 without BOM is ANSI", "[S]\nv=caf\xC3\xA9", u"caf\u00c3\u00a9", u"caf\u00c3\u00a9"},
  };
  int n = 0;
  for (const auto& c : cases) {
    const String ini = write("enc" + std::to_string(n++) + ".ini", c.bytes);
    EXPECT_EQ(test::show(get(ini, u"S", u"v")), test::show(c.wide)) << c.name;
    EXPECT_EQ(test::show(get(ini, u"S", u"v", 2048, ProfileForm::Ansi)), test::show(c.ansi))
        << c.name;
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
}

TEST_F(Profile, WritesChangeOnlyTheirLine) {
  const test::ScopedLocale english("en_US.UTF-8");
  const std::string original =
      "junk \0 before\r\n"s
      "; a comment\n"
      "[Alpha]\r\n"
      "  spaced   =   old value   \r\n"
      "   ;  odd comment  \r\n"
      "\r\n"
      "[Beta]\n"
      "UPPER=3\n"
      "\n"
      "[Gamma]\r\n"
      "last=1"s;
  struct Case {
    const char* name;
    const char16_t* section;
    const char16_t* key;    // nullptr deletes the section
    const char16_t* value;  // nullptr deletes the key
    std::string after;
  };
  const std::string junk = original.substr(0, original.find("[Alpha]"));
  const std::size_t rest = junk.size();
  const Case cases[] = {
      {"replace keeps the key's spelling", u"alpha", u"SPACED", u"new",
       junk + "[Alpha]\r\nspaced=new\r\n   ;  odd comment  "
              "\r\n\r\n[Beta]\nUPPER=3\n\n[Gamma]\r\nlast=1"},
      {"same value: untouched", u"Alpha", u"spaced", u"old value", junk + original.substr(rest)},
      {"new key after the section's last line", u"Alpha", u"added", u"yes",
       junk + "[Alpha]\r\n  spaced   =   old value   \r\n   ;  odd comment  \r\nadded=yes\r\n\r\n"
              "[Beta]\nUPPER=3\n\n[Gamma]\r\nlast=1"},
      {"new key after a last line without terminator", u"Gamma", u"k", u"v",
       junk + original.substr(rest) + "\r\nk=v\r\n"},
      {"new section at the end", u"  Delta  ", u" k ", u" v ",
       junk + original.substr(rest) + "\r\n[Delta]\r\nk= v \r\n"},
      {"delete a key", u"beta", u"upper", nullptr,
       junk + "[Alpha]\r\n  spaced   =   old value   \r\n   ;  odd comment  \r\n\r\n[Beta]\n\n"
              "[Gamma]\r\nlast=1"},
      {"delete a missing key", u"Beta", u"none", nullptr, junk + original.substr(rest)},
      {"delete a section", u"Alpha", nullptr, nullptr,
       junk + "[Beta]\nUPPER=3\n\n[Gamma]\r\nlast=1"},
      {"delete the last section", u"Gamma", nullptr, nullptr,
       junk +
           original.substr(rest, original.size() - rest - std::string("[Gamma]\r\nlast=1").size())},
  };
  for (const auto& c : cases) {
    const String ini = write("w.ini", std::string(original.data(), original.size()));
    const String section = c.section;
    const String key = c.key != nullptr ? String(c.key) : String();
    const String value = c.value != nullptr ? String(c.value) : String();
    EXPECT_TRUE(WritePrivateProfileString(&section, c.key != nullptr ? &key : nullptr,
                                          c.value != nullptr ? &value : nullptr, ini,
                                          ProfileForm::Wide))
        << c.name;
    EXPECT_EQ(read("w.ini"), c.after) << c.name;
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

  struct Case {
    const char* name;
    std::string bytes;
    const char16_t* section;
    const char16_t* key;
    String value;
  };
  const std::string longLine(10 << 20, 'x');
  const Case cases[] = {
      {"NUL bytes in names and values", "[S\0T]\r\nk\0=v\0w\r\n[S]\r\nk=after\r\n"s, u"S", u"k",
       u"after"},
      {"a lone CR ends a line", "[S]\rk=1\r", u"S", u"k", u"1"},
      {"a 10 MB line", "[S]\r\nbig=" + longLine + "\r\nk=2\r\n", u"S", u"k", u"2"},
      {"invalid UTF-16: a lone surrogate", "\xFF\xFE[\0S\0]\0\n\0k\0=\0\x00\xD8\x41\0"s, u"S", u"k",
       String(u"\xD800") + u"A"},
      {"UTF-16 with an odd last byte", "\xFF\xFE[\0S\0]\0\n\0k\0=\0z\0!"s, u"S", u"k", u"z"},
  };
  int n = 0;
  for (const auto& c : cases) {
    const std::string name = "bad" + std::to_string(n++) + ".ini";
    const String file = write(name, c.bytes);
    EXPECT_EQ(test::show(get(file, c.section, c.key)), test::show(c.value)) << c.name;
    // A write elsewhere in the file keeps these bytes exactly.
    ASSERT_TRUE(put(file, u"Other", u"n", u"1")) << c.name;
    const std::string after = read(name);
    EXPECT_EQ(after.substr(0, c.bytes.size()) == c.bytes, true) << c.name;
  }
  EXPECT_EQ(get(path("bad2.ini"), u"S", u"big").size(), 2047U);

  if (::geteuid() != 0) {
    const String locked = write("locked.ini", "[S]\r\nk=1\r\n");
    std::filesystem::permissions(dir_ / "locked.ini", std::filesystem::perms::none);
    EXPECT_EQ(get(locked, u"S", u"k"), u"<def>") << "unreadable: the default";
    std::filesystem::permissions(dir_ / "locked.ini", std::filesystem::perms::owner_all);
  }
}

}  // namespace
}  // namespace orvo::settings::privateprofile
