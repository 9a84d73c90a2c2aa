#include "platform/locale_info.hpp"

#include <gtest/gtest.h>

#include <map>
#include <optional>
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

// A place where the library's answer differs from the recording: the rule that takes the row
// and the value Windows shows there, checked where it is known.
struct Deviation {
  std::string rule;
  std::optional<String> windows;
};

std::optional<Deviation> deviationOf(const InfoRow& r) {
  static const auto tabled = [] {
    std::map<std::pair<std::uint32_t, std::uint32_t>, Deviation> rows;
    for (const auto& row : test::readTestData("platform/locale_info_deviations.tsv", 4)) {
      const auto& f = row.fields;
      rows[{hexField(f[1]), hexField(f[2])}] = {
          toUtf8(f[0]), test::isNone(f[3]) ? std::nullopt : std::optional(f[3])};
    }
    return rows;
  }();
  if (const auto at = tabled.find({r.lcid, r.type}); at != tabled.end()) return at->second;
  // Recent CLDR puts U+202F before the year suffix of Cyrillic dates; Windows has a space.
  if ((r.type == 0x1F || r.type == 0x20) && r.value.find(u'\u202f') != String::npos) {
    return Deviation{"narrow-no-break-space-in-dates", replaceAll(r.value, u"\u202f", u" ")};
  }
  // Windows abbreviates German weekdays without CLDR's period (Mo, not Mo.).
  if ((r.lcid & 0x3FF) == 0x07 && r.type >= 0x31 && r.type <= 0x37) {
    return Deviation{"german-abbreviated-days", replaceAll(r.value, u".", u"")};
  }
  // CLDR's short country names are not Windows' (Bosnia & Herzegovina, Hong Kong SAR China).
  if ((r.type == 0x02 || r.type == 0x1002) &&
      (r.value.find(u"Bosnia & ") != String::npos || r.value.find(u"SAR China") != String::npos)) {
    return Deviation{
        "windows-country-names",
        replaceAll(replaceAll(r.value, u"Bosnia & ", u"Bosnia and "), u"SAR China", u"SAR")};
  }
  return std::nullopt;
}

// Every recorded LCID x LCType that the library answers, against the recording or, where a
// deviation names the row, against Windows. The three-letter abbreviations (3) and the list
// separators (12) come from a table generated from this recording
// (tools/oracle/locale_facts.py), so for those the rows guard the lookup, not the facts.
TEST(LocaleInfoGolden, EveryRecordedValueOfAnInstalledLocale) {
  const test::ScopedLocale english("en_US.UTF-8");
  const auto installed = installedLcids();
  // The rows each rule takes, pinned so that a rule taking more, or a changed recording, is
  // looked at again.
  const std::map<std::string, int> pinned = {{"windows-date-pictures", 13},
                                             {"narrow-no-break-space-in-dates", 9},
                                             {"german-abbreviated-days", 35},
                                             {"windows-country-names", 16},
                                             {"icu-cldr-release", 9}};
  std::map<std::string, int> taken;
  // Recorded types the library does not answer: the currency layout and symbol and the AM/PM
  // designators (CLDR's differ from Windows' too often), and the digit grouping.
  const std::set<std::uint32_t> unanswered = {0x10, 0x14, 0x1B, 0x1C, 0x28, 0x29};
  // The platform's own facts of a locale: language identifier, abbreviation, OEM page, list
  // separator, ANSI page.
  const std::set<std::uint32_t> platformFacts = {0x01, 0x03, 0x0B, 0x0C, 0x1004};
  std::set<std::uint32_t> recordedNotInstalled;
  int checked = 0;
  int codePageFacts = 0;
  int factsChecked = 0;
  for (const InfoRow& row : recordedRows(u"W")) {
    const std::string where = "line " + std::to_string(row.line) + ": " + std::to_string(row.lcid) +
                              " type " + std::to_string(row.type);
    // The default code pages are a table of facts of their own; they must agree with the
    // recording for every recorded LCID, installed here or not.
    if (row.type == 0x1004 || row.type == 0x0B) {
      const auto pages = emulation::windowsCodePages(row.lcid);
      EXPECT_EQ(std::to_string(row.type == 0x1004 ? pages.ansi : pages.oem), toUtf8(row.value))
          << where;
      ++codePageFacts;
    }
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
    const auto deviation = deviationOf(row);
    if (!deviation) {
      EXPECT_EQ(show(*answer), show(row.value)) << where;
      ++checked;
      continue;
    }
    ++taken[deviation->rule];
    if (deviation->windows) {
      EXPECT_EQ(show(*answer), show(*deviation->windows))
          << where << " (" << deviation->rule << ", Wine: " << show(row.value) << ")";
    }
  }
  EXPECT_EQ(taken, pinned);
  // The recording's locales that ICU 72 has no data for under their LCID (Mapudungun,
  // Bashkir, Valencian, Corsican, Inuktitut, Sami, Setswana, ... 35 of 255).
  EXPECT_EQ(recordedNotInstalled.size(), 35U);
  EXPECT_EQ(factsChecked, 5 * 35);
  EXPECT_EQ(checked, 11578);  // of 11,660: 53 answered types x 220 locales
  EXPECT_EQ(codePageFacts, 2 * 255);
  ::testing::Test::RecordProperty("golden_checked", checked);
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

TEST(LocaleInfoTest, AnswersByIdentifierAndByName) {
  for (const auto& row : test::readTestData("platform/locale_info.tsv", 5)) {
    const auto& f = row.fields;
    SCOPED_TRACE("data line " + std::to_string(row.line));
    const test::ScopedLocale locale(toUtf8(f[0]).c_str());
    const auto type = static_cast<std::uint32_t>(test::integerOf(f[3]));
    if (f[1] == u"getLocaleInfoEx") {
      char16_t buffer[8] = {};
      const int n = getLocaleInfoEx(f[2].c_str(), type, buffer, 8);
      EXPECT_EQ(n == 0 ? String() : String(buffer, static_cast<std::size_t>(n - 1)), f[4]);
      continue;
    }
    const auto lcid = static_cast<std::uint32_t>(test::integerOf(f[2]));
    if (f[1] == u"localeInfo") {
      const auto got = localeInfo(lcid, type);
      EXPECT_EQ(got.has_value(), !test::isNone(f[4]));
      if (got && !test::isNone(f[4])) {
        EXPECT_EQ(show(*got), show(f[4]));
      }
      continue;
    }
    ASSERT_EQ(f[1], u"getLocaleInfoA");
    const int needed = getLocaleInfoA(lcid, type, nullptr, 0);
    if (test::isNone(f[4])) {
      EXPECT_EQ(needed, 0);
      continue;
    }
    const std::string bytes = test::bytesOf(f[4]);
    EXPECT_EQ(needed, static_cast<int>(bytes.size()) + 1);
    std::string buffer(static_cast<std::size_t>(needed), 'x');
    EXPECT_EQ(getLocaleInfoA(lcid, type, buffer.data(), needed - 1), 0) << "too small";
    EXPECT_EQ(getLocaleInfoA(lcid, type, buffer.data(), needed), needed);
    EXPECT_EQ(buffer, bytes + '\0');
  }
}

TEST(LocaleInfoTest, DefaultsFollowTheirLocaleCategoriesAndTheOverride) {
  const test::ScopedEnvironment noLcAll("LC_ALL", nullptr);
  for (const auto& row : test::readTestData("platform/locale_defaults.tsv", 6)) {
    const auto& f = row.fields;
    const test::ScopedEnvironment ctype("LC_CTYPE", f[0]);
    const test::ScopedEnvironment numeric("LC_NUMERIC", f[1]);
    const test::ScopedEnvironment forced("ORVO_ANSI_CODEPAGE", f[2]);
    EXPECT_EQ(systemDefaultLCID(), test::integerOf(f[3])) << "data line " << row.line;
    EXPECT_EQ(userDefaultLCID(), test::integerOf(f[4])) << "data line " << row.line;
    EXPECT_EQ(systemAnsiCodePage(), test::integerOf(f[5])) << "data line " << row.line;
  }
}

}  // namespace
}  // namespace orvo::platform
