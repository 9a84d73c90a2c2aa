#include "runtime/numbers.hpp"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <limits>

#include "runtime/golden_cases.hpp"
#include "support/test_support.hpp"

namespace orvo::test {
namespace {

using namespace runtime_golden;
namespace rt = orvo::runtime;

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr std::int64_t kOverflow = INT64_MIN;  // Overflow (6) expected

// The default text of Double, Single and Currency values, as recorded.
TEST(NumbersGolden, EveryRecordedNumberRow) {
  std::vector<GoldenCase> numbers = goldenCases("number_to_text.tsv");
  std::erase_if(numbers, [](const GoldenCase& c) { return c.type == "DATE"; });
  const std::vector<KnownDeviation> deviations = {
      {"wine-exponent-keeps-point",
       "Under 1031 Wine localizes the decimal separator of plain numbers only and leaves the "
       "\".\" of the exponent form (1.5E+20); Windows writes 1,5E+20.",
       317,
       [](const GoldenCase& c) {
         return c.locale == "1031" && c.expected.find(u'E') != String::npos &&
                c.expected.find(u'.') != String::npos;
       },
       [](const GoldenCase& c) {
         String s = c.expected;
         std::replace(s.begin(), s.end(), u'.', u',');
         return s;
       }},
  };
  runGolden(numbers, deviations, [](const GoldenCase& c) {
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

TEST(NumbersVal, ReadsTheLongestNumberPrefix) {
  // Blanks, tabs and line feeds are skipped anywhere, a carriage return ends the number; "E"
  // or "D" exponents, ignored without digits; one sign, one point, no grouping or currency.
  // "&H" and "&O" are typed like literals: 16 bits an Integer, 32 bits a Long.
  const std::pair<const char16_t*, double> table[] = {
      {u"1\r2", 1},        {u"   ", 0},         {u"1a0", 1},         {u"10+", 10},
      {u"1D2", 100},       {u"2.5d-1", 0.25},   {u"1e+x", 1},        {u"12e3.4", 12000},
      {u"-.5", -0.5},      {u"--7", 0},         {u"1.2.3", 1.2},     {u"1,000", 1},
      {u"$5", 0},          {u"1E-512", 0},      {u"&hff", 255},      {u"&H7FFF", 32767},
      {u"&HFFFF", -1},     {u"&H8000", -32768}, {u"&H0000FFFF", -1}, {u"&H10000", 65536},
      {u"&HFFFFFFFF", -1}, {u"&H F F", 255},    {u"&HFFG", 255},     {u"&O17", 15},
      {u"&o177777", -1},   {u"&O8", 0},         {u"&H", 0},          {u"&X10", 0},
      {u"-&H10", 0},
  };
  for (const auto& [text, value] : table) {
    EXPECT_EQ(rt::Val(text), value) << show(text);
  }
  EXPECT_EQ(rt::Val(u"&H80000000"), -2147483648.0);
  EXPECT_EQ(rt::Val(u" \t\n-1 2.5 e1"), -125);
  EXPECT_EQ(rt::Val(u"0.000000000000000000001"), 1e-21);  // all the digits count
  EXPECT_EQ(rt::Val(u"123456789012345678901234567890"), 123456789012345678901234567890.0);
  EXPECT_EQ(rt::Val(u"1.7976931348623157e308"), DBL_MAX);
  for (const char16_t* text : {u"1E512", u"-1e309", u"1.8e308", u"99999999999999999999e300",
                               u"&H100000000", u"&O40000000000"}) {
    EXPECT_EQ(errorNumber([&] { (void)rt::Val(text); }), 6) << show(text);
  }
}

// CInt, CLng and CByte: halves to even, Overflow (6) where the rounded value leaves the range.
TEST(NumbersRounding, IntegersHalvesToEvenAndOverflow) {
  using Cases = const std::pair<double, std::int64_t>[];
  Cases cint = {
      {2.5, 2},           {3.5, 4},
      {-2.5, -2},         {0.5, 0},
      {32766.5, 32766},   {32767.5, kOverflow},
      {-32768.5, -32768}, {-32768.6, kOverflow},
      {kNaN, kOverflow},
  };
  Cases clng = {
      {4.5, 4},
      {-1.5, -2},
      {2147483647.4, 2147483647},
      {2147483647.5, kOverflow},
      {-2147483648.5, -2147483648LL},
      {-2147483649.0, kOverflow},
      {kInf, kOverflow},
  };
  Cases cbyte = {
      {1.5, 2}, {255.4, 255}, {255.5, kOverflow}, {-0.5, 0}, {-0.6, kOverflow},
  };
  auto expectConversions = [](auto convert, const auto& cases) {
    for (const auto& [value, expected] : cases) {
      std::int64_t got = 0;
      const int error = errorNumber([&] { got = convert(value); });
      EXPECT_EQ(error == 0 ? got : error == 6 ? kOverflow : -error, expected) << value;
    }
  };
  expectConversions(rt::CInt, cint);
  expectConversions(rt::CLng, clng);
  expectConversions(rt::CByte, cbyte);
}

TEST(NumbersRounding, SingleOverflowsOnlyBeyondTheLargestSingle) {
  EXPECT_EQ(rt::CSng(-1e-50), -0.0F);
  EXPECT_EQ(rt::CSng(3.4028235e38), FLT_MAX);  // rounds to the largest single, not infinity
  EXPECT_EQ(rt::CSng(-3.4028235e38), -FLT_MAX);
  EXPECT_TRUE(std::isnan(rt::CSng(kNaN)));
  for (const double v : {3.5e38, -1e39, kInf}) {
    EXPECT_EQ(errorNumber([&] { (void)rt::CSng(v); }), 6) << v;
  }
}

// Round judges a half on the 15-digit text: 2.675 is a half and goes to the even 2.68.
TEST(NumbersRounding, RoundHalvesToEvenOnTheDecimalText) {
  struct Case {
    double value;
    int decimals;
    double expected;
  };
  const Case table[] = {{2.5, 0, 2},       {3.5, 0, 4},        {-2.5, 0, -2},
                        {0.125, 2, 0.12},  {0.375, 2, 0.38},   {2.675, 2, 2.68},
                        {1.015, 2, 1.02},  {-1.015, 2, -1.02}, {1234.5678, 3, 1234.568},
                        {-0.4, 0, 0},      {9.995, 2, 10.0},   {123.456, 10, 123.456},
                        {1e300, 2, 1e300}, {0.5, 0, 0}};
  for (const Case& c : table) {
    EXPECT_EQ(rt::RoundHalfEven(c.value, c.decimals), c.expected)
        << c.value << " to " << c.decimals;
  }
  EXPECT_EQ(errorNumber([] { (void)rt::RoundHalfEven(1.5, -1); }), 5);
}

}  // namespace
}  // namespace orvo::test
