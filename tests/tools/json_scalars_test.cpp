#include "json_scalars.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using orvo::cli::json::parseNumber;

// The ends of the double's range round the
// way C's strtod rounds them: to infinity above, to zero (keeping the sign) below.
TEST(JsonNumbers, TextToDouble) {
  constexpr double inf = std::numeric_limits<double>::infinity();
  struct Case {
    const char* text;
    double value;
  };
  const Case cases[] = {
      {"0", 0.0},
      {"-2.5", -2.5},
      {"1.5e3", 1500.0},
      {"1E-2", 0.01},
      {"12345678901234567890", 12345678901234567890.0},
      {"4.9e-324", std::numeric_limits<double>::denorm_min()},
      {"1.7976931348623157e308", std::numeric_limits<double>::max()},
      {"1.8e308", inf},
      {"-1e999", -inf},
      {"123456789012345678901234567890e280", inf},
      {"0.000000000000001e300", 1e285},
      {"0.000001e310", 1e304},
      {"2.4e-324", 0.0},
      {"-1e-999", -0.0},
      {"0.000001e-320", 0.0},
      {"1e-99999999999999999999", 0.0},
      {"1e+99999999999999999999", inf},
      {"0e999999", 0.0},
  };
  for (const auto& c : cases) {
    const double v = parseNumber(c.text);
    EXPECT_EQ(v, c.value) << c.text;
    EXPECT_EQ(std::signbit(v), std::signbit(c.value)) << c.text;
  }
}

}  // namespace
