#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "orvogeneric/variant.hpp"
#include "support/test_support.hpp"

// What the tests of the string procedures share: the Western locale their expected texts are
// written in, and short names for the flags and arrays they pass.
namespace orvo::text {

inline constexpr VBool F = VBool::False;
inline constexpr VBool T = VBool::True;

// A flag in a table of cases: T, F, or the number of a non-canonical value.
inline VBool flagOf(const String& field) {
  return field == u"T" ? T : field == u"F" ? F : static_cast<VBool>(test::integerOf(field));
}

inline SafeArray arrayOf(std::vector<Variant> items, std::int32_t lowerBound = 0) {
  return SafeArray(VarType::Variant, lowerBound, std::move(items));
}

class StringsTest : public ::testing::Test {
 protected:
  test::ScopedLocale locale_{"en_US.UTF-8"};
};

}  // namespace orvo::text
