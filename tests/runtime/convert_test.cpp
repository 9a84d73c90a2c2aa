#include "runtime/convert.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "runtime/dates.hpp"
#include "runtime/golden_cases.hpp"
#include "runtime/numbers.hpp"
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

// Values every coercion must refuse with a numbered error rather than crash on.
struct Refused {
  const char* what;
  Variant value;
  int error;
};
std::vector<Refused> refusedValues() {
  return {{"Null", Variant(Null{}), 94},
          {"object", Variant(std::shared_ptr<Object>(std::make_shared<Thing>())), 13},
          {"array", Variant::array({Variant(1.0)}), 13},
          {"error value", Variant(ErrorCode{5}), 13},
          {"missing", Variant::missing(), 13}};
}

TEST(ConvertCStr, EachVariantType) {
  struct Case {
    Variant value;
    const char16_t* en;
    const char16_t* de;
  };
  const Case table[] = {
      {Variant(), u"", u""},
      {Variant(static_cast<std::int16_t>(-32768)), u"-32768", u"-32768"},
      {Variant(static_cast<std::int32_t>(2147483647)), u"2147483647", u"2147483647"},
      {Variant(static_cast<std::uint8_t>(200)), u"200", u"200"},
      {Variant(2.5F), u"2.5", u"2,5"},
      {Variant(1234567.891), u"1234567.891", u"1234567,891"},
      {Variant(1e20), u"1E+20", u"1E+20"},
      {Variant(1.5e-7), u"1.5E-07", u"1,5E-07"},
      {Variant(Currency{12345678}), u"1234.5678", u"1234,5678"},
      {Variant(VBool::True), u"True", u"True"},
      {Variant(VBool::False), u"False", u"False"},
      // A non-canonical 1 is still true text.
      {Variant(static_cast<VBool>(1)), u"True", u"True"},
      {Variant(Date{46341.20360}), u"11/15/2026 4:53:11 AM", u"15.11.2026 04:53:11"},
      {Variant(Date{0}), u"12:00:00 AM", u"00:00:00"},
      {Variant(Date{1}), u"12/31/1899", u"31.12.1899"},
      {Variant(u"text"), u"text", u"text"},
  };
  for (const Case& c : table) {
    EXPECT_EQ(show(rt::CStr(c.value, en())), show(c.en)) << typeName(c.value.type());
    EXPECT_EQ(show(rt::CStr(c.value, de())), show(c.de)) << typeName(c.value.type());
  }
  for (const Refused& r : refusedValues()) {
    EXPECT_EQ(errorNumber([&] { (void)rt::CStr(r.value, en()); }), r.error) << r.what;
  }
}

TEST(ConvertCDbl, NumericTextInTheRegionalSettings) {
  struct Case {
    const char16_t* text;
    double en;  // NaN: Type mismatch expected
    double de;
  };
  const double bad = std::numeric_limits<double>::quiet_NaN();
  const Case table[] = {
      {u"2.5", 2.5, 25},
      {u"2,5", 25, 2.5},
      {u"1,234.5", 1234.5, 1.2345},
      {u"1.234,5", 1.2345, 1234.5},
      {u" 12 ", 12, 12},
      {u"\t-12\r\n", -12, -12},
      {u"+3", 3, 3},
      {u"3-", -3, -3},
      {u"3+", 3, 3},
      {u"(3)", -3, -3},
      {u"( 3 )", -3, -3},
      {u"(3", bad, bad},
      {u"3)", bad, bad},
      {u"-(3)", bad, bad},
      {u"--3", bad, bad},
      {u"$3", 3, bad},
      {u"3 \u20AC", bad, 3},
      {u"-$3", -3, bad},
      {u"$-3", -3, bad},
      {u"1e3", 1000, 1000},
      {u"1D-2", 0.01, 0.01},
      {u"1e", bad, bad},
      {u"1e+", bad, bad},
      {u".5", 0.5, bad},
      {u"5.", 5, 5},
      {u"&H10", 16, 16},
      {u"&HFFFF", 65535, 65535},
      {u"&HFFFFFFFF", 4294967295.0, 4294967295.0},
      {u"&o17", 15, 15},
      {u"-&H10", -16, -16},
      {u"&H", bad, bad},
      {u"&H1G", bad, bad},
      {u"", bad, bad},
      {u"   ", bad, bad},
      {u"abc", bad, bad},
      {u"1 2", bad, bad},
      {u"1.2.3", bad, 123},
      {u",5", bad, 0.5},
      {u"0.000000000000000000001", 1e-21, 1},
      {u"0,000000000000000000001", 1, 1e-21},
      {u"1e-400", 0, 0},
  };
  for (const Case& c : table) {
    for (const auto& [rs, expected] : {std::pair{&en(), c.en}, std::pair{&de(), c.de}}) {
      const Variant v(c.text);
      if (std::isnan(expected)) {
        EXPECT_EQ(errorNumber([&] { (void)rt::CDbl(v, *rs); }), 13)
            << show(c.text) << " in " << rs->localeName;
        EXPECT_FALSE(rt::IsNumeric(v, *rs)) << show(c.text) << " in " << rs->localeName;
      } else {
        EXPECT_EQ(rt::CDbl(v, *rs), expected) << show(c.text) << " in " << rs->localeName;
        EXPECT_TRUE(rt::IsNumeric(v, *rs)) << show(c.text) << " in " << rs->localeName;
      }
    }
  }
  EXPECT_EQ(errorNumber([] { (void)rt::CDbl(Variant(u"1e400"), en()); }), 6);
  EXPECT_EQ(errorNumber([] { (void)rt::CDbl(Variant(u"&H1FFFFFFFFFFFFFFFF"), en()); }), 6);
}

TEST(ConvertCDbl, OtherVariantTypes) {
  EXPECT_EQ(rt::CDbl(Variant(), en()), 0);
  EXPECT_EQ(rt::CDbl(Variant(VBool::True), en()), -1);
  EXPECT_EQ(rt::CDbl(Variant(Currency{25000}), en()), 2.5);
  EXPECT_EQ(rt::CDbl(Variant(Date{1.5}), en()), 1.5);
  EXPECT_EQ(rt::CDbl(Variant(0.1F), en()), static_cast<double>(0.1F));
  for (const Refused& r : refusedValues()) {
    EXPECT_EQ(errorNumber([&] { (void)rt::CDbl(r.value, en()); }), r.error) << r.what;
  }
}

TEST(ConvertIntegers, RoundHalvesToEvenFromAnyType) {
  EXPECT_EQ(rt::CIntV(Variant(u"2.5"), en()), 2);
  EXPECT_EQ(rt::CIntV(Variant(u"3,5"), de()), 4);
  EXPECT_EQ(rt::CIntV(Variant(Currency{-25000}), en()), -2);
  EXPECT_EQ(rt::CIntV(Variant(VBool::True), en()), -1);
  EXPECT_EQ(rt::CLngV(Variant(u"-2147483648"), en()), -2147483647 - 1);
  EXPECT_EQ(rt::CLngV(Variant(u"&HFFFF"), en()), 65535);
  EXPECT_EQ(rt::CByteV(Variant(u"255"), en()), 255);
  EXPECT_EQ(rt::CSngV(Variant(u"0.1"), en()), 0.1F);
  EXPECT_EQ(errorNumber([] { (void)rt::CIntV(Variant(u"32768"), en()); }), 6);
  EXPECT_EQ(errorNumber([] { (void)rt::CIntV(Variant(u"&HFFFF"), en()); }), 6);
  EXPECT_EQ(errorNumber([] { (void)rt::CLngV(Variant(u"2147483648"), en()); }), 6);
  EXPECT_EQ(errorNumber([] { (void)rt::CLngV(Variant(-2147483649.0), en()); }), 6);
  EXPECT_EQ(errorNumber([] { (void)rt::CByteV(Variant(u"-1"), en()); }), 6);
  EXPECT_EQ(errorNumber([] { (void)rt::CSngV(Variant(u"1e39"), en()); }), 6);
  EXPECT_EQ(errorNumber([] { (void)rt::CLngV(Variant(u"ten"), en()); }), 13);
  EXPECT_EQ(errorNumber([] { (void)rt::CIntV(Variant(Null{}), en()); }), 94);
}

TEST(ConvertCCur, TextKeepsAllItsDigits) {
  struct Case {
    const char16_t* text;
    std::int64_t scaled;
  };
  const Case table[] = {
      {u"922337203685477.5807", INT64_MAX},
      {u"-922337203685477.5808", INT64_MIN},
      {u"1.23455", 12346},  // a half goes to even at the fourth decimal
      {u"1.23445", 12344},
      {u"1.234451", 12345},
      {u"-0.00005", 0},
      {u"0.00015", 2},
      {u"(12.5)", -125000},
      {u"$1,000.25", 10002500},
      {u"0", 0},
      {u"1e3", 10000000},
  };
  for (const Case& c : table) {
    EXPECT_EQ(rt::CCur(Variant(c.text), en()).scaled, c.scaled) << show(c.text);
  }
  EXPECT_EQ(rt::CCur(Variant(u"2,5"), de()).scaled, 25000);
  EXPECT_EQ(rt::CCur(Variant(2.5), en()).scaled, 25000);
  EXPECT_EQ(rt::CCur(Variant(Currency{7}), en()).scaled, 7);
  EXPECT_EQ(errorNumber([] { (void)rt::CCur(Variant(u"922337203685477.5808"), en()); }), 6);
  EXPECT_EQ(errorNumber([] { (void)rt::CCur(Variant(u"1e16"), en()); }), 6);
  EXPECT_EQ(errorNumber([] { (void)rt::CCur(Variant(u"x"), en()); }), 13);
  EXPECT_EQ(errorNumber([] { (void)rt::CCur(Variant(1e300), en()); }), 6);
  for (const Refused& r : refusedValues()) {
    EXPECT_EQ(errorNumber([&] { (void)rt::CCur(r.value, en()); }), r.error) << r.what;
  }
}

TEST(ConvertCDate, TextInTheRegionalSettings) {
  struct Case {
    const char16_t* text;
    const platform::RegionalSettings* rs;
    int y, mo, d, h, mi, s;
  };
  const Case table[] = {
      {u"11/15/2026", &en(), 2026, 11, 15, 0, 0, 0},
      {u"11/15/2026 4:53:11 AM", &en(), 2026, 11, 15, 4, 53, 11},
      {u"11/15/2026 4:53:11 pm", &en(), 2026, 11, 15, 16, 53, 11},
      {u"12:00:00 AM", &en(), 1899, 12, 30, 0, 0, 0},
      {u"12:30 PM", &en(), 1899, 12, 30, 12, 30, 0},
      {u"4 PM", &en(), 1899, 12, 30, 16, 0, 0},
      {u"15.11.2026", &de(), 2026, 11, 15, 0, 0, 0},
      {u"15.11.2026 04:53:11", &de(), 2026, 11, 15, 4, 53, 11},
      {u"5.1.26", &de(), 2026, 1, 5, 0, 0, 0},
      {u"2026-11-15", &en(), 2026, 11, 15, 0, 0, 0},
      {u"2026-11-15 23:59:59", &de(), 2026, 11, 15, 23, 59, 59},
      {u"November 15, 2026", &en(), 2026, 11, 15, 0, 0, 0},
      {u"Sunday, November 15, 2026", &en(), 2026, 11, 15, 0, 0, 0},
      {u"15 Nov 2026", &en(), 2026, 11, 15, 0, 0, 0},
      {u"15. November 2026", &de(), 2026, 11, 15, 0, 0, 0},
      {u"15. M\u00E4rz 2026", &de(), 2026, 3, 15, 0, 0, 0},
      {u"Nov 2026", &en(), 2026, 11, 1, 0, 0, 0},
      {u"2/29/2000", &en(), 2000, 2, 29, 0, 0, 0},
      // A month beyond 12 reads the other way round.
      {u"15/11/2026", &en(), 2026, 11, 15, 0, 0, 0},
      {u"1/1/30", &en(), 1930, 1, 1, 0, 0, 0},
      {u"1/1/29", &en(), 2029, 1, 1, 0, 0, 0},
  };
  for (const Case& c : table) {
    const rt::DateParts p = rt::splitDate(rt::CDate(Variant(c.text), *c.rs));
    EXPECT_EQ(p.year, c.y) << show(c.text);
    EXPECT_EQ(p.month, c.mo) << show(c.text);
    EXPECT_EQ(p.day, c.d) << show(c.text);
    EXPECT_EQ(p.hour, c.h) << show(c.text);
    EXPECT_EQ(p.minute, c.mi) << show(c.text);
    EXPECT_EQ(p.second, c.s) << show(c.text);
  }
  const char16_t* rejected[] = {u"",      u"abc",          u"2/30/2026", u"13/13/2026",
                                u"25:00", u"13:00 PM",     u"1/2/3/4",   u"12:61",
                                u"46341", u"11/15/2026 x", u"AM",        u"1/1/10000"};
  for (const char16_t* text : rejected) {
    EXPECT_EQ(errorNumber([&] { (void)rt::CDate(Variant(text), en()); }), 13) << show(text);
  }
}

TEST(ConvertCDate, NumbersAreSerials) {
  EXPECT_EQ(rt::CDate(Variant(46341.5), en()).serial, 46341.5);
  EXPECT_EQ(rt::CDate(Variant(static_cast<std::int32_t>(2)), en()).serial, 2);
  EXPECT_EQ(rt::CDate(Variant(VBool::True), en()).serial, -1);
  EXPECT_EQ(rt::CDate(Variant(Date{7.25}), en()).serial, 7.25);
  EXPECT_EQ(errorNumber([] { (void)rt::CDate(Variant(2958466.0), en()); }), 6);
  EXPECT_EQ(errorNumber([] { (void)rt::CDate(Variant(-657435.0), en()); }), 6);
  for (const Refused& r : refusedValues()) {
    EXPECT_EQ(errorNumber([&] { (void)rt::CDate(r.value, en()); }), r.error) << r.what;
  }
}

TEST(ConvertCBool, NumbersAndWords) {
  struct Case {
    Variant value;
    VBool expected;
  };
  const Case table[] = {
      {Variant(0.0), VBool::False},
      {Variant(0.4), VBool::True},
      {Variant(u"True"), VBool::True},
      {Variant(u"false"), VBool::False},
      {Variant(u"TRUE"), VBool::True},
      {Variant(u"0"), VBool::False},
      {Variant(u"-2"), VBool::True},
      {Variant(), VBool::False},
      {Variant(static_cast<VBool>(1)), VBool::True},
      {Variant(Currency{1}), VBool::True},
      {Variant(Date{0}), VBool::False},
  };
  for (const Case& c : table) {
    EXPECT_EQ(rt::CBool(c.value, en()), c.expected) << typeName(c.value.type());
  }
  EXPECT_EQ(errorNumber([] { (void)rt::CBool(Variant(u"yes"), en()); }), 13);
  EXPECT_EQ(errorNumber([] { (void)rt::CBool(Variant(u""), en()); }), 13);
  for (const Refused& r : refusedValues()) {
    EXPECT_EQ(errorNumber([&] { (void)rt::CBool(r.value, en()); }), r.error) << r.what;
  }
}

TEST(ConvertIsNumeric, VariantTypes) {
  struct Case {
    Variant value;
    bool expected;
  };
  const Case table[] = {
      {Variant(), true},
      {Variant(Null{}), false},
      {Variant(3.0), true},
      {Variant(VBool::False), true},
      {Variant(Currency{1}), true},
      {Variant(Date{1}), false},
      {Variant(u"1e3"), true},
      {Variant(u""), false},
      {Variant(ErrorCode{5}), false},
      {Variant::array({Variant(1.0)}), false},
  };
  for (const Case& c : table) {
    EXPECT_EQ(rt::IsNumeric(c.value, en()), c.expected) << typeName(c.value.type());
  }
}

TEST(ConvertCompare, VariantOrdering) {
  struct Case {
    Variant a;
    Variant b;
    int expected;
  };
  const Case table[] = {
      {Variant(2.0), Variant(static_cast<std::int16_t>(10)), -1},
      {Variant(u"2"), Variant(u"10"), 1},  // text by code units
      {Variant(u"a"), Variant(u"B"), 1},
      {Variant(u"abc"), Variant(u"abc"), 0},
      {Variant(2.0), Variant(u"10"), -1},  // numeric text by value
      {Variant(u"10"), Variant(2.0), 1},
      {Variant(u"2.50"), Variant(2.5), 0},
      {Variant(5.0), Variant(u"five"), -1},  // a number sorts before other text
      {Variant(u"five"), Variant(5.0), 1},
      {Variant(), Variant(0.0), 0},
      {Variant(), Variant(u""), 0},
      {Variant(), Variant(u"a"), -1},
      {Variant(VBool::True), Variant(0.0), -1},
      {Variant(Date{2}), Variant(1.5), 1},
      {Variant(Currency{10000}), Variant(1.0F), 0},
  };
  for (const Case& c : table) {
    EXPECT_EQ(rt::compareVariants(c.a, c.b, en()), c.expected)
        << typeName(c.a.type()) << " vs " << typeName(c.b.type());
  }
  EXPECT_EQ(rt::compareVariants(Variant(u"2,5"), Variant(2.5), de()), 0);
  EXPECT_EQ(errorNumber([] { (void)rt::compareVariants(Variant(Null{}), Variant(1.0), en()); }),
            94);
  EXPECT_EQ(errorNumber([] { (void)rt::compareVariants(Variant(1.0), Variant(Null{}), en()); }),
            94);
  EXPECT_EQ(errorNumber([] {
              (void)rt::compareVariants(Variant::array({Variant(1.0)}), Variant(1.0), en());
            }),
            13);
}

}  // namespace
}  // namespace orvo::test

namespace orvo::test {
namespace {

// Text made at random from the characters the readers care about: every coercion returns a
// value or raises its numbered error, and IsNumeric agrees with CDbl.
TEST(ConvertRobustness, RandomTextGivesAValueOrANumberedError) {
  const std::u16string_view alphabet = u"0123456789.,eEdD+-&HhOo ()$\u20AC:/APMamp\u00E4Nov\t";
  std::uint32_t seed = 7;
  auto next = [&seed] {
    seed = seed * 1664525U + 1013904223U;
    return seed >> 8;
  };
  int numbers = 0;
  for (int i = 0; i < 20000; ++i) {
    String text;
    const std::uint32_t length = next() % 14;
    for (std::uint32_t k = 0; k < length; ++k) text += alphabet[next() % alphabet.size()];
    const Variant v(text);
    for (const auto* rs : {&en(), &de()}) {
      const int cdbl = errorNumber([&] { (void)rt::CDbl(v, *rs); });
      EXPECT_TRUE(cdbl == 0 || cdbl == 6 || cdbl == 13) << cdbl << " [" << show(text) << "]";
      EXPECT_EQ(rt::IsNumeric(v, *rs), cdbl == 0) << show(text);
      numbers += cdbl == 0 ? 1 : 0;
      const int cdate = errorNumber([&] { (void)rt::CDate(v, *rs); });
      EXPECT_TRUE(cdate == 0 || cdate == 13) << cdate << " [" << show(text) << "]";
      const int val = errorNumber([&] { (void)rt::Val(text); });
      EXPECT_TRUE(val == 0 || val == 6) << val << " [" << show(text) << "]";
    }
  }
  EXPECT_GT(numbers, 100);
}

}  // namespace
}  // namespace orvo::test
