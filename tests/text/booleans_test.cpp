#include <gtest/gtest.h>

#include <tuple>
#include <vector>

#include "orvogeneric/error.hpp"
#include "support/test_support.hpp"
#include "text/strings.hpp"
#include "text/strings_fixture.hpp"

namespace orvo::text {
namespace {

using test::show;

TEST_F(StringsTest, BooleanKeywordsAndNames) {
  // Text, bDefault, result, DefaultUsed.
  const std::vector<std::tuple<String, VBool, VBool, VBool>> cases = {
      {u" yes ", F, T, F}, {u"Y", F, T, F},     {u"true", F, T, F},  {u"t", F, T, F},
      {u"On", F, T, F},    {u"1", F, T, F},     {u"-1", F, T, F},    {u"NO", T, F, F},
      {u"n", T, F, F},     {u"False", T, F, F}, {u"f", T, F, F},     {u"off", T, F, F},
      {u"0", T, F, F},     {u"maybe", T, T, T}, {u"maybe", F, F, T}, {u"", T, T, T},
      {u"\tyes", F, F, T}, {u"+1", T, T, T},    {u"0.0", T, T, T},
  };
  for (const auto& [text, def, expected, defaultUsed] : cases) {
    VBool used = static_cast<VBool>(7);
    const VBool got = bStringToBoolean(text, def, &used);
    EXPECT_EQ(std::pair(got, used), std::pair(expected, defaultUsed)) << show(text);
    EXPECT_EQ(bStringToBoolean(text, def), expected) << show(text);
  }
  EXPECT_EQ(bStringToBoolean(u"x", static_cast<VBool>(1)), static_cast<VBool>(1));

  EXPECT_EQ(sBooleanToString(T), u"True");
  EXPECT_EQ(sBooleanToString(F), u"False");
  EXPECT_EQ(sBooleanToString(static_cast<VBool>(1)), u"");
}

}  // namespace
}  // namespace orvo::text
