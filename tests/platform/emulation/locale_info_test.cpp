#include "platform/locale_info.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "platform/codepage.hpp"
#include "platform/emulation/windows_locale_facts.hpp"
#include "support/test_support.hpp"

namespace orvo::platform {
namespace {

using test::show;

// One recorded GetLocaleInfoW answer.
struct InfoRow {
  std::uint32_t lcid;
  std::uint32_t type;
  String value;
  int line;
};

std::uint32_t hexField(const String& field) { return std::stoul(toUtf8(field), nullptr, 16); }

std::vector<InfoRow> recordedRows(const String& form) {
  std::vector<InfoRow> rows;
  for (const auto& row : test::readGolden("locale_info.tsv")) {
    const auto& f = row.fields;
    if (f.size() != 4 || f[2] != form || f[0] == u"enum" || f[0] == u"process") continue;
    rows.push_back({hexField(f[0]), hexField(f[1]), f[3], row.line});
  }
  return rows;
}

std::set<std::uint32_t> installedLcids() {
  std::set<std::uint32_t> lcids;
  enumSystemLocales(LocaleSet::Installed, [&](std::string_view hex) {
    lcids.insert(std::stoul(std::string(hex), nullptr, 16));
    return true;
  });
  return lcids;
}

String replaceAll(String s, std::u16string_view from, std::u16string_view to) {
  for (auto at = s.find(from); at != String::npos; at = s.find(from, at + to.size())) {
    s.replace(at, from.size(), to);
  }
  return s;
}

// A place where the library's answer differs from the recording. `windows` gives the value
// Windows shows, and the answer is checked against it; a rule without one only counts the
// rows. `pinned` is the number of rows the rule takes, so that a rule that starts taking more
// rows, or a recording that changes, is looked at again.
struct Deviation {
  std::string name;
  std::string reason;
  int pinned;
  std::function<bool(const InfoRow&)> applies;
  std::function<String(const InfoRow&)> windows;
};

const std::map<std::pair<std::uint32_t, std::uint32_t>, String>& windowsPictures() {
  static const std::map<std::pair<std::uint32_t, std::uint32_t>, String> pictures = {
      {{0x0407, 0x1F}, u"dd.MM.yyyy"},
      {{0x0C07, 0x1F}, u"dd.MM.yyyy"},
      {{0x0807, 0x1F}, u"dd.MM.yyyy"},
      {{0x0410, 0x1F}, u"dd/MM/yyyy"},
      {{0x0C0A, 0x1F}, u"dd/MM/yyyy"},
      {{0x0411, 0x1F}, u"yyyy/MM/dd"},
      {{0x0415, 0x1F}, u"dd.MM.yyyy"},
      {{0x0412, 0x1F}, u"yyyy-MM-dd"},
      {{0x0809, 0x20}, u"dd MMMM yyyy"},
      {{0x0C0A, 0x20}, u"dddd, d' de 'MMMM' de 'yyyy"},
      {{0x0411, 0x20}, u"yyyy'\u5e74'M'\u6708'd'\u65e5'"},
      {{0x0804, 0x20}, u"yyyy'\u5e74'M'\u6708'd'\u65e5'"},
      {{0x0419, 0x20}, u"d MMMM yyyy '\u0433.'"},
  };
  return pictures;
}

std::vector<Deviation> deviations() {
  return {
      {"windows-date-pictures",
       "Wine derives its pictures from CLDR; these are the Windows ones the library keeps "
       "(German, Italian, Spanish, Japanese, Polish and Korean short dates, the English (UK), "
       "Spanish, Japanese, Chinese and Russian long dates).",
       13,
       [](const InfoRow& r) {
         return windowsPictures().count({r.lcid, r.type}) != 0;
       },
       [](const InfoRow& r) {
         return windowsPictures().at({r.lcid, r.type});
       }},
      {"narrow-no-break-space-in-dates",
       "Recent CLDR puts U+202F before the year suffix of Cyrillic dates ('\u0433'.); Windows "
       "has an ordinary space there.",
       9,
       [](const InfoRow& r) {
         return (r.type == 0x1F || r.type == 0x20) && r.value.find(u'\u202f') != String::npos;
       },
       [](const InfoRow& r) { return replaceAll(r.value, u"\u202f", u" "); }},
      {"german-abbreviated-days",
       "Windows abbreviates German weekdays without CLDR's period (Mo, not Mo.).", 35,
       [](const InfoRow& r) {
         return (r.lcid & 0x3FF) == 0x07 && r.type >= 0x31 && r.type <= 0x37;
       },
       [](const InfoRow& r) { return replaceAll(r.value, u".", u""); }},
      {"windows-country-names",
       "CLDR's short country names are not Windows' (Bosnia & Herzegovina, Hong Kong SAR "
       "China, Macao SAR China).",
       16,
       [](const InfoRow& r) {
         return (r.type == 0x02 || r.type == 0x1002) &&
                (r.value.find(u"Bosnia & ") != String::npos ||
                 r.value.find(u"SAR China") != String::npos);
       },
       [](const InfoRow& r) {
         return replaceAll(replaceAll(r.value, u"Bosnia & ", u"Bosnia and "), u"SAR China", u"SAR");
       }},
      {"icu-cldr-release",
       "ICU 72 (CLDR 42) has other numeric or long date forms for these locales than the CLDR "
       "release Wine's tables came from; Windows' own pictures were not recorded, so neither "
       "answer is asserted.",
       9,
       [](const InfoRow& r) {
         static const std::set<std::pair<std::uint32_t, std::uint32_t>> rows = {
             {0x0451, 0x1F}, {0x0467, 0x1F}, {0x0867, 0x1F}, {0x0484, 0x1F}, {0x046F, 0x1F},
             {0x046F, 0x20}, {0x0846, 0x1F}, {0x1404, 0x1F}, {0x1404, 0x20}};
         return rows.count({r.lcid, r.type}) != 0;
       },
       nullptr},
  };
}

// Every recorded LCID x LCType that the library answers, against the recording or, where a
// deviation names the row, against Windows. The three-letter abbreviations (3) and the list
// separators (12) come from a table generated from this recording
// (tools/oracle/locale_facts.py), so for those the rows guard the lookup, not the facts.
TEST(LocaleInfoGolden, EveryRecordedValueOfAnInstalledLocale) {
  const test::ScopedLocale english("en_US.UTF-8");
  const auto installed = installedLcids();
  const auto rules = deviations();
  std::map<std::string, int> taken;
  std::map<std::string, int> pinned;
  for (const auto& d : rules) {
    pinned[d.name] = d.pinned;
    taken[d.name] = 0;
  }
  // Recorded types the library does not answer: the currency layout and symbol and the AM/PM
  // designators (CLDR's differ from Windows' too often), and the digit grouping.
  const std::set<std::uint32_t> unanswered = {0x10, 0x14, 0x1B, 0x1C, 0x28, 0x29};
  // The platform's own facts of a locale: language identifier, abbreviation, OEM page, list
  // separator, ANSI page.
  const std::set<std::uint32_t> platformFacts = {0x01, 0x03, 0x0B, 0x0C, 0x1004};
  std::set<std::uint32_t> recordedNotInstalled;
  int checked = 0;
  int factsChecked = 0;
  for (const InfoRow& row : recordedRows(u"W")) {
    const std::string where = "line " + std::to_string(row.line) + ": " + std::to_string(row.lcid) +
                              " type " + std::to_string(row.type);
    const auto answer = localeInfo(row.lcid, row.type);
    if (installed.count(row.lcid) == 0) {
      // Not enumerated, as ICU has no data for it, but answered: the platform's facts as
      // recorded, the rest from ICU's nearest locale.
      recordedNotInstalled.insert(row.lcid);
      ASSERT_EQ(answer.has_value(), unanswered.count(row.type) == 0) << where;
      if (platformFacts.count(row.type) != 0) {
        EXPECT_EQ(show(*answer), show(row.value)) << where;
        ++factsChecked;
      }
      continue;
    }
    if (unanswered.count(row.type) != 0) {
      EXPECT_FALSE(answer.has_value()) << where;
      continue;
    }
    ASSERT_TRUE(answer.has_value()) << where;
    const auto rule = std::find_if(rules.begin(), rules.end(),
                                   [&](const Deviation& d) { return d.applies(row); });
    if (rule == rules.end()) {
      EXPECT_EQ(show(*answer), show(row.value)) << where;
      ++checked;
      continue;
    }
    ++taken[rule->name];
    if (rule->windows) {
      EXPECT_EQ(show(*answer), show(rule->windows(row)))
          << where << " (" << rule->name << ", Wine: " << show(row.value) << ")";
    }
  }
  EXPECT_EQ(taken, pinned);
  // The recording's locales that ICU 72 has no data for under their LCID (Mapudungun,
  // Bashkir, Valencian, Corsican, Inuktitut, Sami, Setswana, ... 35 of 255).
  EXPECT_EQ(recordedNotInstalled.size(), 35U);
  EXPECT_EQ(factsChecked, 5 * 35);
  EXPECT_EQ(checked, 11578);  // of 11,660: 53 answered types x 220 locales
  ::testing::Test::RecordProperty("golden_checked", checked);
}

// The default code pages are a table of facts of their own; they must agree with the
// recording for every recorded LCID, installed here or not.
TEST(LocaleInfoGolden, CodePageFactsOfEveryRecordedLocale) {
  int compared = 0;
  for (const InfoRow& row : recordedRows(u"W")) {
    if (row.type != 0x1004 && row.type != 0x0B) continue;
    const auto pages = emulation::windowsCodePages(row.lcid);
    const auto page = row.type == 0x1004 ? pages.ansi : pages.oem;
    EXPECT_EQ(std::to_string(page), toUtf8(row.value)) << std::hex << row.lcid << " " << row.type;
    ++compared;
  }
  EXPECT_EQ(compared, 2 * 255);
}

TEST(LocaleInfoTest, EnumerationPassesEightHexDigitsAndStopsWhenAsked) {
  std::vector<std::string> seen;
  enumSystemLocales(LocaleSet::Supported, [&](std::string_view hex) {
    seen.emplace_back(hex);
    return seen.size() < 3;
  });
  ASSERT_EQ(seen.size(), 3U);
  for (const auto& hex : seen) {
    EXPECT_EQ(hex.size(), 8U) << hex;
    EXPECT_EQ(hex.find_first_not_of("0123456789ABCDEF"), std::string::npos) << hex;
  }
  const auto installed = installedLcids();
  EXPECT_GE(installed.size(), 200U);
  EXPECT_TRUE(installed.count(0x0409) && installed.count(0x0407) && installed.count(0x0411));
  for (const std::uint32_t lcid : installed) {
    EXPECT_NE(lcid >> 10, 0U) << std::hex << lcid << ": a language-only identifier";
  }
}

// The special identifiers and the flags a caller may add.
TEST(LocaleInfoTest, SpecialLocalesAndFlags) {
  const test::ScopedLocale german("de_DE.UTF-8");
  struct Case {
    std::uint32_t lcid;
    std::uint32_t type;
    std::optional<String> expected;
  };
  const Case cases[] = {
      {kLocaleUserDefault, 0x0E, u","},
      {0, 0x0E, u","},  // LANG_NEUTRAL is the user default
      {kLocaleSystemDefault, 0x5C, u"de-DE"},
      {kLocaleInvariant, 0x01, u"007f"},
      {kLocaleInvariant, 0x1F, u"MM/dd/yyyy"},
      {kLocaleInvariant, 0x38, u"January"},
      {kLocaleInvariant, 0x5C, u""},
      {0x0409, 0x0E | kLocaleNoUserOverride, u"."},
      {0x0409, 0x20000000 | 0x1004, std::nullopt},  // LOCALE_RETURN_NUMBER is not offered
      {0x0409, 0x9999, std::nullopt},
      {0x0009, 0x0E, std::nullopt},  // a language-only identifier
      {0x12345, 0x0E, std::nullopt},
      {0x1000, 0x0E, std::nullopt},  // LOCALE_CUSTOM_UNSPECIFIED
  };
  for (const auto& c : cases) {
    const auto got = localeInfo(c.lcid, c.type);
    EXPECT_EQ(got.has_value(), c.expected.has_value()) << std::hex << c.lcid << " " << c.type;
    if (got && c.expected) {
      EXPECT_EQ(show(*got), show(*c.expected)) << std::hex << c.lcid;
    }
  }
}

TEST(LocaleInfoTest, EightBitFormCountsBytesInTheLocalesCodePage) {
  const test::ScopedLocale english("en_US.UTF-8");
  struct Case {
    std::uint32_t lcid;
    std::uint32_t type;
    std::string bytes;
  };
  const Case cases[] = {
      {0x0411, 0x2A, "\x8C\x8E\x97\x6A\x93\xFA"},                      // 月曜日 in 932
      {0x0419, 0x2A, "\xEF\xEE\xED\xE5\xE4\xE5\xEB\xFC\xED\xE8\xEA"},  // понедельник in 1251
      {0x0419, 0x2A | kLocaleUseCpAcp, std::string(11, '?')},          // in the system's 1252
      {0x0439, 0x1004, "0"},  // Hindi: Unicode-only, so converted with the system's page
      {0x0407, 0x0F, "."},
  };
  for (const auto& c : cases) {
    const int needed = getLocaleInfoA(c.lcid, c.type, nullptr, 0);
    EXPECT_EQ(needed, static_cast<int>(c.bytes.size()) + 1) << std::hex << c.lcid;
    std::string buffer(static_cast<std::size_t>(needed), 'x');
    EXPECT_EQ(getLocaleInfoA(c.lcid, c.type, buffer.data(), needed - 1), 0) << "too small";
    EXPECT_EQ(getLocaleInfoA(c.lcid, c.type, buffer.data(), needed), needed);
    EXPECT_EQ(buffer, c.bytes + '\0') << std::hex << c.lcid;
  }
  EXPECT_EQ(getLocaleInfoA(0x7777, 0x0E, nullptr, 0), 0);
}

TEST(LocaleInfoTest, NamedLocalesIgnoreCase) {
  struct Case {
    const char16_t* name;
    String expected;
  };
  const Case cases[] = {{u"de-DE", u","},      {u"DE-de", u","}, {u"ja-JP", u"."},
                        {u"sr-Latn-RS", u","}, {u"zh-TW", u"."}, {u"", u"."},
                        {u"de_DE", u""},       {u"xx-XX", u""},  {u"en", u""}};
  for (const auto& c : cases) {
    char16_t buffer[8] = {};
    const int n = getLocaleInfoEx(c.name, 0x0E, buffer, 8);
    EXPECT_EQ(n == 0 ? String() : String(buffer, static_cast<std::size_t>(n - 1)), c.expected)
        << show(c.name);
  }
}

// The system side (code page, system LCID) follows LC_CTYPE, the user side LC_NUMERIC; the
// code page can be forced.
TEST(LocaleInfoTest, DefaultsFollowTheirLocaleCategoriesAndTheOverride) {
  struct Case {
    const char* lcCtype;
    const char* lcNumeric;
    const char* forced;
    std::uint32_t system;
    std::uint32_t user;
    std::uint32_t acp;
  };
  const Case cases[] = {
      {"ru_RU.UTF-8", "de_DE.UTF-8", nullptr, 0x0419, 0x0407, 1251},
      {"ja_JP", "C", nullptr, 0x0411, 0x0409, 932},
      {"hi_IN", "hi_IN", nullptr, 0x0439, 0x0439, 1252},  // Unicode-only: the Western page
      {"en_AE", "en_AE", nullptr, 0x0409, 0x0409, 1252},  // no LCID of its own in ICU
      {"POSIX", "xx_YY", nullptr, 0x0409, 0x0409, 1252},
      {"en_US", "en_US", "1251", 0x0409, 0x0409, 1251},
      {"en_US", "en_US", "65001", 0x0409, 0x0409, 65001},
      {"ja_JP", "ja_JP", "437", 0x0411, 0x0411, 932},  // not an ANSI code page: ignored
      {"ja_JP", "ja_JP", "1252x", 0x0411, 0x0411, 932},
  };
  const test::ScopedEnvironment noLcAll("LC_ALL", nullptr);
  for (const auto& c : cases) {
    const test::ScopedEnvironment ctype("LC_CTYPE", c.lcCtype);
    const test::ScopedEnvironment numeric("LC_NUMERIC", c.lcNumeric);
    const test::ScopedEnvironment forced("ORVO_ANSI_CODEPAGE", c.forced);
    EXPECT_EQ(systemDefaultLCID(), c.system) << c.lcCtype;
    EXPECT_EQ(userDefaultLCID(), c.user) << c.lcNumeric;
    EXPECT_EQ(systemAnsiCodePage(), c.acp) << c.lcCtype << " " << (c.forced ? c.forced : "");
  }
}

}  // namespace
}  // namespace orvo::platform
