#include "runtime/numbers.hpp"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <limits>

#include "runtime/convert.hpp"
#include "runtime/golden_cases.hpp"
#include "support/test_support.hpp"

namespace orvo::test {
namespace {

using namespace runtime_golden;
namespace rt = orvo::runtime;

// --- the recording ---------------------------------------------------------------------------

const std::vector<KnownDeviation>& numberDeviations() {
  static const std::vector<KnownDeviation> table = {
      {"wine-exponent-keeps-point",
       "Under 1031 Wine localizes the decimal separator of plain numbers only and leaves the "
       "\".\" of the exponent form (1.5E+20); Windows writes 1,5E+20.",
       [](const GoldenCase& c) {
         return c.locale == "1031" && contains(c.expected, u"E") && contains(c.expected, u".");
       },
       [](const GoldenCase& c) { return replaceAll(c.expected, u'.', u','); }},
  };
  return table;
}

TEST(NumbersGolden, EveryRecordedNumberRow) {
  std::vector<GoldenCase> numbers;
  for (const GoldenCase& c : numberToTextCases()) {
    if (c.type != "DATE") numbers.push_back(c);
  }
  ASSERT_GT(numbers.size(), 1000U);
  const GoldenTally tally = runGolden(numbers, numberDeviations(), [](const GoldenCase& c) {
    const String& sep = settingsFor(c.locale).decimalSeparator;
    const Variant v = variantFor(c);
    if (c.type == "R8") return rt::doubleToText(*v.get<double>(), sep);
    if (c.type == "R4") return rt::singleToText(*v.get<float>(), sep);
    return rt::currencyToText(*v.get<Currency>(), sep);
  });
  const std::map<std::string, int> expected = {{"wine-exponent-keeps-point", 295}};
  EXPECT_EQ(tally.deviations, expected);
  EXPECT_EQ(tally.checked + tally.deviated(), static_cast<int>(numbers.size()));
  RecordProperty("golden_checked", tally.checked);
  RecordProperty("golden_wine_deviations", tally.deviated());
}

// --- default number text ---------------------------------------------------------------------

TEST(NumbersDoubleToText, SignificantDigitsAndExponentForm) {
  struct Case {
    double value;
    const char16_t* text;
  };
  const Case table[] = {
      {0.0, u"0"},
      {-0.0, u"0"},
      {1.0 / 3, u"0.333333333333333"},
      {2.0 / 3, u"0.666666666666667"},
      {0.1 + 0.2, u"0.3"},
      {0.0001, u"0.0001"},
      {0.00001, u"1E-05"},
      {0.000123456, u"0.000123456"},
      {123456789012345.0, u"123456789012345"},
      {999999999999999.0, u"999999999999999"},
      {999999999999999.4, u"999999999999999"},
      {999999999999999.6, u"1E+15"},
      {1234567890123456.0, u"1.23456789012346E+15"},
      {1e15, u"1E+15"},
      {-1e16, u"-1E+16"},
      {1e14, u"100000000000000"},
      {1.5e300, u"1.5E+300"},
      {1e-300, u"1E-300"},
      {DBL_MAX, u"1.79769313486232E+308"},
      {DBL_TRUE_MIN, u"4.94065645841247E-324"},
      {9.99999999999995e-5, u"9.99999999999995E-05"},
      {0.000099999999999999995, u"0.0001"},
      {-2.5, u"-2.5"},
      {1e100, u"1E+100"},
      {std::numeric_limits<double>::infinity(), u"1.#INF"},
      {-std::numeric_limits<double>::infinity(), u"-1.#INF"},
      {std::numeric_limits<double>::quiet_NaN(), u"1.#QNAN"},
      {-std::numeric_limits<double>::quiet_NaN(), u"-1.#IND"},
  };
  for (const Case& c : table) {
    EXPECT_EQ(show(rt::doubleToText(c.value)), show(c.text)) << c.value;
  }
  EXPECT_EQ(show(rt::doubleToText(-2.5, u",")), show(u"-2,5"));
  EXPECT_EQ(show(rt::doubleToText(1.5e-7, u",")), show(u"1,5E-07"));
  EXPECT_EQ(show(rt::doubleToText(1234.5, u"")), show(u"12345"));
  EXPECT_EQ(show(rt::doubleToText(1234.5, u"dec")), show(u"1234dec5"));
}

TEST(NumbersSingleToText, SevenDigits) {
  struct Case {
    float value;
    const char16_t* text;
  };
  const Case table[] = {
      {1.0F / 3, u"0.3333333"},
      {12345678.0F, u"1.234568E+07"},
      {9999999.0F, u"9999999"},
      {0.1F, u"0.1"},
      {FLT_MAX, u"3.402823E+38"},
      {-FLT_TRUE_MIN, u"-1.401298E-45"},
      {0.0001F, u"0.0001"},
      {0.00001F, u"1E-05"},
      {-0.0F, u"0"},
      {16777217.0F, u"1.677722E+07"},
  };
  for (const Case& c : table) {
    EXPECT_EQ(show(rt::singleToText(c.value)), show(c.text)) << c.value;
  }
  EXPECT_EQ(show(rt::singleToText(2.5F, u",")), show(u"2,5"));
}

TEST(NumbersCurrencyToText, FourDecimalsAtMost) {
  struct Case {
    std::int64_t scaled;
    const char16_t* text;
  };
  const Case table[] = {
      {0, u"0"},
      {1, u"0.0001"},
      {-10, u"-0.001"},
      {12345678, u"1234.5678"},
      {10000000, u"1000"},
      {15000, u"1.5"},
      {INT64_MAX, u"922337203685477.5807"},
      {INT64_MIN, u"-922337203685477.5808"},
  };
  for (const Case& c : table) {
    EXPECT_EQ(show(rt::currencyToText(Currency{c.scaled})), show(c.text)) << c.scaled;
  }
  EXPECT_EQ(show(rt::currencyToText(Currency{12345678}, u",")), show(u"1234,5678"));
}

// --- Val -------------------------------------------------------------------------------------

TEST(NumbersVal, ReadsTheLongestNumberPrefix) {
  struct Case {
    const char16_t* text;
    double value;
  };
  const Case table[] = {
      {u"1 0", 10},
      {u" \t\n-1 2.5 e1", -125},
      {u"10+", 10},
      {u"1a0", 1},
      {u"abc", 0},
      {u"", 0},
      {u"   ", 0},
      {u"1e0", 1},
      {u"1E2", 100},
      {u"1D2", 100},
      {u"2.5d-1", 0.25},
      {u"1e", 1},
      {u"1e+", 1},
      {u"1e+x", 1},
      {u".5", 0.5},
      {u"-.5", -0.5},
      {u"+7", 7},
      {u"--7", 0},
      {u"1.2.3", 1.2},
      {u"12e3.4", 12000},
      {u"1,000", 1},
      {u"$5", 0},
      {u"1\r2", 1},
      {u"0.1", 0.1},
      {u"00012", 12},
      {u"0.000000000000000000001", 1e-21},
      {u"123456789012345678901234567890", 123456789012345678901234567890.0},
      {u"1E-512", 0},
      {u"4.9406564584124654e-324", 4.9406564584124654e-324},
      {u"1.7976931348623157e308", DBL_MAX},
      {u"&HFFFF", -1},
      {u"&hff", 255},
      {u"&H7FFF", 32767},
      {u"&H8000", -32768},
      {u"&H10000", 65536},
      {u"&HFFFFFFFF", -1},
      {u"&H80000000", -2147483648.0},
      {u"&H0000FFFF", -1},
      {u"&H F F", 255},
      {u"&HFFG", 255},
      {u"&O17", 15},
      {u"&o177777", -1},
      {u"&O8", 0},
      {u"&H", 0},
      {u"&", 0},
      {u"&X10", 0},
      {u"-&H10", 0},
  };
  for (const Case& c : table) {
    EXPECT_EQ(rt::Val(c.text), c.value) << show(c.text);
  }
}

TEST(NumbersVal, OverflowBeyondTheRange) {
  const char16_t* table[] = {u"1E512",       u"-1e309",        u"1.8e308",
                             u"&H100000000", u"&O40000000000", u"99999999999999999999e300"};
  for (const char16_t* text : table) {
    EXPECT_EQ(errorNumber([&] { (void)rt::Val(text); }), 6) << show(text);
  }
}

// --- rounding conversions --------------------------------------------------------------------

TEST(NumbersCInt, HalvesToEvenAndOverflow) {
  struct Case {
    double value;
    int expected;  // 6 for Overflow when `overflow`
    bool overflow;
  };
  const Case table[] = {
      {2.5, 2, false},           {3.5, 4, false},         {-2.5, -2, false},
      {-3.5, -4, false},         {0.5, 0, false},         {1.5, 2, false},
      {2.4999, 2, false},        {2.5001, 3, false},      {32767.0, 32767, false},
      {32767.5, 0, true},        {32766.5, 32766, false}, {-32768.0, -32768, false},
      {-32768.5, -32768, false}, {-32768.6, 0, true},     {32768.0, 0, true},
      {1e10, 0, true},
  };
  for (const Case& c : table) {
    if (c.overflow) {
      EXPECT_EQ(errorNumber([&] { (void)rt::CInt(c.value); }), 6) << c.value;
    } else {
      EXPECT_EQ(rt::CInt(c.value), c.expected) << c.value;
    }
  }
  EXPECT_EQ(errorNumber([] { (void)rt::CInt(std::nan("")); }), 6);
}

TEST(NumbersCLng, HalvesToEvenAndOverflow) {
  struct Case {
    double value;
    std::int64_t expected;
    bool overflow;
  };
  const Case table[] = {
      {2147483647.0, 2147483647, false},
      {2147483647.4, 2147483647, false},
      {2147483647.5, 0, true},
      {2147483648.0, 0, true},
      {-2147483648.0, -2147483648LL, false},
      {-2147483648.5, -2147483648LL, false},
      {-2147483649.0, 0, true},
      {4.5, 4, false},
      {-0.5, 0, false},
      {-1.5, -2, false},
      {std::numeric_limits<double>::infinity(), 0, true},
  };
  for (const Case& c : table) {
    if (c.overflow) {
      EXPECT_EQ(errorNumber([&] { (void)rt::CLng(c.value); }), 6) << c.value;
    } else {
      EXPECT_EQ(rt::CLng(c.value), c.expected) << c.value;
    }
  }
}

TEST(NumbersCByte, RangeZeroTo255) {
  EXPECT_EQ(rt::CByte(255.4), 255);
  EXPECT_EQ(rt::CByte(-0.5), 0);
  EXPECT_EQ(rt::CByte(0.5), 0);
  EXPECT_EQ(rt::CByte(1.5), 2);
  EXPECT_EQ(errorNumber([] { (void)rt::CByte(255.5); }), 6);
  EXPECT_EQ(errorNumber([] { (void)rt::CByte(-0.6); }), 6);
  EXPECT_EQ(errorNumber([] { (void)rt::CByte(-1); }), 6);
}

TEST(NumbersCSng, OverflowOnlyBeyondTheLargestSingle) {
  EXPECT_EQ(rt::CSng(0.1), 0.1F);
  EXPECT_EQ(rt::CSng(-1e-50), -0.0F);
  EXPECT_EQ(rt::CSng(static_cast<double>(FLT_MAX)), FLT_MAX);
  // Still rounds to the largest single rather than to infinity.
  EXPECT_EQ(rt::CSng(3.4028235e38), FLT_MAX);
  EXPECT_EQ(rt::CSng(-3.4028235e38), -FLT_MAX);
  EXPECT_EQ(errorNumber([] { (void)rt::CSng(3.5e38); }), 6);
  EXPECT_EQ(errorNumber([] { (void)rt::CSng(-1e39); }), 6);
  EXPECT_EQ(errorNumber([] { (void)rt::CSng(std::numeric_limits<double>::infinity()); }), 6);
  EXPECT_TRUE(std::isnan(rt::CSng(std::nan(""))));
}

TEST(NumbersRound, HalvesToEvenOnTheDecimalText) {
  struct Case {
    double value;
    int decimals;
    double expected;
  };
  const Case table[] = {
      {2.5, 0, 2},        {3.5, 0, 4},
      {-2.5, 0, -2},      {0.125, 2, 0.12},
      {0.375, 2, 0.38},   {2.675, 2, 2.68},
      {1.005, 2, 1.0},    {1.015, 2, 1.02},
      {-1.015, 2, -1.02}, {1234.5678, 3, 1234.568},
      {0.4, 0, 0},        {-0.4, 0, 0},
      {1e300, 2, 1e300},  {123.456, 10, 123.456},
      {0.5, 0, 0},        {9.995, 2, 10.0},
  };
  for (const Case& c : table) {
    EXPECT_EQ(rt::RoundHalfEven(c.value, c.decimals), c.expected)
        << c.value << " to " << c.decimals;
  }
  EXPECT_EQ(errorNumber([] { (void)rt::RoundHalfEven(1.5, -1); }), 5);
}

}  // namespace
}  // namespace orvo::test
