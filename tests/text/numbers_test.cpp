#include "text/numbers.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

#include "frame/state.hpp"
#include "orvogeneric/error.hpp"
#include "support/test_support.hpp"

namespace orvo::text {
namespace {

using test::errorNumber;

using test::ScopedLocale;
using test::show;

TEST(NumbersTest, RegionalAndFixedTextInACommaRegion) {
  const ScopedLocale german("de_DE.UTF-8");
  EXPECT_EQ(DPDelimiter(), u",");
  EXPECT_EQ(show(FormatNumToRegion(Variant(u"2.5"))), "2,5");
  EXPECT_EQ(show(FormatNumToRegion(Variant(2.5))), "2,5");
  EXPECT_EQ(show(FormatNumToFORTRAN(Variant(2.5))), "2.5");
  EXPECT_EQ(show(FormatNumToFORTRAN(Variant(u"2,5"))), "2.5");
  // Grouping marks stay regional: "." for thousands here, so the fixed text has two dots.
  EXPECT_EQ(show(FormatNumToFORTRAN(Variant(1234567.891), u"#,##0.00")), "1.234.567.89");
  EXPECT_EQ(show(FormatNumToRegion(Variant(1.0), u"0.000")), "1,000");
  struct Case {
    Variant in;
    double want;
  };
  const Case cases[] = {{Variant(u"2,5"), 2.5},   {Variant(u"2.5"), 2.5}, {Variant(2.5), 2.5},
                        {Variant(u"-100"), -100}, {Variant(u""), 0},      {Variant(u"abc"), 0},
                        {Variant(u"1 0"), 10},    {Variant(u"10+"), 10},  {Variant(u"&H10"), 16}};
  for (const auto& c : cases) {
    EXPECT_EQ(ValDbl(c.in), c.want) << show(c.in.get<String>() ? *c.in.get<String>() : u"<num>");
  }
  EXPECT_EQ(show(TrimStr(-2.5)), "-2.5");
}

TEST(NumbersTest, DotRegionLeavesTextAsItIs) {
  const ScopedLocale english("en_US.UTF-8");
  EXPECT_EQ(DPDelimiter(), u".");
  EXPECT_EQ(show(FormatNumToFORTRAN(Variant(u"1,234.5"))), "1,234.5");
  EXPECT_EQ(show(FormatNumToFORTRAN(Variant(2.5))), "2.5");
  EXPECT_EQ(ValDbl(Variant(u"1,234.5")), 1) << "the prefix parse stops at the grouping mark";
  EXPECT_EQ(show(TrimStr(-2.5)), "-2.5");
  EXPECT_EQ(show(TrimStr(1e15)), "1E+15");
  EXPECT_EQ(show(TrimStr(0.00001)), "1E-05");
  EXPECT_EQ(show(TrimStr(1.0 / 3)), "0.333333333333333");
}

TEST(NumbersTest, TheSeparatorIsComputedOnceAndThenKept) {
  const ScopedLocale english("en_US.UTF-8");
  EXPECT_EQ(DPDelimiter(), u".");
  const test::ScopedEnvironment german("LC_ALL", "de_DE.UTF-8");  // a change mid-run is not seen
  EXPECT_EQ(DPDelimiter(), u".");
  frame::StaticGlobals::instance().setDecimalSeparatorCache({});
  EXPECT_EQ(DPDelimiter(), u",");
}

TEST(NumbersTest, NarrowingRoundsHalvesToEvenAndOverflows) {
  const ScopedLocale english("en_US.UTF-8");
  EXPECT_EQ(ValInt(Variant(u"2.5")), 2);
  EXPECT_EQ(ValInt(Variant(u"3.5")), 4);
  EXPECT_EQ(ValInt(Variant(u"-2.5")), -2);
  EXPECT_EQ(ValLng(Variant(u"2147483647")), 2147483647);
  EXPECT_EQ(ValLng(Variant(u"-2147483648")), -2147483647 - 1);
  EXPECT_FLOAT_EQ(ValSng(Variant(u"0.1")), 0.1F);
  EXPECT_EQ(ValDbl(Variant(u"1E-512")), 0);
  struct Case {
    const char* name;
    std::function<void()> call;
  };
  const Case overflows[] = {
      {"ValInt 32768", [] { (void)ValInt(Variant(u"32768")); }},
      {"ValLng 2147483648", [] { (void)ValLng(Variant(u"2147483648")); }},
      {"ValLng -2147483649", [] { (void)ValLng(Variant(u"-2147483649")); }},
      {"ValSng 1E39", [] { (void)ValSng(Variant(u"1E39")); }},
      {"ValDbl 1E512", [] { (void)ValDbl(Variant(u"1E512")); }},
  };
  for (const auto& c : overflows) EXPECT_EQ(errorNumber(c.call), 6) << c.name;
}

TEST(NumbersTest, OverflowCarriesTheChainOfProcedures) {
  const ScopedLocale english("en_US.UTF-8");
  try {
    (void)ValInt(Variant(u"1E512"));
    FAIL();
  } catch (const Error& e) {
    EXPECT_EQ(show(e.description()),
              "Overflow\\u{000D}\\u{000A}Error handled by ValDbl\\u{000D}\\u{000A}Error handled by "
              "ValInt");
  }
}

}  // namespace
}  // namespace orvo::text
