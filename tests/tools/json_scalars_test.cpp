#include "json_scalars.hpp"

#include <gtest/gtest.h>

#include <cmath>

#include "support/test_support.hpp"

namespace orvo::cli {
namespace {

TEST(JsonNumbers, TextToDouble) {
  for (const auto& row : test::readTestData("tools/json_numbers.tsv", 2)) {
    const double v = json::parseNumber(toUtf8(row.fields[0]));
    const double expected = test::parseHexDouble(row.fields[1]);
    EXPECT_EQ(v, expected) << "data line " << row.line;
    EXPECT_EQ(std::signbit(v), std::signbit(expected)) << "data line " << row.line;
  }
}

}  // namespace
}  // namespace orvo::cli
