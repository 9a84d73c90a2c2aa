#include "text/maths.hpp"

#include <gtest/gtest.h>

#include <tuple>
#include <vector>

#include "orvogeneric/error.hpp"
#include "support/test_support.hpp"

namespace orvo::text {
namespace {

using test::errorOf;
using test::handledBy;

constexpr VBool F = VBool::False;
constexpr VBool T = VBool::True;

Variant arrayOf(std::vector<Variant> items, std::int32_t lowerBound = 0) {
  return Variant(SafeArray(VarType::Variant, lowerBound, std::move(items)));
}

TEST(MathsTest, RoundUpIsTheCeilingAsALong) {
  const std::vector<std::pair<double, std::int32_t>> cases = {
      {1.2, 2},  {3.0, 3},    {2147483646.5, 2147483647},
      {-0.5, 0}, {1e-300, 1}, {-2147483648.5, -2147483648},
  };
  for (const auto& [value, expected] : cases) EXPECT_EQ(RoundUp(value), expected) << value;
  for (const double value : {2147483647.5, 1e300, -2147483649.0}) {
    const Error e = errorOf([&] { (void)RoundUp(value); });
    EXPECT_EQ(e.number(), 6) << value;
    EXPECT_NE(e.description().find(u"Error handled by RoundUp"), String::npos);
  }
}

TEST(MathsTest, Log10RoundsToTwelveDecimals) {
  const std::vector<std::pair<double, double>> exact = {
      {1000, 3}, {100, 2}, {10, 1}, {1, 0}, {0.001, -3}, {1e15, 15}, {1e-5, -5},
  };
  for (const auto& [x, expected] : exact) EXPECT_EQ(Log10(x), expected) << x;
  // Twelve decimals of ln(x) / 2.30258509299405.
  EXPECT_DOUBLE_EQ(Log10(2.5), 0.397940008672);
  EXPECT_DOUBLE_EQ(Log10(123456), 5.091512201628);

  const Error e = errorOf([] { (void)Log10(0); });
  EXPECT_EQ(e.number(), kLibraryErrorNumber);
  EXPECT_EQ(e.description(), handledBy(u"Cannot take the log of zero.", u"Log10"));
  EXPECT_EQ(test::errorNumber([] { (void)Log10(-1); }), 5);
}

TEST(MathsTest, SigFigsRoundHalvesToEven) {
  // Value, figures, result.
  const std::vector<std::tuple<double, std::int32_t, double>> cases = {
      {2.5, 1, 2},   {123456, 2, 120000}, {3.5, 1, 4}, {0.0012345, 3, 0.00123},
      {-2.5, 1, -2}, {1.0001, 5, 1.0001}, {25, 1, 20}, {1.34999999999999, 2, 1.3},
      {0, 5, 0},     {999.9, 3, 1000},
  };
  for (const auto& [value, figures, expected] : cases) {
    EXPECT_DOUBLE_EQ(dSigFigs(value, figures), expected) << value << " to " << figures;
  }

  const String tooMany = handledBy(u"Maximum number of valid sig figs is 14", u"dSigFigs");
  const String tooFew = handledBy(u"Minimum number of valid sig figs is 1", u"dSigFigs");
  // The count is checked before zero is given back.
  const std::vector<std::tuple<double, std::int32_t, String>> bad = {
      {1.0, 15, tooMany}, {1.0, 0, tooFew}, {0.0, -3, tooFew}};
  for (const auto& [value, figures, description] : bad) {
    const Error e = errorOf([v = value, n = figures] { (void)dSigFigs(v, n); });
    EXPECT_EQ(e.number(), kLibraryErrorNumber);
    EXPECT_EQ(e.description(), description);
  }
  // Scaling overflows either way: a subnormal up by 10^323, or the largest double rounded to 2e308.
  EXPECT_EQ(test::errorNumber([] { (void)dSigFigs(1e-310, 14); }), 6);
  EXPECT_EQ(test::errorNumber([] { (void)dSigFigs(1.7976931348623157e308, 1); }), 6);
}

TEST(MathsTest, EqualDoubleRoundsTwice) {
  // 14 figures first make 1.34999999999999 the value 1.35, which then rounds up to 1.4; one
  // rounding to two figures would give 1.3.
  const std::vector<std::tuple<double, double, std::int32_t, VBool>> cases = {
      {0.1 + 0.2, 0.3, 14, T}, {1.0, 1.00000000000001, 14, T},
      {1.0001, 1.0002, 4, T},  {1.0, 1.0000000000001, 14, F},
      {-5.0, 5.0, 1, F},       {1.34999999999999, 1.4, 2, T},
  };
  for (const auto& [a, b, figures, expected] : cases) {
    EXPECT_EQ(bEqualDouble(a, b, figures), expected) << a << " vs " << b << " to " << figures;
  }
  EXPECT_EQ(bEqualDouble(0.1 + 0.2, 0.3), T);
  const Error e = errorOf([] { (void)bEqualDouble(1, 1, 20); });
  EXPECT_EQ(e.number(), kLibraryErrorNumber);
  EXPECT_EQ(e.description(),
            handledBy(handledBy(u"Maximum number of valid sig figs is 14", u"dSigFigs"),
                      u"bEqualDouble"));
}

TEST(MathsTest, IsEvenRoundsHalvesToEvenFirst) {
  const std::vector<std::pair<double, VBool>> cases = {
      {2.5, T}, {3.5, T},    {0.5, T},    {-2.5, T},       {-1.5, T}, {1, F},
      {-3, F},  {2.5001, F}, {2.4999, T}, {2147483647, F}, {0, T},    {-2147483648.0, T},
  };
  for (const auto& [value, expected] : cases) {
    EXPECT_EQ(IsEven(Currency::fromDouble(value)), expected) << value;
  }
  const Error e = errorOf([] { (void)IsEven(Currency::fromDouble(2147483647.5)); });
  EXPECT_EQ(e.number(), 6);
  EXPECT_NE(e.description().find(u"Error handled by IsEven"), String::npos);
}

TEST(MathsTest, NumberInArraySearchesForwardsOnly) {
  // Looking for 5: name, array, Forwards, result, Index (-7 when untouched).
  const std::vector<std::tuple<const char*, Variant, VBool, VBool, std::int32_t>> cases = {
      {"first match", arrayOf({1, 5, 5}), T, T, 1},
      {"backwards looks at nothing", arrayOf({1, 5, 5}), F, F, -7},
      {"backwards with one element", arrayOf({5}), F, T, 0},
      {"backwards with one element, no match", arrayOf({4}), F, F, -7},
      {"lower bound kept", arrayOf({9, 5}, 3), T, T, 4},
      {"no match", arrayOf({1, 2}), T, F, -7},
      {"no elements", arrayOf({}), T, F, -7},
      {"never dimensioned", Variant(SafeArray()), T, F, -7},
      {"numeric comparison, fractions are not equal", arrayOf({5.5, 5.0}), T, T, 1},
      {"numeric text", arrayOf({u"5"}), T, T, 0},
      {"null is no match", arrayOf({Null{}, 5}), T, T, 1},
      {"a non-canonical true counts as forwards", arrayOf({1, 5}), static_cast<VBool>(1), T, 1},
  };
  for (const auto& [name, array, forwards, expected, expectedIndex] : cases) {
    std::int32_t index = -7;
    VBool got = bIntegerInArray(5, array, &index, forwards);
    EXPECT_EQ(std::pair(got, index), std::pair(expected, expectedIndex)) << name;
    index = -7;
    got = bLongInArray(5, array, &index, forwards);
    EXPECT_EQ(std::pair(got, index), std::pair(expected, expectedIndex)) << name;
  }
  EXPECT_EQ(bLongInArray(70000, arrayOf({1, 70000})), T);

  Error e = errorOf([] { (void)bIntegerInArray(1, Variant(std::int32_t{1})); });
  EXPECT_EQ(e.number(), kLibraryErrorNumber);
  EXPECT_EQ(e.description(), handledBy(u"Must pass an array in vArray.", u"bIntegerInArray"));
  e = errorOf([] { (void)bLongInArray(1, Variant()); });
  EXPECT_EQ(e.description(), handledBy(u"Must pass an array in vArray.", u"bLongInArray"));
}

}  // namespace
}  // namespace orvo::text
