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
  for (const auto& row : test::readTestData("frame/safe_array_assignments.tsv", 4)) {
    SCOPED_TRACE("data line " + std::to_string(row.line));
    const VarType type = test::varTypeOf(row.fields[0]);
    const Variant assigned = test::variantOf(row.fields[1]);
    const auto error = static_cast<std::int32_t>(test::integerOf(row.fields[3]));
    SafeArray a(type);
    a.redim(1, 2);
    const Variant before = a.get(1);
    EXPECT_EQ(errorNumber([&] { a.set(1, assigned); }), error);
    EXPECT_EQ(a.get(1), error == 0 ? test::variantOf(row.fields[2]) : before)
        << "a failed assignment changes nothing";
    EXPECT_EQ(errorNumber([&] { a.set(3, assigned); }), 9);
    EXPECT_EQ(a.elementType(), type);
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
  for (const auto& row : test::readTestData("frame/safe_array_fresh.tsv", 2)) {
    SafeArray a(test::varTypeOf(row.fields[0]));
    a.redim(0, 1);
    const Variant fresh = test::variantOf(row.fields[1]);
    EXPECT_EQ(a.get(1), fresh) << "data line " << row.line;
    EXPECT_EQ(a.get(1).type(), fresh.type()) << "data line " << row.line;
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
