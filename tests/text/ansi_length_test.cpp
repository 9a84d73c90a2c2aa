#include <gtest/gtest.h>

#include <tuple>
#include <vector>

#include "orvogeneric/error.hpp"
#include "support/test_support.hpp"
#include "text/strings.hpp"
#include "text/strings_fixture.hpp"

namespace orvo::text {
namespace {

TEST_F(StringsTest, LenBAnsiAndDbcsCorrectionFollowTheSystemCodePage) {
  const char* en = "en_US.UTF-8";
  const char* ja = "ja_JP.UTF-8";
  // Locale, text, LenB_ANSI, the text after CorrectDLLStringForDBCS.
  const std::vector<std::tuple<const char*, String, std::int32_t, String>> cases = {
      {en, u"\u3042", 1, u"\u3042"},     {en, u"\u00E9\u20AC", 2, u"\u00E9\u20AC"},
      {ja, u"a\u3042b", 4, u"a\u3042 "}, {en, u"\U0001F600", 2, u"\U0001F600"},
      {ja, u"\u3042", 2, u" "},          {ja, u"\u3042\u3044\u3046", 6, u"\u3042  "},
      {ja, u"\uFF71bc", 3, u"\uFF71bc"},
  };
  for (const auto& [locale, text, bytes, corrected] : cases) {
    test::ScopedLocale scoped(locale);
    String s = text;
    CorrectDLLStringForDBCS(s);
    EXPECT_EQ(std::pair(LenB_ANSI(text), s), std::pair(bytes, corrected)) << locale;
  }
}

}  // namespace
}  // namespace orvo::text
