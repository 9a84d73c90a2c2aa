#include "runtime/format.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <tuple>

#include "runtime/convert.hpp"
#include "runtime/dates.hpp"
#include "runtime/golden_cases.hpp"
#include "runtime/numbers.hpp"
#include "support/test_support.hpp"

namespace orvo::test {
namespace {

using namespace runtime_golden;
using runtime::Format;

const platform::RegionalSettings& en() { return settingsFor("1033"); }
const platform::RegionalSettings& de() { return settingsFor("1031"); }

TEST(FormatGolden, EveryRecordedRow) {
  runGolden("format", goldenCases("format.tsv"), [](const GoldenCase& c) {
    // Format hands back a String: the platform's null BSTR for a Null value is the empty one.
    String out = Format(variantFor(c), c.format, settingsFor(c.locale));
    if (c.type != "NULL") return out;
    EXPECT_TRUE(out.empty());
    return String(u"<null>");
  });
}

// --- beyond the recording --------------------------------------------------------------------

TEST(FormatTable, PatternsTheRecordingLacks) {
  for (const auto& row : readTestData("runtime/format_patterns.tsv", 4)) {
    SCOPED_TRACE("data line " + std::to_string(row.line));
    const auto& f = row.fields;
    const Variant value = typedValue(f[0]);
    EXPECT_EQ(show(Format(value, f[1], en())), show(f[2]));
    EXPECT_EQ(show(Format(value, f[1], de())), show(f[3]));
  }
}

TEST(FormatTable, CurrencyFollowsTheLocalePicture) {
  for (const auto& row : readTestData("runtime/format_currency.tsv", 6)) {
    SCOPED_TRACE("data line " + std::to_string(row.line));
    const auto& f = row.fields;
    platform::RegionalSettings rs = en();
    rs.currencyPositiveMode = static_cast<int>(integerOf(f[0]));
    rs.currencyNegativeMode = static_cast<int>(integerOf(f[1]));
    rs.currencyDigits = static_cast<int>(integerOf(f[2]));
    rs.currencySymbol = f[3];
    EXPECT_EQ(show(Format(Variant(parseHexDouble(f[4])), u"Currency", rs)), show(f[5]));
  }
}

TEST(FormatErrors, BadValuesRaiseNumberedErrors) {
  const std::tuple<Variant, const char16_t*, int> table[] = {
      {Variant::array({Variant(1.0)}), u"0", 13},
      {Variant(ErrorCode{5}), u"0", 13},
      {Variant(Date{3e6}), u"yyyy", 5},
      {Variant(1e300), u"yyyy", 5},
      {Variant(std::numeric_limits<double>::infinity()), u"0", 6}};
  for (const auto& [value, pattern, error] : table) {
    EXPECT_EQ(errorNumber([&] { (void)Format(value, pattern, en()); }), error) << show(pattern);
  }
}

// Patterns and text built at random from the characters that mean something to Format and to
// the readers of numbers and dates: each call returns a value or raises its numbered error,
// never anything else (the sanitizer build turns any memory fault into a failure), and
// IsNumeric agrees with CDbl.
TEST(RuntimeRobustness, RandomPatternsAndTextGiveAValueOrANumberedError) {
  const std::u16string_view alphabet =
      u"0#.,%Ee+-;\"\\@&<>!dmyhnswqtcAaMPp/: $()xDHOo\u20AC\u00E4Nov\t";
  std::minstd_rand random(20261115);
  int numbers = 0;
  for (int i = 0; i < 3000; ++i) {
    String text;
    for (auto length = random() % 14; length > 0; --length) {
      // Half of the characters digits, so that some of the text reads as a number.
      text += random() % 2 == 0 ? static_cast<char16_t>(u'0' + random() % 10)
                                : alphabet[random() % alphabet.size()];
    }
    for (const auto* rs : {&en(), &de()}) {
      for (const Variant& v : {Variant(), Variant(-1234.5678), Variant(-4.9e-324), Variant(2.5F),
                               Variant(Currency{INT64_MIN}), Variant(Date{-657434.5}),
                               Variant(u"12,5"), Variant(u"")}) {
        const int error = errorNumber([&] { (void)Format(v, text, *rs); });
        EXPECT_TRUE(error == 0 || error == 5 || error == 6 || error == 13)
            << error << " for [" << show(text) << "]";
      }
      const Variant v(text);
      const int cdbl = errorNumber([&] { (void)runtime::CDbl(v, *rs); });
      EXPECT_TRUE(cdbl == 0 || cdbl == 6 || cdbl == 13) << cdbl << " [" << show(text) << "]";
      EXPECT_EQ(runtime::IsNumeric(v, *rs), cdbl == 0) << show(text);
      numbers += cdbl == 0 ? 1 : 0;
      const int cdate = errorNumber([&] { (void)runtime::CDate(v, *rs); });
      EXPECT_TRUE(cdate == 0 || cdate == 13) << cdate << " [" << show(text) << "]";
      const int val = errorNumber([&] { (void)runtime::Val(text); });
      EXPECT_TRUE(val == 0 || val == 6) << val << " [" << show(text) << "]";
    }
  }
  EXPECT_GT(numbers, 100);
}

}  // namespace
}  // namespace orvo::test
