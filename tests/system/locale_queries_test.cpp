#include "system/locale_queries.hpp"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>

#include "frame/state.hpp"
#include "orvogeneric/automation.hpp"
#include "orvogeneric/classes.hpp"
#include "platform/locale_info.hpp"
#include "support/test_support.hpp"

namespace orvo::system {
namespace {

using test::show;

std::set<std::int32_t> installed() {
  frame::main();
  std::set<std::int32_t> lcids;
  const auto list = AvailableLCIDs();
  for (std::int32_t i = 1; i <= list->Count(); ++i)
    lcids.insert(*list->Item(i).get<std::int32_t>());
  return lcids;
}

// The recorded 8-bit answers (language identifier and ANSI code page, both plain ASCII) of
// every recorded locale, those ICU has no data for among them.
TEST(LocaleQueriesGolden, EightBitAnswersOfEveryRecordedLocale) {
  const test::ScopedLocale english("en_US.UTF-8");
  const auto lcids = installed();
  std::set<std::int32_t> recorded;
  for (const auto& row : test::readGolden("locale_info.tsv")) {
    const auto& f = row.fields;
    if (f.size() != 4 || f[2] != u"A") continue;
    const auto lcid = static_cast<std::int32_t>(std::stoul(toUtf8(f[0]), nullptr, 16));
    const auto type = static_cast<std::int32_t>(std::stoul(toUtf8(f[1]), nullptr, 16));
    EXPECT_EQ(show(GetUserLocaleInfo(type, lcid)), show(f[3])) << "line " << row.line;
    if (type == 0x1004) {
      EXPECT_EQ(LCIDToCodePage(lcid), std::stoi(toUtf8(f[3]))) << lcid;
    }
    recorded.insert(lcid);
  }
  EXPECT_EQ(recorded.size(), 255U);
  int withoutIcuData = 0;
  for (const std::int32_t lcid : recorded) withoutIcuData += lcids.count(lcid) == 0 ? 1 : 0;
  EXPECT_EQ(withoutIcuData, 35) << "recorded locales answered though not enumerated";
}

TEST(LocaleQueriesGolden, NamedLocaleAnswers) {
  const test::ScopedLocale english("en_US.UTF-8");
  int compared = 0;
  for (const auto& row : test::readGolden("locale_info.tsv")) {
    const auto& f = row.fields;
    if (f.size() != 4 || f[2] != u"Ex") continue;
    const String name = f[0] == u"<null>" ? String(u"0") : f[0];
    const auto type = static_cast<std::int32_t>(std::stoul(toUtf8(f[1]), nullptr, 16));
    // A failed call (<err=87> for xx-XX) is empty text.
    const String expected = f[3].starts_with(u"<err=") ? String() : f[3];
    EXPECT_EQ(show(GetUserLocaleInfoEx(type, name)), show(expected)) << "line " << row.line;
    ++compared;
  }
  EXPECT_EQ(compared, 12);
}

TEST(LocaleQueriesGolden, ProcessDefaultsUnderEachRecordedLocale) {
  std::map<std::string, std::map<std::string, std::string>> recorded;
  for (const auto& row : test::readGolden("locale_info.tsv")) {
    if (row.fields.size() == 4 && row.fields[0] == u"process") {
      recorded[toUtf8(row.fields[1])][toUtf8(row.fields[2])] = toUtf8(row.fields[3]);
    }
  }
  ASSERT_EQ(recorded.size(), 15U);
  for (const auto& [locale, values] : recorded) {
    const test::ScopedLocale scoped(locale.c_str());
    EXPECT_EQ(GetLCIDSystemDefault(), std::stoi(values.at("GetSystemDefaultLCID"), nullptr, 16))
        << locale;
    EXPECT_EQ(GetLCIDUserDefault(), std::stoi(values.at("GetUserDefaultLCID"), nullptr, 16))
        << locale;
    EXPECT_EQ(GetWindowsCodePage(), std::stoi(values.at("GetACP"))) << locale;
    EXPECT_EQ(LCIDToCodePage(GetLCIDUserDefault()), GetWindowsCodePage()) << locale;
    EXPECT_EQ(show(GetUserLocaleInfo(0x5C, 1024)),
              show(fromUtf8(values.at("GetUserDefaultLocaleName"))))
        << locale;
  }
}

// The 8-bit text comes back the way the host reads it: the locale's code page on the way
// out, the system's on the way back.
TEST(LocaleQueriesTest, EightBitTextAsTheHostReadsItBack) {
  struct Case {
    const char* locale;
    const char* forcedCodePage;
    std::int32_t lcid;
    std::int32_t type;
    String expected;
  };
  const Case cases[] = {
      {"ru_RU.UTF-8", nullptr, 1049, 0x2A,
       u"\u043f\u043e\u043d\u0435\u0434\u0435\u043b\u044c\u043d\u0438\u043a"},
      {"en_US.UTF-8", nullptr, 1049, 0x2A,
       u"\u00ef\u00ee\u00ed\u00e5\u00e4\u00e5\u00eb\u00fc\u00ed\u00e8\u00ea"},
      {"en_US.UTF-8", "1251", 1049, 0x2A,
       u"\u043f\u043e\u043d\u0435\u0434\u0435\u043b\u044c\u043d\u0438\u043a"},
      {"en_US.UTF-8", nullptr, 1041, 0x2A, u"\u0152\u017d\u2014j\u201c\u00fa"},
      // On a double-byte system the text is shorter than its byte count, and the count's
      // n - 1 characters take in the terminating NUL.
      {"ja_JP.UTF-8", nullptr, 1041, 0x2A, String(u"\u6708\u66dc\u65e5") + u'\0'},
      {"ja_JP.UTF-8", nullptr, 1041, 0x0E, u"."},
      {"fr_FR.UTF-8", nullptr, 1024, 0x0F, u"\u00a0"},
      {"en_US.UTF-8", nullptr, 0x7777, 0x0E, u""},
      {"en_US.UTF-8", nullptr, 1033, 0x7777, u""},
      {"en_US.UTF-8", nullptr, 127, 0x02, u"Invariant Language (Invariant Country)"},
  };
  for (const auto& c : cases) {
    const test::ScopedLocale scoped(c.locale);
    const test::ScopedEnvironment forced("ORVO_ANSI_CODEPAGE", c.forcedCodePage);
    EXPECT_EQ(show(GetUserLocaleInfo(c.type, c.lcid)), show(c.expected))
        << c.locale << " " << c.lcid << " " << c.type;
  }
}

TEST(LocaleQueriesTest, TheUsersSeparators) {
  struct Case {
    const char* locale;
    String decimal;
    String list;
    String thousand;
  };
  const Case cases[] = {
      {"en_US.UTF-8", u".", u",", u","},      {"de_DE.UTF-8", u",", u";", u"."},
      {"fr_FR.UTF-8", u",", u";", u"\u00a0"}, {"ja_JP.UTF-8", u".", u",", u","},
      {"ar_SA.UTF-8", u".", u";", u","},      {"C", u".", u",", u","},
  };
  for (const auto& c : cases) {
    const test::ScopedLocale scoped(c.locale);
    EXPECT_EQ(show(GetDecimalSeparator()), show(c.decimal)) << c.locale;
    EXPECT_EQ(show(GetListSeparator()), show(c.list)) << c.locale;
    EXPECT_EQ(show(GetThousandSeparator()), show(c.thousand)) << c.locale;
  }
}

TEST(LocaleQueriesTest, CodePageOfALocale) {
  const test::ScopedLocale russian("ru_RU.UTF-8");
  struct Case {
    std::int32_t lcid;
    std::int32_t page;
  };
  const Case cases[] = {{1033, 1252},
                        {1041, 932},
                        {2052, 936},
                        {1028, 950},
                        {1049, 1251},
                        {1081, 0},
                        {127, 1252},
                        {1024, 1251},
                        {2048, 1251},
                        {0x7777, 0},
                        {-1, 0},
                        // alternate sorts answer as their locale; a sort the language lacks
                        // is no locale
                        {0x10407, 1252},
                        {0x10411, 932},
                        {0x40411, 932},
                        {0x20804, 936},
                        {0x1040E, 1250},
                        {0x10437, 0},
                        {0x10409, 0},
                        {0x20407, 0},
                        {0x110407, 0},
                        // Serbian of the former Serbia and Montenegro
                        {0x081A, 1250},
                        {0x0C1A, 1251},
                        {0x181A, 1250},
                        {0x1C1A, 1251}};
  for (const auto& c : cases) EXPECT_EQ(LCIDToCodePage(c.lcid), c.page) << c.lcid;
}

TEST(LocaleQueriesTest, NamedLocalesAndTheBuffer) {
  const test::ScopedLocale german("de_DE.UTF-8");
  struct Case {
    String name;
    std::int32_t type;
    String expected;
  };
  const Case cases[] = {
      {u"0", 0x0E, u","},
      {u"en-US", 0x0E, u"."},
      {u"en-US", 0x02, u"English (United States)"},
      {String(u"ja-JP") + u'\0' + u"xx", 0x1004, u"932"},  // the name ends at a NUL
      {u"!x-sys-default-locale", 0x5C, u"de-DE"},
      {u"", 0x1004, u"1252"},
      {u"en-US ", 0x0E, u""},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(show(GetUserLocaleInfoEx(c.type, c.name)), show(c.expected)) << show(c.name);
  }
}

// The class through late binding: the declared default locale, and "no object" for a code
// page that no installed locale uses.
TEST(SystemUtilitiesTest, MembersThroughAutomation) {
  const test::ScopedLocale german("de_DE.UTF-8");
  SystemUtilities system;
  auto r = automation::invoke(system, "GetUserLocaleInfo", {Variant(std::int32_t{0x0E})});
  EXPECT_EQ(*r.result.get<String>(), u",");
  r = automation::invoke(system, "LCIDsForCodePage", {Variant(std::int32_t{437})});
  const auto* object = r.result.object();
  ASSERT_NE(object, nullptr);
  EXPECT_EQ(*object, nullptr);
  r = automation::invoke(system, "LCIDsForCodePage", {Variant(std::int32_t{1251})});
  ASSERT_NE(r.result.object(), nullptr);
  EXPECT_EQ((*r.result.object())->className(), "Collection");
  EXPECT_EQ(system.AvailableANSICodePages(), AvailableANSICodePages());
  EXPECT_EQ(system.CodePageToLCID(1251), CodePageToLCID(1251));
}

}  // namespace
}  // namespace orvo::system
