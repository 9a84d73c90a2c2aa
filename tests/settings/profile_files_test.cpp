#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>

#include "files/files_fixture.hpp"
#include "orvogeneric/profile.hpp"
#include "orvogeneric/system_errors.hpp"
#include "settings/profile_document.hpp"

namespace orvo::test {
namespace {

namespace fs = std::filesystem;

// What a settings write finds beside or instead of an ordinary file: leftovers of killed
// writers, links planted where its temporary file once had a fixed name, names as long as the
// file system allows, files it may not write, and half a UTF-16 unit at the end.
class ProfileFiles : public FilesTest {
 protected:
  std::uint32_t put(const std::string& name, const String& section, const String& key,
                    const String& value) const {
    std::uint32_t error = 0;
    return ProfileWrite(path(name), section, &key, &value, &error) ? 0 : error;
  }
  [[nodiscard]] String get(const std::string& name, const String& section,
                           const String& key) const {
    const auto pairs = ProfileSection(path(name), section);
    if (!pairs) return u"<no section>";
    for (const auto& [k, v] : *pairs) {
      if (k == key) return v;
    }
    return u"<no key>";
  }
};

TEST_F(ProfileFiles, AReadOnlyFileIsRefusedAndLeftAlone) {
  write("s.ini", "[S]\r\nK=v\r\n");
  fs::permissions(dir_ / "s.ini", fs::perms(0444));
  EXPECT_EQ(put("s.ini", u"S", u"K", u"x"), kErrorAccessDenied);
  EXPECT_EQ(read("s.ini"), "[S]\r\nK=v\r\n");
}

TEST_F(ProfileFiles, LeftoversAndPlantedNamesAreNeitherFollowedNorInTheWay) {
  write("victim", "victim");
  fs::create_symlink("victim", dir_ / ".t.ini.orvo-new");
  fs::create_directory(dir_ / ".u.ini.orvo-new");
  write(".~orvoabcdefghij", "left by a killed writer");
  for (const char* name : {"t.ini", "u.ini"}) {
    EXPECT_EQ(put(name, u"S", u"K", u"w"), 0U) << name;
    EXPECT_EQ(get(name, u"S", u"K"), u"w") << name;
    EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(dir_ / name))) << name;
  }
  EXPECT_EQ(read("victim"), "victim");
  EXPECT_FALSE(fs::exists(fs::symlink_status(dir_ / ".t.ini.orvo-new")));
  EXPECT_FALSE(fs::exists(dir_ / ".~orvoabcdefghij"));
  EXPECT_TRUE(fs::is_directory(dir_ / ".u.ini.orvo-new"));  // somebody's own folder
}

TEST_F(ProfileFiles, TheLongestNameIsWrittenToo) {
  const std::string name = std::string(251, 'a') + ".ini";  // 255 bytes, the file system's limit
  EXPECT_EQ(put(name, u"S", u"K", u"long"), 0U);
  EXPECT_EQ(get(name, u"S", u"K"), u"long");
}

TEST_F(ProfileFiles, AnOddLengthUtf16FileTakesNewTextOnAUnitBoundary) {
  write("o.ini", std::string("\xff\xfe[\0S\0]\0\r\0\n\0K\0=\0v\0\r\0\n\0X", 23));
  for (const String value : {u"a1", u"a2"}) {
    EXPECT_EQ(put("o.ini", u"T", u"A", value), 0U);
    EXPECT_EQ(get("o.ini", u"T", u"A"), value);
  }
  EXPECT_EQ(get("o.ini", u"S", u"K"), u"v");
  EXPECT_EQ(ProfileSectionNames(path("o.ini")), (std::vector<String>{u"S", u"T"}));
  EXPECT_EQ(read("o.ini").size() % 2, 0U);
}

// A file too dense to index (tiny sections of one-letter keys) is edited as exactly as any
// other: the line replaced, the key added after its section's last line, the section removed.
TEST_F(ProfileFiles, AFileTooDenseToIndexIsEditedLineForLine) {
  const auto section = [](int i) {
    std::string s = "[" + std::to_string(i) + "]\na=" + std::to_string(i) + "\n";
    for (char k = 'b'; k <= 't'; ++k) s += std::string(1, k) + "=\n";
    return s + "\n";
  };
  std::string text = "\xEF\xBB\xBFtop=1\r\n";
  for (int i = 0; i < 20000; ++i) text += section(i);
  ASSERT_FALSE(settings::privateprofile::detail::Document(text, 1252).keysIndexed());
  write("dense.ini", text);
  EXPECT_EQ(put("dense.ini", u"500", u"A", u"new"), 0U);
  EXPECT_EQ(put("dense.ini", u"501", u"z", u"added"), 0U);
  std::uint32_t error = 0;
  EXPECT_TRUE(ProfileWrite(path("dense.ini"), u"502", nullptr, nullptr, &error));

  std::string expected = text;
  expected.replace(expected.find("[500]\na=500\n"), 12, "[500]\na=new\n");
  expected.insert(expected.find("t=\n", expected.find("[501]")) + 3, "z=added\r\n");
  expected.erase(expected.find("[502]"), section(502).size());
  EXPECT_EQ(read("dense.ini"), expected);
  EXPECT_EQ(get("dense.ini", u"500", u"a"), u"new");
  EXPECT_EQ(get("dense.ini", u"19999", u"a"), u"19999");
}

}  // namespace
}  // namespace orvo::test
