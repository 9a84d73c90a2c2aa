#include "orvogeneric/error.hpp"

#include <gtest/gtest.h>

#include <string>

namespace orvo {
namespace {

TEST(ErrorTest, CarriesWhatErrSaysAndAReadableWhat) {
  struct Case {
    std::int32_t number;
    String description;
    String source;
    std::string what;
  };
  const Case cases[] = {
      {5, u"Invalid procedure call or argument", u"", "5: Invalid procedure call or argument"},
      {kLibraryErrorNumber, u"caf\u00e9 \u3042", u"ORVOGeneric",
       "-2147220991: caf\xC3\xA9 \xE3\x81\x82"},
      {0, u"", u"src", "0: "},
  };
  for (const auto& c : cases) {
    const Error e(c.number, c.description, c.source);
    EXPECT_EQ(e.number(), c.number) << c.what;
    EXPECT_EQ(e.description(), c.description) << c.what;
    EXPECT_EQ(e.source(), c.source) << c.what;
    EXPECT_STREQ(e.what(), c.what.c_str());
  }
}

}  // namespace
}  // namespace orvo
