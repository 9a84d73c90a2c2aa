#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <map>
#include <regex>
#include <string>
#include <vector>

#include "orvogeneric/error.hpp"
#include "orvogeneric/variant.hpp"
#include "platform/locale.hpp"
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

inline Variant variantFor(const GoldenCase& c) {
  const std::string text = toUtf8(c.input);
  if (c.type == "R8") return Variant(parseHexDouble(c.input));
  if (c.type == "R4") return Variant(static_cast<float>(parseHexDouble(c.input)));
  if (c.type == "DATE") return Variant(Date{parseHexDouble(c.input)});
  if (c.type == "CY") return Variant(Currency{std::stoll(text)});
  if (c.type == "I2") return Variant(static_cast<std::int16_t>(std::stoi(text)));
  if (c.type == "I4") return Variant(static_cast<std::int32_t>(std::stol(text)));
  if (c.type == "BOOL") return Variant(std::stoi(text) != 0 ? VBool::True : VBool::False);
  if (c.type == "BSTR") return Variant(c.input);
  if (c.type == "EMPTY") return Variant();
  if (c.type == "NULL") return Variant(Null{});
  throw std::runtime_error("golden row of an unexpected type " + c.type);
}

// The run-time error callers see for a recorded failure: E_INVALIDARG is 5, DISP_E_OVERFLOW 6.
inline int expectedErrorNumber(const String& expected) {
  if (expected.rfind(u"<hr=", 0) != 0) return 0;
  if (expected == u"<hr=0x80070057>") return 5;
  if (expected == u"<hr=0x8002000a>" || expected == u"<hr=0x8002000A>") return 6;
  return -1;
}

// A place where the recording differs from Windows. `windows` gives what Windows shows for the
// row (derived from the recorded answer or from the calendar), and the row is checked against
// it; rules without one are only skipped. `pinned` is the number of rows the rule takes, so
// that a rule that starts swallowing more rows, or a recording that changes, is looked at again.
struct KnownDeviation {
  std::string name;
  std::string reason;
  int pinned;
  std::function<bool(const GoldenCase&)> applies;
  std::function<String(const GoldenCase&)> windows;
};

// Runs every case through `actual` and checks it against the recording or, where a deviation
// applies, against Windows' answer. Error rows expect the numbered error.
template <class Actual>
void runGolden(const std::vector<GoldenCase>& cases, const std::vector<KnownDeviation>& deviations,
               Actual actual) {
  ASSERT_FALSE(cases.empty());
  std::map<std::string, int> pinned;
  std::map<std::string, int> taken;
  for (const KnownDeviation& d : deviations) {
    pinned[d.name] = d.pinned;
    taken[d.name] = 0;
  }
  int checked = 0;
  for (const GoldenCase& c : cases) {
    const auto d = std::find_if(deviations.begin(), deviations.end(),
                                [&](const KnownDeviation& k) { return k.applies(c); });
    const bool deviates = d != deviations.end();
    const std::string where =
        "line " + std::to_string(c.line) + ": " + c.locale + " " + c.type + " [" + show(c.input) +
        "] [" + show(c.format) + "]" +
        (deviates ? " (" + d->name + ", Wine: " + show(c.expected) + ")" : "");
    const int error = deviates ? 0 : expectedErrorNumber(c.expected);
    String got;
    int raised = 0;
    try {
      got = actual(c);
    } catch (const Error& e) {
      raised = e.number();
    }
    EXPECT_EQ(raised, error) << where << ", got [" << show(got) << "]";
    deviates ? ++taken[d->name] : ++checked;
    if (raised == 0 && error == 0 && (!deviates || d->windows)) {
      EXPECT_EQ(show(got), show(deviates ? d->windows(c) : c.expected)) << where;
    }
  }
  EXPECT_EQ(taken, pinned);
  ::testing::Test::RecordProperty("golden_checked", checked);
  ::testing::Test::RecordProperty("golden_wine_deviations",
                                  static_cast<int>(cases.size()) - checked);
}

// Windows writes the German short date as dd.MM.yyyy where the recording has d.M.yyyy:
// "5.1.2026 04:53:11" becomes "05.01.2026 04:53:11".
inline String padGermanShortDates(const String& s) {
  static const std::regex day(R"((^|\D)(\d)\.(\d{1,2})\.(\d))");
  static const std::regex month(R"((^|\D)(\d\d)\.(\d)\.(\d))");
  const std::string dayPadded = std::regex_replace(toUtf8(s), day, "$010$2.$3.$4");
  return fromUtf8(std::regex_replace(dayPadded, month, "$01$2.0$3.$4"));
}

}  // namespace orvo::test::runtime_golden
