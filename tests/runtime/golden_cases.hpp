#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <map>
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

inline std::vector<GoldenCase> numberToTextCases() {
  std::vector<GoldenCase> cases;
  for (const GoldenRow& row : readGolden("number_to_text.tsv")) {
    cases.push_back({toUtf8(row.fields.at(0)),
                     toUtf8(row.fields.at(1)),
                     row.fields.at(2),
                     {},
                     row.fields.at(3),
                     row.line});
  }
  return cases;
}

inline std::vector<GoldenCase> formatCases() {
  std::vector<GoldenCase> cases;
  for (const GoldenRow& row : readGolden("format.tsv")) {
    cases.push_back({toUtf8(row.fields.at(0)), toUtf8(row.fields.at(1)), row.fields.at(2),
                     row.fields.at(3), row.fields.at(4), row.line});
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

// "<hr=0x80070057>" (E_INVALIDARG) is what the platform's callers see as run-time error 5.
inline int expectedErrorNumber(const GoldenCase& c) {
  if (c.expected == u"<hr=0x80070057>") return 5;
  if (c.expected == u"<hr=0x8002000a>" || c.expected == u"<hr=0x8002000A>") return 6;
  if (c.expected.rfind(u"<hr=", 0) == 0) return -1;
  return 0;
}

// A place where the recording differs from Windows. `windows` gives what Windows shows for the
// row (derived from the recorded answer or from the calendar), and the row is checked against
// it; rules without one are only skipped.
struct KnownDeviation {
  std::string name;
  std::string reason;
  std::function<bool(const GoldenCase&)> applies;
  std::function<String(const GoldenCase&)> windows;
};

struct GoldenTally {
  int checked = 0;
  std::map<std::string, int> deviations;
  [[nodiscard]] int deviated() const {
    int n = 0;
    for (const auto& [name, count] : deviations) n += count;
    return n;
  }
};

// Runs every case through `actual` and checks it against the recording or, where a deviation
// applies, against Windows' answer. Error rows expect the numbered error.
template <class Actual>
GoldenTally runGolden(const std::vector<GoldenCase>& cases,
                      const std::vector<KnownDeviation>& deviations, Actual actual) {
  GoldenTally tally;
  for (const GoldenCase& c : cases) {
    const KnownDeviation* deviation = nullptr;
    for (const KnownDeviation& d : deviations) {
      if (d.applies(c)) {
        deviation = &d;
        break;
      }
    }
    const std::string where = "line " + std::to_string(c.line) + ": " + c.locale + " " + c.type +
                              " [" + show(c.input) + "] [" + show(c.format) + "]";
    const int error = expectedErrorNumber(c);
    if (deviation == nullptr && error != 0) {
      ++tally.checked;
      try {
        const String got = actual(c);
        ADD_FAILURE() << where << ": expected error " << error << ", got [" << show(got) << "]";
      } catch (const Error& e) {
        EXPECT_EQ(e.number(), error) << where;
      }
      continue;
    }
    String got;
    try {
      got = actual(c);
    } catch (const Error& e) {
      ADD_FAILURE() << where << ": raised " << e.number();
      continue;
    }
    if (deviation != nullptr) {
      ++tally.deviations[deviation->name];
      if (deviation->windows) {
        EXPECT_EQ(show(got), show(deviation->windows(c)))
            << where << " (Wine: [" << show(c.expected) << "], " << deviation->name << ")";
      }
      continue;
    }
    ++tally.checked;
    EXPECT_EQ(show(got), show(c.expected)) << where;
  }
  return tally;
}

inline String replaceAll(String s, char16_t from, char16_t to) {
  for (char16_t& c : s) {
    if (c == from) c = to;
  }
  return s;
}

inline bool contains(const String& s, std::u16string_view what) {
  return s.find(what) != String::npos;
}

// Windows writes the German short date as dd.MM.yyyy where the recording has d.M.yyyy:
// "5.1.2026 04:53:11" becomes "05.01.2026 04:53:11".
inline String padGermanShortDates(const String& s) {
  auto isDigit = [](char16_t c) { return c >= u'0' && c <= u'9'; };
  String out;
  std::size_t i = 0;
  while (i < s.size()) {
    std::size_t j = i;
    std::vector<String> fields;
    while (fields.size() < 3) {
      std::size_t k = j;
      while (k < s.size() && isDigit(s[k])) ++k;
      if (k == j) break;
      fields.emplace_back(s.substr(j, k - j));
      j = k;
      if (fields.size() < 3) {
        if (j >= s.size() || s[j] != u'.') break;
        ++j;
      }
    }
    const bool atStart = i == 0 || !isDigit(s[i - 1]);
    if (atStart && fields.size() == 3 && fields[0].size() <= 2 && fields[1].size() <= 2) {
      for (int f = 0; f < 2; ++f) {
        out += fields[f].size() == 1 ? u"0" + fields[f] : fields[f];
        out += u'.';
      }
      out += fields[2];
      i = j;
    } else {
      out += s[i++];
    }
  }
  return out;
}

}  // namespace orvo::test::runtime_golden
