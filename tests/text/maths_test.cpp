#include "text/maths.hpp"

#include <gtest/gtest.h>

#include <tuple>
#include <vector>

#include "orvogeneric/error.hpp"
#include "support/test_support.hpp"
#include "text/strings_fixture.hpp"

namespace orvo::text {
namespace {

using test::errorOf;
using test::handledBy;

TEST(MathsTest, FunctionsOfPlainNumbers) {
  for (const auto& row : test::readTestData("text/maths.tsv", 5)) {
    const auto& f = row.fields;
    SCOPED_TRACE("data line " + std::to_string(row.line));
    const double x = test::parseHexDouble(f[1]);
    const auto figures = static_cast<std::int32_t>(f[3] == u"-" ? 0 : test::integerOf(f[3]));
    if (f[0] == u"RoundUp") {
      EXPECT_EQ(RoundUp(x), test::integerOf(f[4]));
    } else if (f[0] == u"Log10") {
      EXPECT_EQ(Log10(x), test::parseHexDouble(f[4]));
    } else if (f[0] == u"dSigFigs") {
      EXPECT_DOUBLE_EQ(dSigFigs(x, figures), test::parseHexDouble(f[4]));
    } else if (f[0] == u"bEqualDouble") {
      EXPECT_EQ(bEqualDouble(x, test::parseHexDouble(f[2]), figures), flagOf(f[4]));
    } else {
      EXPECT_EQ(f[0], u"IsEven");
      EXPECT_EQ(IsEven(Currency::fromDouble(x)), flagOf(f[4]));
    }
  }
  EXPECT_EQ(bEqualDouble(0.1 + 0.2, 0.3), T);
}

TEST(MathsTest, ErrorsNameTheirProcedure) {
  for (const double value : {2147483647.5, 1e300, -2147483649.0}) {
    const Error e = errorOf([&] { (void)RoundUp(value); });
    EXPECT_EQ(e.number(), 6) << value;
    EXPECT_NE(e.description().find(u"Error handled by RoundUp"), String::npos);
  }
  Error e = errorOf([] { (void)Log10(0); });
  EXPECT_EQ(e.number(), kLibraryErrorNumber);
  EXPECT_EQ(e.description(), handledBy(u"Cannot take the log of zero.", u"Log10"));
  EXPECT_EQ(test::errorNumber([] { (void)Log10(-1); }), 5);

  const String tooMany = handledBy(u"Maximum number of valid sig figs is 14", u"dSigFigs");
  const String tooFew = handledBy(u"Minimum number of valid sig figs is 1", u"dSigFigs");
  // The count is checked before zero is given back.
  const std::vector<std::tuple<double, std::int32_t, String>> bad = {
      {1.0, 15, tooMany}, {1.0, 0, tooFew}, {0.0, -3, tooFew}};
  for (const auto& [value, figures, description] : bad) {
    e = errorOf([v = value, n = figures] { (void)dSigFigs(v, n); });
    EXPECT_EQ(e.number(), kLibraryErrorNumber);
    EXPECT_EQ(e.description(), description);
  }
  // Scaling overflows either way: a subnormal up by 10^323, or the largest double rounded to 2e308.
  EXPECT_EQ(test::errorNumber([] { (void)dSigFigs(1e-310, 14); }), 6);
  EXPECT_EQ(test::errorNumber([] { (void)dSigFigs(1.7976931348623157e308, 1); }), 6);
  e = errorOf([] { (void)bEqualDouble(1, 1, 20); });
  EXPECT_EQ(e.number(), kLibraryErrorNumber);
  EXPECT_EQ(e.description(), handledBy(tooMany, u"bEqualDouble"));
  e = errorOf([] { (void)IsEven(Currency::fromDouble(2147483647.5)); });
  EXPECT_EQ(e.number(), 6);
  EXPECT_NE(e.description().find(u"Error handled by IsEven"), String::npos);
}

TEST(MathsTest, NumberInArraySearchesForwardsOnly) {
  for (const auto& row : test::readTestData("text/number_in_array.tsv", 5)) {
    const auto& f = row.fields;
    SCOPED_TRACE("data line " + std::to_string(row.line) + ": " + toUtf8(f[0]));
    const Variant array = test::variantOf(f[1]);
    const auto expected = std::pair(flagOf(f[3]), std::int32_t(test::integerOf(f[4])));
    std::int32_t index = -7;
    EXPECT_EQ(std::pair(bIntegerInArray(5, array, &index, flagOf(f[2])), index), expected);
    index = -7;
    EXPECT_EQ(std::pair(bLongInArray(5, array, &index, flagOf(f[2])), index), expected);
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
