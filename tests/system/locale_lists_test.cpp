#include "system/locale_lists.hpp"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <vector>

#include "frame/state.hpp"
#include "support/test_support.hpp"
#include "system/locale_queries.hpp"

namespace orvo::system {
namespace {

using test::show;

std::vector<std::int32_t> numbers(const Collection& list) {
  std::vector<std::int32_t> out;
  for (std::int32_t i = 1; i <= list.Count(); ++i) out.push_back(*list.Item(i).get<std::int32_t>());
  return out;
}

std::int32_t itemByKey(const std::shared_ptr<Collection>& list, const String& key) {
  return *list->Item(Variant(key)).get<std::int32_t>();
}

std::shared_ptr<Collection> listOf(const frame::LocaleLists& lists, const String& page) {
  return std::dynamic_pointer_cast<Collection>(
      *lists.localesPerCodePage->Item(Variant(page)).object());
}

// The lists as they are built from the platform's locales on first use.
class BuiltLists : public ::testing::Test {
 protected:
  void SetUp() override { frame::ensureLocaleLists(); }
};

TEST_F(BuiltLists, EveryInstalledLocaleIsInTheListOfItsCodePageOnce) {
  const auto installed = AvailableLCIDs();
  const auto pages = numbers(*AvailableANSICodePages());
  EXPECT_EQ(std::set<std::int32_t>(pages.begin(), pages.end()).size(), pages.size())
      << "each code page once";
  int listed = 0;
  for (const std::int32_t page : pages) {
    const auto locales = LCIDsForCodePage(page);
    ASSERT_NE(locales, nullptr) << page;
    for (const std::int32_t lcid : numbers(*locales)) {
      EXPECT_EQ(LCIDToCodePage(lcid), page) << lcid;
      EXPECT_EQ(itemByKey(installed, numberKey(lcid)), lcid);
      ++listed;
    }
  }
  EXPECT_EQ(listed, installed->Count());
  // The code pages the platform's locales use, all of them met.
  for (const std::int32_t page :
       {0, 874, 932, 936, 949, 950, 1250, 1251, 1252, 1253, 1254, 1255, 1256, 1257, 1258}) {
    EXPECT_NE(std::find(pages.begin(), pages.end(), page), pages.end()) << page;
  }
}

TEST_F(BuiltLists, RepresentativeLocalesAndUnknownCodePages) {
  struct Case {
    std::int32_t page;
    std::int32_t lcid;
  };
  // Code page 0 gathers the Unicode-only locales; the user's locale represents them.
  const Case cases[] = {{1252, 1033}, {932, 1041},  {949, 1042},  {874, 1054},
                        {936, 2052},  {1253, 1032}, {1255, 1037}, {1258, 1066},
                        {0, 1033},    {437, 0},     {65001, 0},   {-1, 0}};
  for (const auto& c : cases) EXPECT_EQ(CodePageToLCID(c.page), c.lcid) << c.page;
  EXPECT_EQ(LCIDsForCodePage(437), nullptr);
  EXPECT_GT(LCIDsForCodePage(0)->Count(), 10);
  // English (United States) comes first for its code page, and that page first of all.
  EXPECT_EQ(*LCIDsForCodePage(1252)->Item(1).get<std::int32_t>(), 1033);
  EXPECT_EQ(*AvailableANSICodePages()->Item(1).get<std::int32_t>(), 1252);
}

TEST_F(BuiltLists, CallersShareTheListsAndTheyAreBuiltOnce) {
  const auto first = AvailableLCIDs();
  EXPECT_EQ(AvailableLCIDs(), first);
  EXPECT_EQ(LCIDsForCodePage(932), LCIDsForCodePage(932));
  // A change by one caller is seen by the next (kept as the original has it).
  const std::int32_t before = first->Count();
  first->Add(Variant(std::int32_t{99999}), u"99999");
  EXPECT_EQ(AvailableLCIDs()->Count(), before + 1);
  first->Remove(u"99999");
  InitialiseLCIDCodePageLists();
  EXPECT_EQ(AvailableLCIDs(), first);
  EXPECT_TRUE(frame::StaticGlobals::instance().localeListsBuilt());
}

// The worker on fresh lists, one order of locales at a time.
TEST(LocaleListsWorker, OrderDecidesTheFirstAndRepresentativeLocales) {
  // "page:lcid,lcid page:lcid" as each page's numbers.
  const auto pages = [](const String& field) {
    std::map<String, std::vector<std::int32_t>> out;
    for (const String& page : test::split(field, u' ')) {
      const auto parts = test::split(page, u':');
      for (const String& n : test::split(parts.at(1), u',')) {
        out[parts[0]].push_back(static_cast<std::int32_t>(test::integerOf(n)));
      }
    }
    return out;
  };
  for (const auto& row : test::readTestData("system/locale_lists_worker.tsv", 4)) {
    SCOPED_TRACE("data line " + std::to_string(row.line));
    frame::LocaleLists lists = newLocaleLists();
    for (const String& lcid : test::split(row.fields[1], u',')) {
      InitialiseLCIDCodePageLists_Worker(lists, static_cast<std::int32_t>(test::integerOf(lcid)));
    }
    const auto perPage = pages(row.fields[2]);
    const auto representative = pages(row.fields[3]);
    EXPECT_EQ(lists.ansiCodePages->Count(), static_cast<std::int32_t>(perPage.size()));
    EXPECT_EQ(lists.firstLocale->Count(), static_cast<std::int32_t>(perPage.size()));
    EXPECT_EQ(lists.representative->Count(), static_cast<std::int32_t>(representative.size()));
    for (const auto& [page, lcids] : perPage) {
      EXPECT_EQ(itemByKey(lists.firstLocale, page), lcids.front()) << show(page);
      EXPECT_EQ(show(numberKey(itemByKey(lists.ansiCodePages, page))), show(page));
      const auto list = listOf(lists, page);
      EXPECT_EQ(numbers(*list), lcids) << show(page);
      for (const std::int32_t lcid : lcids) EXPECT_EQ(itemByKey(list, numberKey(lcid)), lcid);
    }
    for (const auto& [page, lcids] : representative) {
      EXPECT_EQ(itemByKey(lists.representative, page), lcids.at(0)) << show(page);
    }
  }
}

TEST(LocaleListsWorker, ALocaleMetTwiceIsAnErrorHandledByTheWorker) {
  frame::LocaleLists lists = newLocaleLists();
  InitialiseLCIDCodePageLists_Worker(lists, 1033);
  const test::TraceCapture trace;
  const Error e = test::errorOf([&] { InitialiseLCIDCodePageLists_Worker(lists, 1033); });
  EXPECT_EQ(e.number(), 457);
  EXPECT_NE(e.description().find(u"Error handled by InitialiseLCIDCodePageLists_Worker"),
            String::npos);
}

TEST(LocaleListsCallbacks, HexadecimalTextToDecimalKeysOnce) {
  frame::LocaleLists lists = newLocaleLists();
  struct Case {
    const char* text;
    std::int32_t count;  // installed locales after the call
  };
  const Case cases[] = {
      {"00000409", 1}, {"0000040c", 2}, {"0000040C", 2}, {"00010407", 3}, {"00000409", 3}};
  for (const auto& c : cases) {
    EXPECT_TRUE(EnumSystemLocalesProcInstalled(lists, c.text)) << c.text;
    EXPECT_EQ(lists.installed->Count(), c.count) << c.text;
  }
  EXPECT_EQ(numbers(*lists.installed), (std::vector<std::int32_t>{1033, 1036, 66567}));
  EXPECT_EQ(itemByKey(lists.installed, u"66567"), 66567);
  EXPECT_TRUE(EnumSystemLocalesProcSupported(lists, "00000411"));
  EXPECT_EQ(numbers(*lists.supported), (std::vector<std::int32_t>{1041}));
  EXPECT_EQ(lists.installed->Count(), 3);
}

}  // namespace
}  // namespace orvo::system
