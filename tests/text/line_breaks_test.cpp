#include "text/line_breaks.hpp"

#include <gtest/gtest.h>

#include <string>

namespace orvo::test {
namespace {

// Every position of the break in and around the vector widths, for each terminator, after
// units one bit away from a terminator (and, in UTF-16, units whose low byte is one).
TEST(LineBreaks, TheFirstCrOrLfAtAnyPosition) {
  const std::u16string nearMisses = u"\x0C\x0B\x8D\x8A";
  for (const char16_t breakUnit : {u'\r', u'\n'}) {
    for (std::size_t length = 0; length <= 70; ++length) {
      for (std::size_t at = 0; at <= length; ++at) {
        std::u16string units(length, u'a');
        for (std::size_t i = 0; i < at; ++i) units[i] = nearMisses[i % nearMisses.size()];
        if (at < length) units[at] = breakUnit;
        if (at + 1 < length) units[at + 1] = u'\n';
        const std::string bytes(units.begin(), units.end());
        EXPECT_EQ(text::findLineBreak(reinterpret_cast<const std::uint8_t*>(bytes.data()), length),
                  at)
            << "bytes, length " << length << " break at " << at;
        for (std::size_t i = 0; i < at; ++i) units[i] = i % 2 == 0 ? u'\u010D' : u'\u0A0A';
        EXPECT_EQ(text::findLineBreak(units.data(), length), at)
            << "units, length " << length << " break at " << at;
      }
    }
  }
}

}  // namespace
}  // namespace orvo::test
