#include "orvogeneric/types.hpp"

#include <gtest/gtest.h>

#include "support/test_support.hpp"

namespace orvo {
namespace {

using test::errorNumber;

TEST(VariantTest, CurrencyRoundsHalvesToEvenAndOverflows) {
  EXPECT_EQ(Currency::fromDouble(1.23455).scaled, 12346);  // binary 1.23455 is above the half
  EXPECT_EQ(Currency::fromDouble(0.00005).scaled, 0);
  EXPECT_EQ(Currency::fromDouble(0.00025).scaled, 2);
  EXPECT_EQ(Currency::fromDouble(0.00035).scaled, 4);
  EXPECT_EQ(Currency::fromDouble(-0.00025).scaled, -2);
  EXPECT_EQ(Currency::fromDouble(-2.5).scaled, -25000);
  EXPECT_EQ(errorNumber([] { (void)Currency::fromDouble(1e15); }), 6);
  EXPECT_EQ(errorNumber([] { (void)Currency::fromDouble(-1e300); }), 6);
}

TEST(Utf8Test, RoundTripsAndReplacesWhatIsNotText) {
  const String text = u"caf\u00e9 \u3042 \U0001F600";
  EXPECT_EQ(fromUtf8(toUtf8(text)), text);
  EXPECT_EQ(toUtf8(String(1, u'\xD800')), "\xEF\xBF\xBD");
  EXPECT_EQ(fromUtf8("a\xC3"), u"a\uFFFD");
  EXPECT_EQ(fromUtf8("\xE0\x80\x80"), u"\uFFFD\uFFFD\uFFFD") << "overlong forms are not text";
}

}  // namespace
}  // namespace orvo
