#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "files/files_fixture.hpp"
#include "platform/native_path.hpp"
#include "settings/profile.hpp"
#include "settings/profile_cache.hpp"
#include "settings/profile_document.hpp"
#include "support/test_support.hpp"

namespace orvo::settings::privateprofile {
namespace {

using detail::Document;
using detail::upper;

// What a parse answers for every name a test uses: section by section, each key's value (or
// that it is missing), so that two parses can be compared whole.
String answers(const Document& document, const std::vector<String>& sections,
               const std::vector<String>& keys) {
  String out;
  for (const String& s : sections) {
    const auto section = document.findSection(upper(s));
    out += s + (section ? u":" : u":<none>") + u"\n";
    if (!section) continue;
    for (const String& k : keys) {
      const auto line = document.findKey(*section, upper(k));
      out += u"  " + k + u"=" + (line ? document.text(line->valueBegin, line->valueEnd) : u"-") +
             u"\n";
    }
  }
  return out;
}

// A writer moves the index of the parse it had along instead of parsing the new file again.
// Whatever it writes, the parse it keeps answers exactly as a fresh parse of the file does,
// in every encoding a settings file can have.
TEST(ProfileEdits, AMovedIndexAnswersAsAFreshParse) {
  const test::ScopedEnvironment western("ORVO_ANSI_CODEPAGE", "1252");
  const std::vector<String> sections = {u"Alpha", u"beta",          u"Gamma",
                                        u"Delta", u"\u00c9t\u00e9", u"Epsilon"};
  const std::vector<String> keys = {u"one", u"Two", u"three", u"k\u00e9y", u"FOUR", u"five"};
  const std::vector<String> values = {u"1",         u"",           u"a longer value than before",
                                      u"\u00e0 la", u"\"quoted\"", u"x"};
  struct Start {
    const char* name;
    std::string bytes;
  };
  const Start starts[] = {
      {"empty", ""},
      {"ANSI", "; head\r\n[Alpha]\r\none=1\r\n\r\n[beta]\r\nTwo=2\r\n"},
      {"ANSI beyond ASCII", "[\xC9t\xE9]\r\nk\xE9y=\xE0\r\n[Alpha]\r\none=1"},
      {"UTF-8 with BOM", "\xEF\xBB\xBF[Alpha]\nthree=3\n[Gamma]\n"},
      {"LF only, no last terminator", "[Alpha]\none=1\n[beta]\nfive=5"},
      {"UTF-16LE", std::string("\xFF\xFE[\0A\0l\0p\0h\0a\0]\0\r\0\n\0", 20)},
      {"UTF-16BE", std::string("\xFE\xFF\0[\0b\0e\0t\0a\0]\0\n", 16)},
  };
  for (const Start& start : starts) {
    SCOPED_TRACE(start.name);
    std::mt19937 random(7);
    const std::string dir = ::testing::TempDir();
    const String file = fromUtf8(dir + "/orvo_edit_" + std::to_string(::getpid()) + ".ini");
    const platform::NativePath path(file);
    std::ofstream(path.native(), std::ios::binary | std::ios::trunc) << start.bytes;
    clearProfileCache();
    for (int step = 0; step < 60; ++step) {
      const String& section = sections[random() % sections.size()];
      const String& key = keys[random() % keys.size()];
      const String& value = values[random() % values.size()];
      // Now and then a key or a whole section goes: the parse is then made afresh.
      const bool removeKey = step % 7 == 3;
      const bool removeSection = step % 11 == 5;
      ASSERT_TRUE(WritePrivateProfileString(&section, removeSection ? nullptr : &key,
                                            removeKey ? nullptr : &value, file, ProfileForm::Wide));
      const auto kept = cachedDocument(path);
      ASSERT_NE(kept, nullptr);
      std::ifstream in(path.native(), std::ios::binary);
      const Document fresh(std::string(std::istreambuf_iterator<char>(in), {}),
                           kept->ansiCodePage());
      ASSERT_EQ(kept->raw(), fresh.raw()) << "step " << step;
      ASSERT_EQ(test::show(answers(*kept, sections, keys)),
                test::show(answers(fresh, sections, keys)))
          << "step " << step;
      EXPECT_LE(kept->memoryUse(), std::max<std::size_t>(4 * kept->raw().size(), 64 << 10));
    }
    std::remove(path.native().c_str());
  }
}

// Which parses a writer can move along: those whose text follows the bytes unit for unit.
TEST(ProfileEdits, OnlyTextThatFollowsTheBytesIsMovedAlong) {
  struct Case {
    const char* file;
    std::string bytes;
    std::uint32_t codePage;
    String replacement;  // for "k=v", the second line
    bool moved;
  };
  const Case cases[] = {
      {"ANSI", "[S]\r\nk=v\r\n", 1252, u"k=w", true},
      {"ANSI, a value beyond ASCII", "[S]\r\nk=v\r\n", 1252, u"k=\u00e9", true},
      {"Shift-JIS, ASCII so far", "[S]\r\nk=v\r\n", 932, u"k=w", true},
      {"Shift-JIS, a value beyond ASCII", "[S]\r\nk=v\r\n", 932, u"k=\u8868", false},
      {"Shift-JIS text", "[S]\r\nk=\x95\x5C\r\n", 932, u"k=w", false},
      {"UTF-8", "\xEF\xBB\xBF[S]\r\nk=v\r\n", 1252, u"k=\u8868", true},
      {"UTF-16LE", std::string("\xFF\xFE[\0S\0]\0\r\0\n\0k\0=\0v\0", 18), 1252, u"k=\u8868", true},
      {"UTF-16LE ending in half a unit", std::string("\xFF\xFE[\0S\0]\0\r\0\n\0k\0=\0v\0x", 19),
       1252, u"k=w", false},
  };
  for (const Case& c : cases) {
    const Document document(c.bytes, c.codePage);
    const auto section = document.findSection(u"S");
    ASSERT_TRUE(section) << c.file;
    const auto line = document.findKey(*section, u"K");
    ASSERT_TRUE(line) << c.file;
    const std::string bytes = document.encode(c.replacement);
    const auto at = document.bytesOf(*line);
    detail::LineEdit edit;
    edit.at = line->begin;
    edit.removed = line->end - line->begin;
    edit.inserted = c.replacement;
    edit.insertedBytes = bytes;
    const std::string after = c.bytes.substr(0, at.begin) + bytes + c.bytes.substr(at.end);
    EXPECT_EQ(document.canMoveAlong(edit, after.size()), c.moved) << c.file;
    if (!c.moved) continue;
    const auto moved = document.edited(after, edit);
    const auto again = moved->findKey(*moved->findSection(u"S"), u"K");
    ASSERT_TRUE(again) << c.file;
    EXPECT_EQ(moved->text(again->valueBegin, again->valueEnd), c.replacement.substr(2)) << c.file;
  }
}

}  // namespace
}  // namespace orvo::settings::privateprofile
