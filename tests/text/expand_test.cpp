#include <gtest/gtest.h>

#include <tuple>
#include <vector>

#include "text/strings.hpp"
#include "text/strings_fixture.hpp"

namespace orvo::text {
namespace {

using test::errorOf;

TEST_F(StringsTest, ExpandStringReplacesHighestIndexFirst) {
  std::vector<Variant> twelve;
  for (int i = 0; i < 12; ++i) twelve.emplace_back(u"<" + fromUtf8(std::to_string(i)) + u">");
  const std::vector<std::tuple<const char*, String, std::vector<Variant>, std::int32_t, String>>
      cases = {
          {"order of arguments", u"%1 of %0", {u"a", u"b"}, 0, u"b of a"},
          {"two digits before one", u"%11|%1|%10", twelve, 0, u"<11>|<1>|<10>"},
          {"beyond the last argument", u"%3 %2", {u"a", u"b", u"c"}, 0, u"%3 c"},
          {"every occurrence", u"%0%0-%0", {u"x"}, 0, u"xx-x"},
          {"counted from the lower bound", u"%0,%1", {u"one", u"two"}, 5, u"one,two"},
          {"substituted text is searched again", u"%3", {u"A", u"B", u"C", u"%0"}, 0, u"A"},
          {"lower text is not searched again", u"%0", {u"%1", u"B"}, 0, u"%1"},
          {"a leading zero is no placeholder", u"%01", {u"a", u"b"}, 0, u"a1"},
          {"literal percent before a placeholder", u"%%0", {u"a"}, 0, u"%a"},
          {"default text forms", u"%0;%1;%2", {2.5, std::int32_t{-7}, T}, 0, u"2.5;-7;True"},
          {"values without text become empty", u"[%0][%1]", {Null{}, u"z"}, 0, u"[][z]"},
          {"no arguments", u"x%0y", {}, 0, u"x%0y"},
      };
  for (const auto& [name, tmpl, args, lowerBound, expected] : cases) {
    EXPECT_EQ(ExpandString_Worker(tmpl, Variant(arrayOf(args, lowerBound))), expected) << name;
  }
  // Anything but an array is one empty argument.
  EXPECT_EQ(ExpandString_Worker(u"x%0y%1", Variant(u"ignored")), u"xy%1");
  const Error e = errorOf([] { (void)ExpandString_Worker(u"%0", SafeArray()); });
  EXPECT_EQ(e.number(), 9);
  EXPECT_NE(e.description().find(u"Error handled by ExpandString_Worker"), String::npos);

  test::ScopedLocale german("de_DE.UTF-8");
  EXPECT_EQ(ExpandString_Worker(u"v=%0", arrayOf({Variant(2.5)})), u"v=2,5");
}

}  // namespace
}  // namespace orvo::text
