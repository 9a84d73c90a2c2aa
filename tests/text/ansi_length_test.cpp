#include <gtest/gtest.h>

#include "text/strings.hpp"
#include "text/strings_fixture.hpp"

namespace orvo::text {
namespace {

TEST_F(StringsTest, LenBAnsiAndDbcsCorrectionFollowTheSystemCodePage) {
  for (const auto& row : test::readTestData("text/ansi_length.tsv", 4)) {
    const auto& f = row.fields;
    const test::ScopedLocale scoped(toUtf8(f[0]).c_str());
    String s = f[1];
    CorrectDLLStringForDBCS(s);
    EXPECT_EQ(std::pair(LenB_ANSI(f[1]), s), std::pair(std::int32_t(test::integerOf(f[2])), f[3]))
        << "data line " << row.line;
  }
}

}  // namespace
}  // namespace orvo::text
