#include "orvogeneric/variant.hpp"

#include <gtest/gtest.h>

#include <climits>

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
  EXPECT_EQ(*oneBased.get(2).get<std::int32_t>(), 8);
  EXPECT_EQ(errorNumber([&] { (void)oneBased.get(0); }), 9);
  EXPECT_EQ(errorNumber([&] { (void)oneBased.get(3); }), 9);
  oneBased.redim(-2, 0);
  EXPECT_EQ(oneBased.size(), 3U);
  EXPECT_EQ(oneBased.get(-2), Variant(std::int32_t{0})) << "ReDim fills with the element's zero";
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
  Variant words(SafeArray(0, std::vector<String>{u"p", u"q"}));
  Variant kept = words;
  words.array()->set(1, Variant(u"r"));
  String o = u"o";  // swapped in: GCC 12 misreports assigning a literal here (-Wrestrict)
  std::swap(words.array()->elements<String>()->front(), o);
  EXPECT_EQ(*kept.array()->elements<String>(), (std::vector<String>{u"p", u"q"}));
  EXPECT_EQ(*words.array()->elements<String>(), (std::vector<String>{u"o", u"r"}));
  SafeArray redimmed = *kept.array();
  redimmed.redim(0, 0);
  EXPECT_EQ(kept.array()->size(), 2U) << "a ReDim of a copy leaves the original alone";
}

TEST(SafeArrayTest, ElementsAreStoredByTheirType) {
  test::ScopedLocale locale("en_US.UTF-8");
  struct Case {
    VarType type;
    Variant assigned;
    Variant stored;  // what reading the element back gives; Empty: the assignment raises
    std::int32_t error;
  };
  const Case cases[] = {
      {VarType::Byte, Variant(std::int32_t{255}), Variant(std::uint8_t{255}), 0},
      {VarType::Byte, Variant(std::int32_t{256}), {}, 6},
      {VarType::Byte, Variant(u"12"), Variant(std::uint8_t{12}), 0},
      {VarType::Integer, Variant(2.5), Variant(std::int16_t{2}), 0},  // halves to even
      {VarType::Integer, Variant(40000.0), {}, 6},
      {VarType::Long, Variant(u"x"), {}, 13},
      {VarType::Long, Variant(VBool::True), Variant(std::int32_t{-1}), 0},
      {VarType::Double, Variant(u"1.5"), Variant(1.5), 0},
      {VarType::String, Variant(1.5), Variant(u"1.5"), 0},
      {VarType::String, Variant(Null{}), {}, 94},
      {VarType::String, Variant::array({}), {}, 13},
      {VarType::Boolean, Variant(u"true"), Variant(VBool::True), 0},
      {VarType::Currency, Variant(u"1.00005"), Variant(Currency{10000}), 0},
      {VarType::Variant, Variant(u"anything"), Variant(u"anything"), 0},
      {VarType::Variant, Variant::array({Variant(1.0)}), Variant::array({Variant(1.0)}), 0},
      {VarType::Object, Variant(1.0), {}, 13},
  };
  for (const auto& c : cases) {
    SafeArray a(c.type);
    a.redim(1, 2);
    const Variant before = a.get(1);
    const std::int32_t error = errorNumber([&] { a.set(1, c.assigned); });
    EXPECT_EQ(error, c.error) << typeName(c.type);
    if (c.error == 0) {
      EXPECT_EQ(a.get(1), c.stored) << typeName(c.type);
    } else {
      EXPECT_EQ(a.get(1), before) << typeName(c.type) << ": a failed assignment changes nothing";
    }
    EXPECT_EQ(errorNumber([&] { a.set(3, c.assigned); }), 9);
    EXPECT_EQ(a.elementType(), c.type);
  }
  // Only a Variant array hands out its elements as variants.
  SafeArray longs(0, std::vector<std::int32_t>{1, 2});
  EXPECT_EQ(errorNumber([&] { (void)longs.at(0); }), 13);
  EXPECT_EQ(errorNumber([&] { (void)longs.bytes(); }), 13);
  ASSERT_NE(longs.elements<std::int32_t>(), nullptr);
  EXPECT_EQ(longs.elements<double>(), nullptr);
  // Coercion applies to the items of a typed array built from variants.
  const SafeArray fromVariants(VarType::Double, 0, {Variant(u"2.5"), Variant(std::int16_t{3})});
  EXPECT_EQ(*fromVariants.elements<double>(), (std::vector<double>{2.5, 3.0}));
  EXPECT_EQ(errorNumber([] { (void)SafeArray(VarType::Long, 0, {Variant(u"no")}); }), 13);
}

TEST(SafeArrayTest, AByteArrayOccupiesItsBytes) {
  constexpr std::size_t n = 50'000'000;
  SafeArray bytes(VarType::Byte);
  bytes.redim(0, static_cast<std::int32_t>(n) - 1);
  EXPECT_EQ(bytes.elementBytes(), n);
  const SafeArray given(7, std::vector<std::uint8_t>(n, 0x41));
  EXPECT_EQ(given.elementBytes(), n);
  EXPECT_EQ(given.bytes().size(), n);
  EXPECT_EQ(given.get(7), Variant(std::uint8_t{0x41}));
  EXPECT_EQ(given.upperBound(), static_cast<std::int32_t>(n) + 6);
  // A copy shares the bytes until one side writes.
  SafeArray copy = given;
  EXPECT_TRUE(copy.sharesElementsWith(given));
  copy.bytes()[0] = 0x42;
  EXPECT_FALSE(copy.sharesElementsWith(given));
  EXPECT_EQ(given.bytes()[0], 0x41);
  EXPECT_EQ(copy.get(7), Variant(std::uint8_t{0x42}));
}

TEST(SafeArrayTest, BoundsFitInALong) {
  EXPECT_EQ(errorNumber([] { (void)SafeArray(INT32_MAX, std::vector<std::int32_t>{1, 2}); }), 6);
  EXPECT_EQ(errorNumber([] { (void)SafeArray(INT32_MIN, std::vector<std::int32_t>{}); }), 6);
  EXPECT_EQ(SafeArray(INT32_MIN, std::vector<std::int32_t>{5}).upperBound(), INT32_MIN);
  EXPECT_EQ(SafeArray(INT32_MAX, std::vector<std::int32_t>{5}).upperBound(), INT32_MAX);
  SafeArray a(VarType::String);
  EXPECT_EQ(errorNumber([&] { a.redim(5, 3); }), 9);
  a.redim(5, 4);
  EXPECT_EQ(a.size(), 0U);
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
