#include "text/maths.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <vector>

#include "orvogeneric/classes.hpp"
#include "orvogeneric/error.hpp"
#include "support/test_support.hpp"

namespace orvo::text {
namespace {

using test::errorOf;

String handledBy(std::u16string_view message, std::u16string_view procedure) {
  return String(message) + u"\r\nError handled by " + String(procedure);
}

Variant arrayOf(std::vector<Variant> items, std::int32_t lowerBound = 0) {
  return Variant(SafeArray(VarType::Variant, lowerBound, std::move(items)));
}

TEST(MathsTest, RoundUpIsTheCeilingAsALong) {
  const std::vector<std::pair<double, std::int32_t>> cases = {
      {1.2, 2},
      {-1.2, -1},
      {3.0, 3},
      {-0.5, 0},
      {0.0, 0},
      {1e-300, 1},
      {2147483646.5, 2147483647},
      {-2147483648.5, -2147483648},
      {-3.0, -3},
  };
  for (const auto& [value, expected] : cases) {
    SCOPED_TRACE(value);
    EXPECT_EQ(RoundUp(value), expected);
  }
  for (const double value : {2147483647.5, 1e300, -2147483649.0}) {
    SCOPED_TRACE(value);
    const Error e = errorOf([&] { (void)RoundUp(value); });
    EXPECT_EQ(e.number(), 6);
    EXPECT_NE(e.description().find(u"Error handled by RoundUp"), String::npos);
  }
}

TEST(MathsTest, Log10RoundsToTwelveDecimals) {
  const std::vector<std::pair<double, double>> exact = {
      {1000, 3}, {100, 2}, {10, 1}, {1, 0}, {0.001, -3}, {1e15, 15}, {1e-5, -5},
  };
  for (const auto& [x, expected] : exact) {
    SCOPED_TRACE(x);
    EXPECT_EQ(Log10(x), expected);
  }
  // Twelve decimals of ln(x) / 2.30258509299405.
  EXPECT_DOUBLE_EQ(Log10(2.5), 0.397940008672);
  EXPECT_DOUBLE_EQ(Log10(123456), 5.091512201628);

  Error e = errorOf([] { (void)Log10(0); });
  EXPECT_EQ(e.number(), kLibraryErrorNumber);
  EXPECT_EQ(e.description(), handledBy(u"Cannot take the log of zero.", u"Log10"));
  e = errorOf([] { (void)Log10(-1); });
  EXPECT_EQ(e.number(), 5);
}

struct SigFigCase {
  double value;
  std::int32_t figures;
  double expected;
};

TEST(MathsTest, SigFigsRoundHalvesToEven) {
  const std::vector<SigFigCase> cases = {
      {123456, 2, 120000},
      {0.0012345, 3, 0.00123},
      {1000, 1, 1000},
      {2.5, 1, 2},
      {3.5, 1, 4},
      {0, 5, 0},
      {-123456, 2, -120000},
      {-2.5, 1, -2},
      {999.9, 3, 1000},
      {15, 1, 20},
      {25, 1, 20},
      {1.0001, 4, 1},
      {1.0001, 5, 1.0001},
      {0.30000000000000004, 14, 0.3},
      {1.34999999999999, 2, 1.3},
      {123.456, 14, 123.456},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::to_string(c.value) + " to " + std::to_string(c.figures));
    EXPECT_DOUBLE_EQ(dSigFigs(c.value, c.figures), c.expected);
  }
}

TEST(MathsTest, SigFigsRejectsBadCountsAndOverflow) {
  struct Case {
    double value;
    std::int32_t figures;
    std::int32_t number;
    String description;
  };
  const std::vector<Case> cases = {
      {1.0, 15, kLibraryErrorNumber,
       handledBy(u"Maximum number of valid sig figs is 14", u"dSigFigs")},
      {1.0, 0, kLibraryErrorNumber,
       handledBy(u"Minimum number of valid sig figs is 1", u"dSigFigs")},
      {0.0, -3, kLibraryErrorNumber,
       handledBy(u"Minimum number of valid sig figs is 1", u"dSigFigs")},
      // Scaling a subnormal up by 10^323 overflows.
      {1e-310, 14, 6, {}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.figures);
    const Error e = errorOf([&] { (void)dSigFigs(c.value, c.figures); });
    EXPECT_EQ(e.number(), c.number);
    if (!c.description.empty()) {
      EXPECT_EQ(e.description(), c.description);
    }
  }
}

TEST(MathsTest, EqualDoubleRoundsTwice) {
  struct Case {
    double a, b;
    std::int32_t figures;
    VBool expected;
  };
  const std::vector<Case> cases = {
      {0.1 + 0.2, 0.3, 14, VBool::True},
      {1.0001, 1.0002, 4, VBool::True},
      {1.0001, 1.0002, 5, VBool::False},
      {1.0, 1.00000000000001, 14, VBool::True},
      {1.0, 1.0000000000001, 14, VBool::False},
      {-5.0, 5.0, 1, VBool::False},
      {0.0, 0.0, 1, VBool::True},
      // 14 figures first make the value 1.35, which then rounds up to 1.4; one rounding to two
      // figures would give 1.3.
      {1.34999999999999, 1.4, 2, VBool::True},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::to_string(c.a) + " vs " + std::to_string(c.b));
    EXPECT_EQ(bEqualDouble(c.a, c.b, c.figures), c.expected);
  }
  const Error e = errorOf([] { (void)bEqualDouble(1, 1, 20); });
  EXPECT_EQ(e.number(), kLibraryErrorNumber);
  EXPECT_EQ(e.description(),
            handledBy(handledBy(u"Maximum number of valid sig figs is 14", u"dSigFigs"),
                      u"bEqualDouble"));
}

TEST(MathsTest, IsEvenRoundsHalvesToEvenFirst) {
  const std::vector<std::pair<double, VBool>> cases = {
      {2.5, VBool::True},
      {3.5, VBool::True},
      {-3, VBool::False},
      {0, VBool::True},
      {1.5, VBool::True},
      {0.5, VBool::True},
      {-2.5, VBool::True},
      {-1.5, VBool::True},
      {1, VBool::False},
      {2.5001, VBool::False},
      {2.4999, VBool::True},
      {2147483647, VBool::False},
      {-2147483648.0, VBool::True},
  };
  for (const auto& [value, expected] : cases) {
    SCOPED_TRACE(value);
    EXPECT_EQ(IsEven(Currency::fromDouble(value)), expected);
  }
  const Error e = errorOf([] { (void)IsEven(Currency::fromDouble(2147483647.5)); });
  EXPECT_EQ(e.number(), 6);
  EXPECT_NE(e.description().find(u"Error handled by IsEven"), String::npos);
}

struct SearchCase {
  const char* name;
  Variant array;
  std::int32_t find;
  VBool forwards;
  VBool expected;
  std::int32_t index;
};

TEST(MathsTest, NumberInArraySearchesForwardsOnly) {
  const auto F = VBool::False;
  const auto T = VBool::True;
  const std::vector<SearchCase> cases = {
      {"first match", arrayOf({1, 5, 5}), 5, T, T, 1},
      {"backwards looks at nothing", arrayOf({1, 5, 5}), 5, F, F, -7},
      {"backwards with one element", arrayOf({5}), 5, F, T, 0},
      {"backwards with one element, no match", arrayOf({4}), 5, F, F, -7},
      {"lower bound kept", arrayOf({9, 5}, 3), 5, T, T, 4},
      {"no match", arrayOf({1, 2}), 5, T, F, -7},
      {"no elements", arrayOf({}), 5, T, F, -7},
      {"never dimensioned", Variant(SafeArray()), 5, T, F, -7},
      {"numeric comparison across types", arrayOf({2.0, 5.0}), 5, T, T, 1},
      {"numeric text", arrayOf({u"5"}), 5, T, T, 0},
      {"fractions are not equal", arrayOf({5.5, 5}), 5, T, T, 1},
      {"null is no match", arrayOf({Variant(Null{}), 5}), 5, T, T, 1},
      {"a non-canonical true still counts as forwards", arrayOf({1, 5}), 5, static_cast<VBool>(1),
       T, 1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    std::int32_t index = -7;
    EXPECT_EQ(bIntegerInArray(static_cast<std::int16_t>(c.find), c.array, &index, c.forwards),
              c.expected);
    EXPECT_EQ(index, c.index);
    index = -7;
    EXPECT_EQ(bLongInArray(c.find, c.array, &index, c.forwards), c.expected);
    EXPECT_EQ(index, c.index);
  }
  EXPECT_EQ(bLongInArray(70000, arrayOf({1, 70000})), VBool::True);
}

TEST(MathsTest, NumberInArrayNeedsAnArray) {
  Error e = errorOf([] { (void)bIntegerInArray(1, Variant(std::int32_t{1})); });
  EXPECT_EQ(e.number(), kLibraryErrorNumber);
  EXPECT_EQ(e.description(), handledBy(u"Must pass an array in vArray.", u"bIntegerInArray"));
  e = errorOf([] { (void)bLongInArray(1, Variant()); });
  EXPECT_EQ(e.description(), handledBy(u"Must pass an array in vArray.", u"bLongInArray"));
}

TEST(MathsTest, ClassMembersForwardTheirArguments) {
  MathsUtilities mu;
  EXPECT_EQ(mu.RoundUp(1.2), 2);
  EXPECT_EQ(mu.IsEqualDouble(1.0001, 1.0002, 4), VBool::True);
  EXPECT_EQ(mu.IsEqualDouble(0.1 + 0.2, 0.3), VBool::True);
  EXPECT_EQ(mu.Log10(1000), 3);
  EXPECT_DOUBLE_EQ(mu.RoundToNumSigFigs(123456, 2), 120000);
  EXPECT_EQ(mu.IsEven(Currency::fromDouble(2.5)), VBool::True);
  Variant values = arrayOf({1, 5, 5});
  std::int32_t index = -1;
  EXPECT_EQ(mu.IsIntegerInArray(5, values, &index), VBool::True);
  EXPECT_EQ(index, 1);
  EXPECT_EQ(mu.IsLongInArray(5, values, &index, VBool::False), VBool::False);
}

}  // namespace
}  // namespace orvo::text
