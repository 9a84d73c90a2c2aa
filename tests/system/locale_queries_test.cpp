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
  std::set<std::int32_t> lcids;
  const auto list = AvailableLCIDs();
  for (std::int32_t i = 1; i <= list->Count(); ++i)
    lcids.insert(*list->Item(i).get<std::int32_t>());
  return lcids;
}

// The recorded 8-bit answers (language identifier and ANSI code page, both plain ASCII) of
// every recorded locale, enumerated or not; and the recorded answers by name.
TEST(LocaleQueriesGolden, EightBitAndNamedAnswersOfEveryRecordedLocale) {
  const test::ScopedLocale english("en_US.UTF-8");
  const auto lcids = installed();
  int compared = 0;
  int unanswered = 0;
  int named = 0;
  for (const auto& row : test::readGolden("locale_info.tsv")) {
    const auto& f = row.fields;
    if (f.size() != 4 || (f[2] != u"A" && f[2] != u"Ex")) continue;
    const auto type = static_cast<std::int32_t>(std::stoul(toUtf8(f[1]), nullptr, 16));
    if (f[2] == u"Ex") {
      // A failed call (<err=87> for xx-XX) is empty text.
      const String expected = f[3].starts_with(u"<err=") ? String() : f[3];
      const String name = f[0] == u"<null>" ? String(u"0") : f[0];
      EXPECT_EQ(show(GetUserLocaleInfoEx(type, name)), show(expected)) << "line " << row.line;
      ++named;
      continue;
    }
    const auto lcid = static_cast<std::int32_t>(std::stoul(toUtf8(f[0]), nullptr, 16));
    // Every locale Windows knows answers as recorded, those ICU has no data for among them.
    EXPECT_EQ(show(GetUserLocaleInfo(type, lcid)), show(f[3])) << "line " << row.line;
    if (type == 0x1004) {
      EXPECT_EQ(LCIDToCodePage(lcid), std::stoi(toUtf8(f[3]))) << lcid;
    }
    ++compared;
    unanswered += lcids.count(lcid) == 0 ? 1 : 0;
  }
  EXPECT_EQ(compared, 2 * 255);
  EXPECT_EQ(unanswered, 2 * 35) << "recorded locales that are not enumerated";
  EXPECT_EQ(named, 12);
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

TEST(LocaleQueriesTest, AnswersUnderEachLocale) {
  for (const auto& row : test::readTestData("system/locale_queries.tsv", 6)) {
    const auto& f = row.fields;
    const test::ScopedLocale scoped(toUtf8(f[0]).c_str());
    const test::ScopedEnvironment forced("ORVO_ANSI_CODEPAGE", f[1]);
    const auto number = [&](int i) { return static_cast<std::int32_t>(test::integerOf(f[i])); };
    String got = u"unknown query";
    if (f[2] == u"GetUserLocaleInfo") got = GetUserLocaleInfo(number(4), number(3));
    if (f[2] == u"GetUserLocaleInfoEx") got = GetUserLocaleInfoEx(number(4), f[3]);
    if (f[2] == u"LCIDToCodePage") got = fromUtf8(std::to_string(LCIDToCodePage(number(3))));
    if (f[2] == u"GetDecimalSeparator") got = GetDecimalSeparator();
    if (f[2] == u"GetListSeparator") got = GetListSeparator();
    if (f[2] == u"GetThousandSeparator") got = GetThousandSeparator();
    EXPECT_EQ(show(got), show(f[5])) << "data line " << row.line;
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
