#include <gtest/gtest.h>

#include <tuple>
#include <vector>

#include "text/strings.hpp"
#include "text/strings_fixture.hpp"

namespace orvo::text {
namespace {

using test::errorOf;
using test::show;

TEST_F(StringsTest, StringInArrayReportsTheFirstMatch) {
  const Variant names = Variant(arrayOf({u"alpha", u" Beta", u"beta", u"7"}, 1));
  // Find, CaseSensitive, TrimWords, result, Index.
  const std::vector<std::tuple<String, VBool, VBool, VBool, std::int32_t>> cases = {
      {u"BETA", F, T, T, 2},  {u"beta", T, T, T, 3},    {u"beta", F, F, T, 3},
      {u" beta", F, F, T, 2}, {u"gamma", F, T, F, -99}, {u"7", F, T, T, 4},
  };
  for (const auto& [find, caseSensitive, trim, expected, expectedIndex] : cases) {
    std::int32_t index = -99;
    const VBool got = bStringInArray(find, names, &index, caseSensitive, trim);
    EXPECT_EQ(std::pair(got, index), std::pair(expected, expectedIndex)) << show(find);
  }
  std::int32_t index = -1;
  EXPECT_EQ(bStringInArray(u"2.5", Variant(arrayOf({std::int16_t{5}, 2.5})), &index), T);
  EXPECT_EQ(index, 1);
  EXPECT_EQ(bStringInArray(u"x", Variant(u"x")), F);
  EXPECT_EQ(bStringInArray(u"x", Variant(SafeArray())), F);
  const Error e = errorOf([] { (void)bStringInArray(u"x", Variant(arrayOf({Null{}, u"x"}))); });
  EXPECT_EQ(e.number(), 94);
  EXPECT_NE(e.description().find(u"Error handled by bStringInArray"), String::npos);
}

TEST_F(StringsTest, CollectionsAndArraysCountAsPresentOnlyWhenTheyHoldSomething) {
  auto col = std::make_shared<Collection>();
  col->Add(Variant(u"one"), u"First");
  col->Add(Variant(Null{}), u"Second");
  const std::vector<std::tuple<String, VBool, VBool>> keys = {
      {u"First", T, T},   {u"FIRST", T, T},  {u" first ", T, T},
      {u" first ", F, F}, {u"Second", T, T}, {u"Third", T, F},
  };
  for (const auto& [key, trim, expected] : keys) {
    EXPECT_EQ(bIsInCollection(col, key, trim), expected) << show(key);
  }
  EXPECT_EQ(bIsInCollection(nullptr, u"First"), F);

  // Name, value, IsArrayInitialised with and without bCheckBounds.
  const std::vector<std::tuple<const char*, Variant, VBool, VBool>> arrays = {
      {"not an array", Variant(std::int32_t{3}), F, F},
      {"never dimensioned", Variant(SafeArray(VarType::String)), F, F},
      {"no elements", Variant(arrayOf({})), F, T},
      {"negative bounds", Variant(arrayOf({1, 2}, -5)), T, T},
  };
  for (const auto& [name, v, checked, unchecked] : arrays) {
    EXPECT_EQ(IsArrayInitialised(v, T), checked) << name;
    EXPECT_EQ(IsArrayInitialised(v, F), unchecked) << name;
  }
}

TEST_F(StringsTest, MaximumAndMinimumKeepTheEarliestOfEqualElements) {
  std::vector<Variant> top(32767, Variant(1.0));
  top[32766] = Variant(2.0);
  // Name, values, maximum and minimum (with their types) or the error number. Nothing compares
  // with a Null in front; the 16-bit counter overflows stepping past 32767.
  const std::vector<std::tuple<const char*, SafeArray, Variant, Variant, std::int32_t>> cases = {
      {"ties", arrayOf({std::int32_t{3}, std::int32_t{7}, 7.0, std::int16_t{2}, 2.0}),
       std::int32_t{7}, std::int16_t{2}, 0},
      {"strings by code units", arrayOf({u"b", u"a", u"B"}), u"b", u"B", 0},
      {"one element", arrayOf({2.5}, 7), 2.5, 2.5, 0},
      {"null elements are passed over", arrayOf({1.0, Null{}, 5.0, 0.5}), 5.0, 0.5, 0},
      {"leading null stays", arrayOf({Null{}, 9.0}), Null{}, Null{}, 0},
      {"last index the counter reaches", arrayOf(top), 2.0, 1.0, 0},
      {"no elements", arrayOf({}), {}, {}, 9},
      {"never dimensioned", SafeArray(), {}, {}, 9},
      {"upper bound beyond 32767", arrayOf(std::vector<Variant>(40000, Variant(1.0))), {}, {}, 6},
      {"lower bound at the top", arrayOf({1.0}, 32767), {}, {}, 6},
      {"counter steps past 32767", arrayOf(std::vector<Variant>(32768, Variant(1.0))), {}, {}, 6},
  };
  for (const auto& [name, vals, max, min, number] : cases) {
    SCOPED_TRACE(name);
    EXPECT_EQ(test::errorNumber([&v = vals] { (void)Maximum_Worker(v); }), number);
    EXPECT_EQ(test::errorNumber([&v = vals] { (void)Minimum_Worker(v); }), number);
    if (number != 0) continue;
    const Variant gotMax = Maximum_Worker(vals);
    const Variant gotMin = Minimum_Worker(vals);
    EXPECT_EQ(std::pair(gotMax.type(), gotMin.type()), std::pair(max.type(), min.type()));
    EXPECT_TRUE(max.isNull() || (gotMax == max && gotMin == min));
  }
  for (const auto& [worker, procedure] : {std::pair{&Maximum_Worker, u"Maximum_Worker"},
                                          std::pair{&Minimum_Worker, u"Minimum_Worker"}}) {
    const String description = errorOf([w = worker] { (void)w(SafeArray()); }).description();
    EXPECT_NE(description.find(u"Error handled by " + String(procedure)), String::npos);
  }
}

}  // namespace
}  // namespace orvo::text
