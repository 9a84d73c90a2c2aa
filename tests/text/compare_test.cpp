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

TEST_F(StringsTest, StrCompTrimsSpacesAndUpperCasesOnRequest) {
  // String1, String2, CaseSensitive, TrimWords, result. Both sides are upper-cased: dotless i
  // becomes I.
  const std::vector<std::tuple<String, String, VBool, VBool, VBool>> cases = {
      {u"abc", u"ABC", T, T, F},   {u"\tabc", u"abc", F, T, F},
      {u" abc ", u"abc", F, T, T}, {u"stra\u00DFe", u"STRASSE", F, T, F},
      {u" abc ", u"abc", F, F, F}, {u"\u00E9", u"\u00C9", F, T, T},
      {u"\u0131", u"i", F, T, T},  {u"a", u"a", static_cast<VBool>(1), F, T},
  };
  for (const auto& [a, b, caseSensitive, trim, expected] : cases) {
    EXPECT_EQ(bStrComp(a, b, caseSensitive, trim), expected) << show(a) << " vs " << show(b);
  }
}

}  // namespace
}  // namespace orvo::text
