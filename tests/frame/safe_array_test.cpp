#include <gtest/gtest.h>

#include <climits>

#include "orvogeneric/variant.hpp"
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

// Every element type has its store, and a ReDim'd element is that type's zero; types without a
// store of their own keep variants.
TEST(SafeArrayTest, AFreshElementIsTheZeroOfItsType) {
  const std::pair<VarType, Variant> cases[] = {
      {VarType::Empty, Variant()},
      {VarType::Null, Variant()},
      {VarType::Integer, Variant(std::int16_t{0})},
      {VarType::Long, Variant(std::int32_t{0})},
      {VarType::Single, Variant(0.0F)},
      {VarType::Double, Variant(0.0)},
      {VarType::Currency, Variant(Currency{0})},
      {VarType::Date, Variant(Date{0})},
      {VarType::String, Variant(String())},
      {VarType::Object, Variant(std::shared_ptr<Object>())},
      {VarType::Error, Variant()},
      {VarType::Boolean, Variant(VBool::False)},
      {VarType::Variant, Variant()},
      {VarType::Byte, Variant(std::uint8_t{0})}};
  for (const auto& [type, fresh] : cases) {
    SafeArray a(type);
    a.redim(0, 1);
    EXPECT_EQ(a.get(1), fresh) << typeName(type);
    EXPECT_EQ(a.get(1).type(), fresh.type()) << typeName(type);
  }
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

}  // namespace
}  // namespace orvo
