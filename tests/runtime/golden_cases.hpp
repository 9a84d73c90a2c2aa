#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "orvogeneric/error.hpp"
#include "orvogeneric/variant.hpp"
#include "platform/locale.hpp"
#include "runtime/dates.hpp"
#include "support/test_support.hpp"

// Rows recorded from the platform, and the table of places where the recording machine (Wine)
// is known or very likely to answer differently from Windows.
namespace orvo::test::runtime_golden {

struct GoldenCase {
  std::string locale;  // LCID as recorded: "1033", "1031"
  std::string type;    // R8, R4, CY, DATE, I2, I4, BSTR, BOOL, EMPTY, NULL
  String input;
  String format;  // format.tsv only
  String expected;
  int line = 0;
};

// number_to_text.tsv: locale, type, input, expected; format.tsv has the format before expected.
inline std::vector<GoldenCase> goldenCases(const std::string& file) {
  const bool withFormat = file == "format.tsv";
  std::vector<GoldenCase> cases;
  for (const GoldenRow& row : readGolden(file)) {
    const std::vector<String>& f = row.fields;
    cases.push_back({toUtf8(f.at(0)), toUtf8(f.at(1)), f.at(2), withFormat ? f.at(3) : String(),
                     f.at(withFormat ? 4 : 3), row.line});
  }
  return cases;
}

inline const platform::RegionalSettings& settingsFor(const std::string& lcid) {
  static const auto en = platform::regionalSettingsFor("en_US");
  static const auto de = platform::regionalSettingsFor("de_DE");
  if (lcid == "1033") return *en;
  if (lcid == "1031") return *de;
  throw std::runtime_error("golden row for an unexpected LCID " + lcid);
}

inline Variant variantFor(const GoldenCase& c) { return typedValue(c.type, c.input); }

// A date as the data files write it: "year month day hour minute second".
inline String datePartsOf(Date date) {
  const runtime::DateParts p = runtime::splitDate(date);
  std::string text = std::to_string(p.year);
  for (const int part : {p.month, p.day, p.hour, p.minute, p.second}) {
    text += " " + std::to_string(part);
  }
  return fromUtf8(text);
}

// The run-time error callers see for a recorded failure: E_INVALIDARG is 5, DISP_E_OVERFLOW 6.
inline int expectedErrorNumber(const String& expected) {
  if (expected.rfind(u"<hr=", 0) != 0) return 0;
  if (expected == u"<hr=0x80070057>") return 5;
  if (expected == u"<hr=0x8002000a>" || expected == u"<hr=0x8002000A>") return 6;
  return -1;
}

// Runs every case through `actual` and checks it against the recording or, for the rows
// wine_deviations.tsv lists for `test`, against what Windows shows there. Error rows expect the
// numbered error.
template <class Actual>
void runGolden(const std::string& test, const std::vector<GoldenCase>& cases, Actual actual) {
  ASSERT_FALSE(cases.empty());
  using Key = std::vector<String>;  // locale, type, input, format
  std::map<Key, GoldenRow> deviations;
  std::map<Key, int> taken;
  for (const GoldenRow& row : readTestData("runtime/wine_deviations.tsv", 7)) {
    if (toUtf8(row.fields[0]) != test) continue;
    const Key key(row.fields.begin() + 1, row.fields.begin() + 5);
    deviations[key] = row;
    taken[key] = 0;
  }
  int checked = 0;
  for (const GoldenCase& c : cases) {
    const Key key = {fromUtf8(c.locale), fromUtf8(c.type), c.input, c.format};
    const auto d = deviations.find(key);
    const bool deviates = d != deviations.end();
    const std::string where =
        "line " + std::to_string(c.line) + ": " + c.locale + " " + c.type + " [" + show(c.input) +
        "] [" + show(c.format) + "]" +
        (deviates ? " (" + toUtf8(d->second.fields[5]) + ", Wine: " + show(c.expected) + ")" : "");
    const int error = deviates ? 0 : expectedErrorNumber(c.expected);
    String got;
    int raised = 0;
    try {
      got = actual(c);
    } catch (const Error& e) {
      raised = e.number();
    }
    EXPECT_EQ(raised, error) << where << ", got [" << show(got) << "]";
    deviates ? ++taken[key] : ++checked;
    const String& want = deviates ? d->second.fields[6] : c.expected;
    if (raised == 0 && error == 0 && want != u"<skipped>") {
      EXPECT_EQ(show(got), show(want)) << where;
    }
  }
  for (const auto& [key, count] : taken) {
    EXPECT_GT(count, 0) << "wine_deviations.tsv line " << deviations[key].line
                        << " is not in the recording";
  }
  ::testing::Test::RecordProperty("golden_checked", checked);
  ::testing::Test::RecordProperty("golden_wine_deviations",
                                  static_cast<int>(cases.size()) - checked);
}

}  // namespace orvo::test::runtime_golden
