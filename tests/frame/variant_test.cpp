#include "orvogeneric/variant.hpp"

#include <gtest/gtest.h>

#include <tuple>

#include "support/test_support.hpp"

namespace orvo {
namespace {

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

TEST(VariantTest, TypesAndMissing) {
  // Each kind of value, its type and whether it counts as numeric.
  const std::tuple<Variant, VarType, bool> cases[] = {
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
      {Variant(ErrorCode{1}), VarType::Error, false},
      {Variant::array({Variant(1.0)}), VarType::Variant, false}};
  for (const auto& [v, type, numeric] : cases) {
    EXPECT_EQ(v.type(), type) << typeName(type);
    EXPECT_EQ(v.isNumeric(), numeric) << typeName(type);
  }
  EXPECT_TRUE(Variant::missing().isMissing());
  EXPECT_FALSE(Variant(ErrorCode{5}).isMissing());
  EXPECT_EQ(static_cast<std::int16_t>(VBool::True), -1);
  EXPECT_FALSE(isTrue(static_cast<VBool>(1))) << "1 is not the canonical true";
  EXPECT_TRUE(nonZero(static_cast<VBool>(1)));
}

}  // namespace
}  // namespace orvo
