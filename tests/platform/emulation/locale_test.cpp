#include "platform/locale.hpp"

#include <gtest/gtest.h>

#include <string>

#include "support/test_support.hpp"

namespace orvo::platform {
namespace {

using test::show;

TEST(LocaleTest, UserLocaleComesFromTheEnvironmentInPosixOrder) {
  for (const auto& row : test::readTestData("platform/user_locale.tsv", 4)) {
    const test::ScopedEnvironment lcAll("LC_ALL", row.fields[0]);
    const test::ScopedEnvironment lcNumeric("LC_NUMERIC", row.fields[1]);
    const test::ScopedEnvironment lang("LANG", row.fields[2]);
    EXPECT_EQ(fromUtf8(userLocaleName()), row.fields[3]) << "data line " << row.line;
  }
}

// The values the Windows platform gives for these locales (recorded under Wine, whose data is
// CLDR-derived; where Windows itself differs the Windows value is asserted and Wine's ignored).
TEST(LocaleTest, RegionalValuesMatchThePlatform) {
  const auto rows = test::readGolden("locale_numbers.tsv");
  struct Want {
    const char* locale;
    std::uint32_t lcid;
  };
  const Want locales[] = {{"en_US", 1033}, {"de_DE", 1031}, {"fr_FR", 1036}, {"ja_JP", 1041},
                          {"zh_CN", 2052}, {"en_GB", 2057}, {"it_IT", 1040}};
  int compared = 0;
  for (const auto& want : locales) {
    const auto rs = regionalSettingsFor(want.locale);
    EXPECT_EQ(rs->lcid, want.lcid) << want.locale;
    for (const auto& row : rows) {
      if (row.fields[0] != fromUtf8(std::to_string(want.lcid))) continue;
      const std::string type = toUtf8(row.fields[1]);
      const String& value = row.fields[2];
      const String* mine = nullptr;
      if (type == "LOCALE_SDECIMAL") mine = &rs->decimalSeparator;
      if (type == "LOCALE_SMONTHNAME1") mine = &rs->monthNames[0];
      if (type == "LOCALE_SMONTHNAME12") mine = &rs->monthNames[11];
      if (type == "LOCALE_SABBREVMONTHNAME3") mine = &rs->abbrevMonthNames[2];
      if (type == "LOCALE_SABBREVMONTHNAME11") mine = &rs->abbrevMonthNames[10];
      if (type == "LOCALE_SDAYNAME7") mine = &rs->dayNames[0];  // the platform counts from Monday
      if (type == "LOCALE_STIMEFORMAT") mine = &rs->timeFormat;
      if (type == "LOCALE_IDEFAULTANSICODEPAGE") {
        EXPECT_EQ(fromUtf8(std::to_string(rs->ansiCodePage)), value) << want.locale;
        ++compared;
      }
      if (mine != nullptr) {
        EXPECT_EQ(show(*mine), show(value)) << want.locale << " " << type;
        ++compared;
      }
    }
  }
  EXPECT_GE(compared, 40);
}

TEST(LocaleTest, WindowsDatePicturesWinOverCldr) {
  // Wine's CLDR data says d.M.yyyy for German; Windows uses dd.MM.yyyy.
  EXPECT_EQ(show(regionalSettingsFor("de_DE")->shortDate), "dd.MM.yyyy");
  EXPECT_EQ(show(regionalSettingsFor("en_US")->shortDate), "M/d/yyyy");
  EXPECT_EQ(show(regionalSettingsFor("en_US")->longDate), "dddd, MMMM d, yyyy");
  EXPECT_EQ(show(regionalSettingsFor("de_DE")->thousandSeparator), ".");
  EXPECT_EQ(regionalSettingsFor("no_such_locale")->decimalSeparator, u".");
}

}  // namespace
}  // namespace orvo::platform
