#include "runtime/convert.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>

#include "runtime/dates.hpp"
#include "runtime/golden_cases.hpp"
#include "support/test_support.hpp"

namespace orvo::test {
namespace {

using namespace runtime_golden;
namespace rt = orvo::runtime;

const platform::RegionalSettings& en() { return settingsFor("1033"); }
const platform::RegionalSettings& de() { return settingsFor("1031"); }

class Thing : public Object {
 public:
  [[nodiscard]] std::string_view className() const noexcept override { return "Thing"; }
};

// Every coercion refuses Null with 94 and objects, arrays, error values and Missing with Type
// mismatch (13) rather than crash on them.
TEST(ConvertRefusals, NonValuesRaiseNumberedErrors) {
  const std::pair<Variant, int> refused[] = {
      {Variant(Null{}), 94},
      {Variant(std::shared_ptr<Object>(std::make_shared<Thing>())), 13},
      {Variant::array({Variant(1.0)}), 13},
      {Variant(ErrorCode{5}), 13},
      {Variant::missing(), 13}};
  for (const auto& [value, error] : refused) {
    const std::string what(typeName(value.type()));
    EXPECT_EQ(errorNumber([&] { (void)rt::CStr(value, en()); }), error) << what;
    EXPECT_EQ(errorNumber([&] { (void)rt::CDbl(value, en()); }), error) << what;
    EXPECT_EQ(errorNumber([&] { (void)rt::CIntV(value, en()); }), error) << what;
    EXPECT_EQ(errorNumber([&] { (void)rt::CCur(value, en()); }), error) << what;
    EXPECT_EQ(errorNumber([&] { (void)rt::CDate(value, en()); }), error) << what;
    EXPECT_EQ(errorNumber([&] { (void)rt::CBool(value, en()); }), error) << what;
    EXPECT_EQ(errorNumber([&] { (void)rt::compareVariants(Variant(1.0), value, en()); }), error)
        << what;
    EXPECT_FALSE(rt::IsNumeric(value, en())) << what;
  }
}

// Dates are in the recording; here the other types, with the regional decimal separator.
TEST(ConvertCStr, EachVariantType) {
  struct Case {
    Variant value;
    const char16_t* en;
    const char16_t* de;
  };
  const Case table[] = {{Variant(), u"", u""},
                        {Variant(static_cast<std::int16_t>(-32768)), u"-32768", u"-32768"},
                        {Variant(static_cast<std::uint8_t>(200)), u"200", u"200"},
                        {Variant(2.5F), u"2.5", u"2,5"},
                        {Variant(1.5e-7), u"1.5E-07", u"1,5E-07"},
                        {Variant(Currency{12345678}), u"1234.5678", u"1234,5678"},
                        {Variant(VBool::False), u"False", u"False"},
                        {Variant(static_cast<VBool>(1)), u"True", u"True"},  // non-canonical
                        {Variant(u"text"), u"text", u"text"}};
  for (const Case& c : table) {
    EXPECT_EQ(show(rt::CStr(c.value, en())), show(c.en)) << typeName(c.value.type());
    EXPECT_EQ(show(rt::CStr(c.value, de())), show(c.de)) << typeName(c.value.type());
  }
}

// Numeric text is read in the regional settings; CDbl and IsNumeric agree on it.
TEST(ConvertCDbl, NumericTextInTheRegionalSettings) {
  const double bad = std::numeric_limits<double>::quiet_NaN();  // Type mismatch (13)
  struct Case {
    const char16_t* text;
    double en;
    double de;
  };
  // The decimal and grouping marks swap, grouping marks count even after the point; signs and
  // parentheses before or after, blanks around, never two signs; the locale's currency symbol
  // on either side; "E" or "D" exponents with digits, tiny values zero; "&H" and "&O" unsigned
  // here (unlike Val) and with a sign.
  const Case table[] = {
      {u"2.5", 2.5, 25},         {u"2,5", 25, 2.5},    {u"1.234,5", 1.2345, 1234.5},
      {u"1.2.3", bad, 123},      {u".5", 0.5, bad},    {u"\t-12\r\n", -12, -12},
      {u"3-", -3, -3},           {u"( 3 )", -3, -3},   {u"(3", bad, bad},
      {u"-(3)", bad, bad},       {u"--3", bad, bad},   {u"1 2", bad, bad},
      {u"", bad, bad},           {u"$-3", -3, bad},    {u"3 \u20AC", bad, 3},
      {u"1D-2", 0.01, 0.01},     {u"1e+", bad, bad},   {u"1e-400", 0, 0},
      {u"&HFFFF", 65535, 65535}, {u"-&H10", -16, -16}, {u"&o17", 15, 15},
      {u"&H1G", bad, bad},       {u"&H", bad, bad},
  };
  for (const Case& c : table) {
    for (const auto& [rs, expected] : {std::pair{&en(), c.en}, std::pair{&de(), c.de}}) {
      const Variant v(c.text);
      const std::string where = show(c.text) + " in " + rs->localeName;
      if (std::isnan(expected)) {
        EXPECT_EQ(errorNumber([&] { (void)rt::CDbl(v, *rs); }), 13) << where;
      } else {
        EXPECT_EQ(rt::CDbl(v, *rs), expected) << where;
      }
      EXPECT_EQ(rt::IsNumeric(v, *rs), !std::isnan(expected)) << where;
    }
  }
  EXPECT_EQ(errorNumber([] { (void)rt::CDbl(Variant(u"1e400"), en()); }), 6);
  EXPECT_EQ(errorNumber([] { (void)rt::CDbl(Variant(u"&H1FFFFFFFFFFFFFFFF"), en()); }), 6);
}

TEST(ConvertNumbers, OtherTypesAndTheRoundingConversions) {
  EXPECT_EQ(rt::CDbl(Variant(), en()), 0);
  EXPECT_EQ(rt::CDbl(Variant(VBool::True), en()), -1);
  EXPECT_EQ(rt::CDbl(Variant(Currency{25000}), en()), 2.5);
  EXPECT_EQ(rt::CDbl(Variant(Date{1.5}), en()), 1.5);
  EXPECT_EQ(rt::CDbl(Variant(0.1F), en()), static_cast<double>(0.1F));
  EXPECT_EQ(rt::CIntV(Variant(u"2.5"), en()), 2);
  EXPECT_EQ(rt::CIntV(Variant(u"3,5"), de()), 4);
  EXPECT_EQ(rt::CIntV(Variant(Currency{-25000}), en()), -2);
  EXPECT_EQ(rt::CLngV(Variant(u"&HFFFF"), en()), 65535);
  EXPECT_EQ(rt::CByteV(Variant(u"255"), en()), 255);
  EXPECT_EQ(rt::CSngV(Variant(u"0.1"), en()), 0.1F);
  EXPECT_EQ(errorNumber([] { (void)rt::CIntV(Variant(u"&HFFFF"), en()); }), 6);
  EXPECT_EQ(errorNumber([] { (void)rt::CLngV(Variant(u"2147483648"), en()); }), 6);
  EXPECT_EQ(errorNumber([] { (void)rt::CByteV(Variant(u"-1"), en()); }), 6);
  EXPECT_EQ(errorNumber([] { (void)rt::CSngV(Variant(u"1e39"), en()); }), 6);
  EXPECT_EQ(errorNumber([] { (void)rt::CLngV(Variant(u"ten"), en()); }), 13);
}

// Text converts to Currency with all its digits, halves to even at the fourth decimal.
TEST(ConvertCCur, TextKeepsAllItsDigits) {
  struct Case {
    const char16_t* text;
    std::int64_t scaled;
  };
  const Case table[] = {{u"922337203685477.5807", INT64_MAX},
                        {u"-922337203685477.5808", INT64_MIN},
                        {u"1.23455", 12346},
                        {u"1.23445", 12344},
                        {u"1.234451", 12345},
                        {u"-0.00005", 0},
                        {u"(12.5)", -125000},
                        {u"$1,000.25", 10002500}};
  for (const Case& c : table) {
    EXPECT_EQ(rt::CCur(Variant(c.text), en()).scaled, c.scaled) << show(c.text);
  }
  EXPECT_EQ(rt::CCur(Variant(u"2,5"), de()).scaled, 25000);
  EXPECT_EQ(rt::CCur(Variant(2.5), en()).scaled, 25000);
  EXPECT_EQ(errorNumber([] { (void)rt::CCur(Variant(u"922337203685477.5808"), en()); }), 6);
  EXPECT_EQ(errorNumber([] { (void)rt::CCur(Variant(u"1e16"), en()); }), 6);
  EXPECT_EQ(errorNumber([] { (void)rt::CCur(Variant(1e300), en()); }), 6);
  EXPECT_EQ(errorNumber([] { (void)rt::CCur(Variant(u"x"), en()); }), 13);
}

TEST(ConvertCDate, TextInTheRegionalSettingsAndNumbersAsSerials) {
  struct Case {
    const char16_t* text;
    const platform::RegionalSettings* rs;
    std::array<int, 6> parts;
  };
  const Case table[] = {
      {u"11/15/2026 4:53:11 pm", &en(), {2026, 11, 15, 16, 53, 11}},
      {u"12:00:00 AM", &en(), {1899, 12, 30, 0, 0, 0}},
      {u"4 PM", &en(), {1899, 12, 30, 16, 0, 0}},
      {u"15.11.2026 04:53:11", &de(), {2026, 11, 15, 4, 53, 11}},
      {u"5.1.26", &de(), {2026, 1, 5, 0, 0, 0}},
      {u"2026-11-15 23:59:59", &de(), {2026, 11, 15, 23, 59, 59}},
      {u"Sunday, November 15, 2026", &en(), {2026, 11, 15, 0, 0, 0}},
      {u"15. M\u00E4rz 2026", &de(), {2026, 3, 15, 0, 0, 0}},
      {u"Nov 2026", &en(), {2026, 11, 1, 0, 0, 0}},
      {u"15/11/2026", &en(), {2026, 11, 15, 0, 0, 0}},  // a month beyond 12 swaps with the day
      {u"1/1/30", &en(), {1930, 1, 1, 0, 0, 0}},
      {u"1/1/29", &en(), {2029, 1, 1, 0, 0, 0}},
  };
  for (const Case& c : table) {
    const rt::DateParts p = rt::splitDate(rt::CDate(Variant(c.text), *c.rs));
    EXPECT_EQ((std::array{p.year, p.month, p.day, p.hour, p.minute, p.second}), c.parts)
        << show(c.text);
  }
  for (const char16_t* text :
       {u"", u"abc", u"2/30/2026", u"13/13/2026", u"25:00", u"13:00 PM", u"1/2/3/4", u"12:61",
        u"46341", u"11/15/2026 x", u"AM", u"1/1/10000"}) {
    EXPECT_EQ(errorNumber([&] { (void)rt::CDate(Variant(text), en()); }), 13) << show(text);
  }
  EXPECT_EQ(rt::CDate(Variant(46341.5), en()).serial, 46341.5);
  EXPECT_EQ(rt::CDate(Variant(VBool::True), en()).serial, -1);
  EXPECT_EQ(errorNumber([] { (void)rt::CDate(Variant(2958466.0), en()); }), 6);
  EXPECT_EQ(errorNumber([] { (void)rt::CDate(Variant(-657435.0), en()); }), 6);
}

TEST(ConvertCBoolAndIsNumeric, VariantTypes) {
  struct Case {
    Variant value;
    VBool asBool;
  };
  const Case table[] = {
      {Variant(0.4), VBool::True},      {Variant(u"false"), VBool::False},
      {Variant(u"TRUE"), VBool::True},  {Variant(u"-2"), VBool::True},
      {Variant(u"0"), VBool::False},    {Variant(), VBool::False},
      {Variant(Date{0}), VBool::False}, {Variant(static_cast<VBool>(1)), VBool::True}};
  for (const Case& c : table) {
    EXPECT_EQ(rt::CBool(c.value, en()), c.asBool) << typeName(c.value.type());
  }
  EXPECT_EQ(errorNumber([] { (void)rt::CBool(Variant(u"yes"), en()); }), 13);
  EXPECT_EQ(errorNumber([] { (void)rt::CBool(Variant(u""), en()); }), 13);
  // Empty, Boolean and Currency are numeric; a Date is not.
  EXPECT_TRUE(rt::IsNumeric(Variant(), en()));
  EXPECT_TRUE(rt::IsNumeric(Variant(VBool::False), en()));
  EXPECT_TRUE(rt::IsNumeric(Variant(Currency{1}), en()));
  EXPECT_FALSE(rt::IsNumeric(Variant(Date{1}), en()));
}

// Numbers by value, text by code units, a number against numeric text by value and before any
// other text; Empty is "" next to text and 0 next to a number.
TEST(ConvertCompare, VariantOrdering) {
  struct Case {
    Variant a;
    Variant b;
    int expected;
  };
  const Case table[] = {
      {Variant(2.0), Variant(static_cast<std::int16_t>(10)), -1},
      {Variant(u"2"), Variant(u"10"), 1},
      {Variant(u"a"), Variant(u"B"), 1},
      {Variant(2.0), Variant(u"10"), -1},
      {Variant(u"2.50"), Variant(2.5), 0},
      {Variant(5.0), Variant(u"five"), -1},
      {Variant(u"five"), Variant(5.0), 1},
      {Variant(), Variant(0.0), 0},
      {Variant(), Variant(u""), 0},
      {Variant(), Variant(u"a"), -1},
  };
  for (const Case& c : table) {
    EXPECT_EQ(rt::compareVariants(c.a, c.b, en()), c.expected)
        << typeName(c.a.type()) << " vs " << typeName(c.b.type());
  }
  EXPECT_EQ(rt::compareVariants(Variant(u"2,5"), Variant(2.5), de()), 0);
  EXPECT_EQ(errorNumber([] { (void)rt::compareVariants(Variant(Null{}), Variant(1.0), en()); }),
            94);
}

}  // namespace
}  // namespace orvo::test
