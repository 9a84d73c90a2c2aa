#include "platform/posix/x11_keys.hpp"

namespace orvo::platform {

namespace {

// X keysyms (the X protocol's keysym table).
constexpr std::uint32_t kShiftL = 0xffe1;
constexpr std::uint32_t kShiftR = 0xffe2;
constexpr std::uint32_t kControlL = 0xffe3;
constexpr std::uint32_t kControlR = 0xffe4;
constexpr std::uint32_t kAltL = 0xffe9;
constexpr std::uint32_t kAltR = 0xffea;
constexpr std::uint32_t kLevel3Shift = 0xfe03;  // AltGr, the right Alt of many layouts
constexpr std::uint32_t kSuperL = 0xffeb;
constexpr std::uint32_t kSuperR = 0xffec;
constexpr std::uint32_t kF1 = 0xffbe;
constexpr std::uint32_t kKeypad0 = 0xffb0;

struct Named {
  std::int32_t virtualKey;
  std::uint32_t keysym;
};

// The virtual keys with one key of their own.
constexpr Named kSingle[] = {
    {0x08, 0xff08},                                      // Backspace
    {0x09, 0xff09},                                      // Tab
    {0x0C, 0xff0b},                                      // Clear
    {0x0D, 0xff0d},                                      // Return
    {0x13, 0xff13},                                      // Pause
    {0x14, 0xffe5},                                      // Caps Lock
    {0x1B, 0xff1b},                                      // Escape
    {0x20, 0x0020},                                      // Space
    {0x21, 0xff55},                                      // Page Up
    {0x22, 0xff56},                                      // Page Down
    {0x23, 0xff57},                                      // End
    {0x24, 0xff50},                                      // Home
    {0x25, 0xff51},                                      // Left
    {0x26, 0xff52},                                      // Up
    {0x27, 0xff53},                                      // Right
    {0x28, 0xff54},                                      // Down
    {0x2C, 0xff61},                                      // Print Screen
    {0x2D, 0xff63},                                      // Insert
    {0x2E, 0xffff},                                      // Delete
    {0x5B, kSuperL},   {0x5C, kSuperR}, {0x5D, 0xff67},  // Menu
    {0x6A, 0xffaa},                                      // keypad *
    {0x6B, 0xffab},                                      // keypad +
    {0x6D, 0xffad},                                      // keypad -
    {0x6E, 0xffae},                                      // keypad .
    {0x6F, 0xffaf},                                      // keypad /
    {0x90, 0xff7f},                                      // Num Lock
    {0x91, 0xff14},                                      // Scroll Lock
    {0xA0, kShiftL},   {0xA1, kShiftR}, {0xA2, kControlL},
    {0xA3, kControlR}, {0xA4, kAltL},   {0xBA, 0x003b},  // ;
    {0xBB, 0x003d},                                      // =
    {0xBC, 0x002c},                                      // ,
    {0xBD, 0x002d},                                      // -
    {0xBE, 0x002e},                                      // .
    {0xBF, 0x002f},                                      // /
    {0xC0, 0x0060},                                      // `
    {0xDB, 0x005b},                                      // [
    {0xDC, 0x005c},                                      // backslash
    {0xDD, 0x005d},                                      // ]
    {0xDE, 0x0027},                                      // '
};

}  // namespace

std::vector<std::uint32_t> keysymsOfVirtualKey(std::int32_t virtualKey) {
  switch (virtualKey) {
    case 0x10:
      return {kShiftL, kShiftR};
    case 0x11:
      return {kControlL, kControlR};
    case 0x12:
      return {kAltL, kAltR, kLevel3Shift};
    case 0xA5:
      return {kAltR, kLevel3Shift};
    default:
      break;
  }
  // Digits and letters are their own characters (letters as the lower-case keysym the key
  // carries first).
  if (virtualKey >= '0' && virtualKey <= '9') return {static_cast<std::uint32_t>(virtualKey)};
  if (virtualKey >= 'A' && virtualKey <= 'Z') {
    return {static_cast<std::uint32_t>(virtualKey - 'A' + 'a')};
  }
  if (virtualKey >= 0x60 && virtualKey <= 0x69) {
    return {kKeypad0 + static_cast<std::uint32_t>(virtualKey - 0x60)};
  }
  if (virtualKey >= 0x70 && virtualKey <= 0x87) {
    return {kF1 + static_cast<std::uint32_t>(virtualKey - 0x70)};
  }
  for (const Named& n : kSingle) {
    if (n.virtualKey == virtualKey) return {n.keysym};
  }
  return {};
}

int buttonOfVirtualKey(std::int32_t virtualKey) {
  switch (virtualKey) {
    case 0x01:
      return 1;
    case 0x02:
      return 3;
    case 0x04:
      return 2;
    default:
      return 0;
  }
}

}  // namespace orvo::platform
