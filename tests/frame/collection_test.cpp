#include "orvogeneric/collection.hpp"

#include <gtest/gtest.h>

#include "support/test_support.hpp"

namespace orvo {
namespace {

using test::errorNumber;

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

}  // namespace
}  // namespace orvo
