#include "orvogeneric/error.hpp"

#include <gtest/gtest.h>

namespace orvo {
namespace {

// The accessors are what every other test reads errors by; what() is the readable form of the
// number and description, in UTF-8.
TEST(ErrorTest, WhatIsTheNumberAndTheDescriptionInUtf8) {
  EXPECT_STREQ(Error(5, u"Invalid procedure call or argument").what(),
               "5: Invalid procedure call or argument");
  EXPECT_STREQ(Error(kLibraryErrorNumber, u"caf\u00e9 \u3042", u"ORVOGeneric").what(),
               "-2147220991: caf\xC3\xA9 \xE3\x81\x82");
  EXPECT_STREQ(Error(0, u"", u"src").what(), "0: ");
  EXPECT_EQ(Error(0, u"", u"src").source(), u"src");
}

}  // namespace
}  // namespace orvo
