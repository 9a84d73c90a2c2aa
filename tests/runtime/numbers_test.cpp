#include "runtime/numbers.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <map>

#include "runtime/golden_cases.hpp"
#include "support/test_support.hpp"

namespace orvo::test {
namespace {

using namespace runtime_golden;
namespace rt = orvo::runtime;

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// The default text of Double, Single and Currency values, as recorded.
TEST(NumbersGolden, EveryRecordedNumberRow) {
  std::vector<GoldenCase> numbers = goldenCases("number_to_text.tsv");
  std::erase_if(numbers, [](const GoldenCase& c) { return c.type == "DATE"; });
  runGolden("numbers", numbers, [](const GoldenCase& c) {
    const String& sep = settingsFor(c.locale).decimalSeparator;
    const Variant v = variantFor(c);
    if (c.type == "R8") return rt::doubleToText(*v.get<double>(), sep);
    if (c.type == "R4") return rt::singleToText(*v.get<float>(), sep);
    return rt::currencyToText(*v.get<Currency>(), sep);
  });
}

// Beyond the recording: what the C runtime spells for non-finite values, and a separator of
// several characters.
TEST(NumbersDoubleToText, NonFiniteValuesAndLongSeparators) {
  EXPECT_EQ(show(rt::doubleToText(kInf)), "1.#INF");
  EXPECT_EQ(show(rt::doubleToText(-kInf)), "-1.#INF");
  EXPECT_EQ(show(rt::doubleToText(kNaN)), "1.#QNAN");
  EXPECT_EQ(show(rt::doubleToText(-kNaN)), "-1.#IND");
  EXPECT_EQ(show(rt::doubleToText(1234.5, u"dec")), "1234dec5");
  EXPECT_EQ(show(rt::singleToText(-2.5e-7F, u"dec")), "-2dec5E-07");
}

TEST(NumbersTable, ValRoundingAndConversions) {
  using Args = std::vector<String>;
  const std::map<String, std::function<Variant(const Args&)>> calls = {
      {u"Val", [](const Args& a) { return Variant(rt::Val(a[0])); }},
      {u"CInt", [](const Args& a) { return Variant(rt::CInt(parseHexDouble(a[0]))); }},
      {u"CLng", [](const Args& a) { return Variant(rt::CLng(parseHexDouble(a[0]))); }},
      {u"CByte", [](const Args& a) { return Variant(rt::CByte(parseHexDouble(a[0]))); }},
      {u"CSng", [](const Args& a) { return Variant(rt::CSng(parseHexDouble(a[0]))); }},
      {u"RoundHalfEven",
       [](const Args& a) {
         return Variant(rt::RoundHalfEven(parseHexDouble(a[0]), static_cast<int>(integerOf(a[1]))));
       }},
  };
  for (const auto& row : readTestData("runtime/numbers.tsv", 4)) {
    const Args& f = row.fields;
    expectCall(row, f[3], [&] { return calls.at(f[0])({f[1], f[2]}); });
  }
  EXPECT_TRUE(std::isnan(rt::CSng(kNaN)));
}

}  // namespace
}  // namespace orvo::test
