#include "platform/posix/x11_keys.hpp"

#include <gtest/gtest.h>

#include <vector>

namespace orvo::platform {
namespace {

TEST(X11Keys, VirtualKeysAreTheKeysymsTheirKeysCarry) {
  struct Case {
    std::int32_t virtualKey;
    std::vector<std::uint32_t> keysyms;
  };
  const std::vector<Case> cases = {
      {0x10, {0xffe1, 0xffe2}},          // Shift: either side
      {0xA0, {0xffe1}},                  // left Shift alone
      {0x11, {0xffe3, 0xffe4}},          // Control
      {0x12, {0xffe9, 0xffea, 0xfe03}},  // Alt, AltGr included
      {'A', {'a'}},                      // a letter: its lower-case keysym
      {'Z', {'z'}},
      {'7', {'7'}},
      {0x60, {0xffb0}},  // keypad 0
      {0x69, {0xffb9}},  // keypad 9
      {0x70, {0xffbe}},  // F1
      {0x87, {0xffd5}},  // F24
      {0x0D, {0xff0d}},  // Return
      {0x2E, {0xffff}},  // Delete
      {0xDC, {0x5c}},    // the backslash key
      {0x00, {}},        // no key
      {0x01, {}},        // a mouse button is no key
      {0xFF, {}},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(keysymsOfVirtualKey(c.virtualKey), c.keysyms) << c.virtualKey;
  }
}

TEST(X11Keys, MouseButtonsAreNumberedAsTheServerNumbersThem) {
  EXPECT_EQ(buttonOfVirtualKey(0x01), 1);
  EXPECT_EQ(buttonOfVirtualKey(0x02), 3) << "the right button is the server's third";
  EXPECT_EQ(buttonOfVirtualKey(0x04), 2);
  EXPECT_EQ(buttonOfVirtualKey(0x10), 0);
}

}  // namespace
}  // namespace orvo::platform
