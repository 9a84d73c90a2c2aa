#include "text/numbers.hpp"

#include <gtest/gtest.h>

#include "frame/state.hpp"
#include "orvogeneric/error.hpp"
#include "support/test_support.hpp"

namespace orvo::text {
namespace {

using test::ScopedLocale;
using test::show;

TEST(NumbersTest, TextAndNumbersInCommaAndDotRegions) {
  for (const auto& row : test::readTestData("text/numbers.tsv", 5)) {
    const auto& f = row.fields;
    SCOPED_TRACE("data line " + std::to_string(row.line));
    const ScopedLocale locale(toUtf8(f[0]).c_str());
    const bool text = f[2].starts_with(u"'");
    const Variant in =
        text ? Variant(f[2].substr(1, f[2].size() - 2)) : Variant(test::parseHexDouble(f[2]));
    const String& function = f[1];
    if (f[4].starts_with(u"error ")) {
      EXPECT_EQ(test::errorNumber([&] {
                  if (function == u"ValInt") (void)ValInt(in);
                  if (function == u"ValLng") (void)ValLng(in);
                  if (function == u"ValSng") (void)ValSng(in);
                  if (function == u"ValDbl") (void)ValDbl(in);
                }),
                test::integerOf(f[4].substr(6)));
    } else if (function == u"ValDbl") {
      EXPECT_EQ(ValDbl(in), test::parseHexDouble(f[4]));
    } else if (function == u"ValInt" || function == u"ValLng") {
      EXPECT_EQ(function == u"ValInt" ? ValInt(in) : ValLng(in), test::integerOf(f[4]));
    } else if (function == u"ValSng") {
      EXPECT_FLOAT_EQ(ValSng(in), static_cast<float>(test::parseHexDouble(f[4])));
    } else {
      const String got = function == u"DPDelimiter"          ? DPDelimiter()
                         : function == u"FormatNumToRegion"  ? FormatNumToRegion(in, f[3])
                         : function == u"FormatNumToFORTRAN" ? FormatNumToFORTRAN(in, f[3])
                         : function == u"TrimStr"            ? TrimStr(*in.get<double>())
                                                             : u"unknown function";
      EXPECT_EQ(show(got), show(f[4]));
    }
  }
}

TEST(NumbersTest, TheSeparatorIsComputedOnceAndThenKept) {
  const ScopedLocale english("en_US.UTF-8");
  EXPECT_EQ(DPDelimiter(), u".");
  const test::ScopedEnvironment german("LC_ALL", "de_DE.UTF-8");  // a change mid-run is not seen
  EXPECT_EQ(DPDelimiter(), u".");
  frame::StaticGlobals::instance().setDecimalSeparatorCache({});
  EXPECT_EQ(DPDelimiter(), u",");
}

TEST(NumbersTest, OverflowCarriesTheChainOfProcedures) {
  const ScopedLocale english("en_US.UTF-8");
  EXPECT_EQ(show(test::errorOf([] { (void)ValInt(Variant(u"1E512")); }).description()),
            show(u"Overflow\r\nError handled by ValDbl\r\nError handled by ValInt"));
}

}  // namespace
}  // namespace orvo::text
