#include "orvogeneric/variant.hpp"

#include <gtest/gtest.h>

#include "orvogeneric/collection.hpp"
#include "orvogeneric/error.hpp"
#include "support/test_support.hpp"

namespace orvo {
namespace {

using test::errorNumber;

TEST(VariantTest, NeverDimensionedDiffersFromEmptyArray) {
  const SafeArray never(VarType::String);
  EXPECT_EQ(errorNumber([&] { (void)never.upperBound(); }), 9);
  EXPECT_EQ(errorNumber([&] { (void)never.lowerBound(); }), 9);
  SafeArray empty(VarType::Variant, 0, {});
  EXPECT_EQ(empty.upperBound(), -1);
  SafeArray oneBased(VarType::Long, 1, {Variant(std::int32_t{7}), Variant(std::int32_t{8})});
  EXPECT_EQ(oneBased.upperBound(), 2);
  EXPECT_EQ(*oneBased.at(2).get<std::int32_t>(), 8);
  EXPECT_EQ(errorNumber([&] { (void)oneBased.at(0); }), 9);
  EXPECT_EQ(errorNumber([&] { (void)oneBased.at(3); }), 9);
  oneBased.redim(-2, 0);
  EXPECT_EQ(oneBased.size(), 3U);
  EXPECT_EQ(oneBased.at(-2), Variant(std::int32_t{0})) << "ReDim fills with the element's zero";
  oneBased.erase();
  EXPECT_FALSE(oneBased.dimensioned());
}

TEST(VariantTest, CopiesOfArraysAreIndependent) {
  Variant a = Variant::array({Variant(u"x")});
  Variant b = a;
  b.array()->at(0) = Variant(u"y");
  EXPECT_EQ(*a.array()->at(0).get<String>(), u"x");
  EXPECT_NE(a, b);
  b = a;
  EXPECT_EQ(a, b);
}

TEST(VariantTest, TypesAndMissing) {
  struct Case {
    Variant v;
    VarType type;
    bool numeric;
  };
  const Case cases[] = {
      {Variant(), VarType::Empty, true},
      {Variant(Null{}), VarType::Null, false},
      {Variant(std::int16_t{1}), VarType::Integer, true},
      {Variant(std::int32_t{1}), VarType::Long, true},
      {Variant(1.0F), VarType::Single, true},
      {Variant(1.0), VarType::Double, true},
      {Variant(Currency{1}), VarType::Currency, true},
      {Variant(Date{1}), VarType::Date, true},
      {Variant(u"1"), VarType::String, false},
      {Variant(VBool::True), VarType::Boolean, true},
      {Variant(std::uint8_t{1}), VarType::Byte, true},
      {Variant(std::shared_ptr<Object>()), VarType::Object, false},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.v.type(), c.type) << typeName(c.type);
    EXPECT_EQ(c.v.isNumeric(), c.numeric) << typeName(c.type);
  }
  EXPECT_TRUE(Variant::missing().isMissing());
  EXPECT_FALSE(Variant(ErrorCode{5}).isMissing());
  EXPECT_EQ(static_cast<std::int16_t>(VBool::True), -1);
  EXPECT_FALSE(isTrue(static_cast<VBool>(1))) << "1 is not the canonical true";
  EXPECT_TRUE(nonZero(static_cast<VBool>(1)));
}

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

TEST(CollectionTest, KeysAreUniqueWithoutRegardToCase) {
  Collection c;
  c.Add(Variant(u"first"), u"Alpha");
  c.Add(Variant(u"second"));
  c.Add(Variant(u"third"), u"gamma");
  EXPECT_EQ(c.Count(), 3);
  EXPECT_EQ(*c.Item(u"ALPHA").get<String>(), u"first");
  EXPECT_EQ(*c.Item(2).get<String>(), u"second");
  EXPECT_EQ(*c.Item(Variant(u"Gamma")).get<String>(), u"third");
  EXPECT_EQ(*c.Item(Variant(3.0)).get<String>(), u"third");
  EXPECT_EQ(errorNumber([&] { c.Add(Variant(1.0), u"alpha"); }), 457);
  EXPECT_EQ(errorNumber([&] { (void)c.Item(u"delta"); }), 5) << "how callers probe for keys";
  EXPECT_EQ(errorNumber([&] { (void)c.Item(0); }), 9);
  EXPECT_EQ(errorNumber([&] { (void)c.Item(Variant(1.5F)); }), 13);
  c.Remove(u"alpha");
  EXPECT_EQ(*c.Item(1).get<String>(), u"second");
  c.Remove(1);
  EXPECT_EQ(c.Count(), 1);
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
