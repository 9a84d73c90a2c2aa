#include "orvogeneric/variant.hpp"

#include <gtest/gtest.h>

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
  words.array()->elements<String>()->set(0, u"o");
  EXPECT_EQ(kept.array()->elements<String>()->toVector(), (std::vector<String>{u"p", u"q"}));
  EXPECT_EQ(words.array()->elements<String>()->toVector(), (std::vector<String>{u"o", u"r"}));
  SafeArray redimmed = *kept.array();
  redimmed.redim(0, 0);
  EXPECT_EQ(kept.array()->size(), 2U) << "a ReDim of a copy leaves the original alone";
}

TEST(VariantTest, TypesAndMissing) {
  for (const auto& row : test::readTestData("frame/variant_types.tsv", 3)) {
    const Variant v = test::variantOf(row.fields[0]);
    EXPECT_EQ(v.type(), test::varTypeOf(row.fields[1])) << "data line " << row.line;
    EXPECT_EQ(v.isNumeric(), row.fields[2] == u"T") << "data line " << row.line;
  }
  EXPECT_TRUE(Variant::missing().isMissing());
  EXPECT_FALSE(Variant(ErrorCode{5}).isMissing());
  EXPECT_EQ(static_cast<std::int16_t>(VBool::True), -1);
  EXPECT_FALSE(isTrue(static_cast<VBool>(1))) << "1 is not the canonical true";
  EXPECT_TRUE(nonZero(static_cast<VBool>(1)));
}

}  // namespace
}  // namespace orvo
