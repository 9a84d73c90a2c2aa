#include "text/keypress.hpp"

#include "frame/traps.hpp"
#include "orvogeneric/desktop.hpp"
#include "orvogeneric/user_interface.hpp"
#include "platform/codepage.hpp"
#include "runtime/strings.hpp"
#include "text/numbers.hpp"
#include "text/strings.hpp"

namespace orvo::text {

namespace {

constexpr std::int16_t kBackspace = 8;
constexpr std::int16_t kBlank = 32;
constexpr std::int16_t kControlKey = 17;

// A character's code as the applications' keystrokes carry it: its code in the ANSI code page.
std::int16_t ansiCode(char16_t c) {
  if (c < 0x80) return static_cast<std::int16_t>(c);
  const std::string bytes = platform::wideToMultiByte(platform::systemAnsiCodePage(), {&c, 1});
  if (bytes.size() == 1) return static_cast<std::int16_t>(static_cast<unsigned char>(bytes[0]));
  if (bytes.size() == 2) {
    return static_cast<std::int16_t>((static_cast<unsigned char>(bytes[0]) << 8) |
                                     static_cast<unsigned char>(bytes[1]));
  }
  return 0;
}

// The character a key code stands for, read in the ANSI code page.
String characterOf(std::int16_t k) {
  if (k >= 0 && k < 0x80) return String(1, static_cast<char16_t>(k));
  const auto code = static_cast<std::uint16_t>(k);
  std::string bytes;
  if (code > 0xFF) bytes += static_cast<char>(code >> 8);
  bytes += static_cast<char>(code & 0xFF);
  return platform::multiByteToWide(platform::systemAnsiCodePage(), bytes);
}

bool isDigit(std::int16_t k) { return k >= '0' && k <= '9'; }
bool isSign(std::int16_t k) { return k == '+' || k == '-'; }
bool isExponent(std::int16_t k) { return k == 'E' || k == 'e'; }

bool hasExponent(std::u16string_view s) {
  return s.find_first_of(u"eE") != std::u16string_view::npos;
}
// A sign anywhere from the second character on.
bool hasLaterSign(std::u16string_view s) {
  return s.size() > 1 && s.substr(1).find_first_of(u"+-") != std::u16string_view::npos;
}

void reject(std::int16_t& KeyAscii, VBool SuppressBeep) {
  // A refused blank is silent, deliberately.
  if (!isTrue(SuppressBeep) && KeyAscii != kBlank) userInterface()->beep();
  KeyAscii = 0;
}

// Whether the key passes the rules, given the text with the selection removed.
bool acceptable(std::int16_t k, const String& SelText, std::int32_t SelStart, const String& t) {
  const String separator = DPDelimiter().substr(0, 1);
  const std::int16_t dec = separator.empty() ? std::int16_t{-1} : ansiCode(separator[0]);
  // Replacing a selected exponent letter would strand the exponent's sign.
  if (hasExponent(SelText) && hasLaterSign(t) && !isExponent(k)) return false;
  if (SelStart != 0) {
    if (isDigit(k)) return true;
    if (!isExponent(k) && !isSign(k) && k != kBackspace && k != dec) return false;
    if (k == dec) {
      return t.find(separator) == String::npos && !hasExponent(runtime::Left(t, SelStart));
    }
    if (isSign(k)) {
      const String before = runtime::Mid(t, SelStart, 1);
      return !hasLaterSign(t) && (before == u"E" || before == u"e");
    }
    if (isExponent(k)) {
      return !hasExponent(t) && !(SelStart < 2 && !t.empty() && (t[0] == u'-' || t[0] == u'+'));
    }
    return true;
  }
  // Nothing may be typed in front of a leading sign.
  const auto e = t.find_first_of(u"eE");
  const std::size_t p = e == String::npos ? 1 : e + 1;
  if (runtime::Left(t, static_cast<std::int64_t>(p)).find_first_of(u"+-") != String::npos)
    return false;
  if (isDigit(k)) return true;
  if (!isSign(k) && k != kBackspace && k != dec) return false;
  if (k == dec) return t.find(separator) == String::npos;
  if (isSign(k)) {
    const String first = runtime::Left(t, 1);
    return first != u"-" && first != u"+" && !isTrue(bStrComp(first, u"e"));
  }
  return true;
}

}  // namespace

void ValidRs_subWorker(std::int16_t& KeyAscii, const String& SelText, std::int32_t SelStart,
                       std::int32_t SelLen, const String& TestText, VBool SuppressBeep) {
  frame::trapAndShow(u"ValidRs_subWorker", 0, [&] {
    String t = TestText;
    if (SelLen > 0) {
      const auto length = static_cast<std::int64_t>(t.size());
      t = SelStart == 0
              ? runtime::Right(t, length - SelLen)
              : runtime::Left(t, SelStart) + runtime::Right(t, length - SelStart - SelLen);
    }
    if (!acceptable(KeyAscii, SelText, SelStart, t)) reject(KeyAscii, SuppressBeep);
    return 0;
  });
}

VBool ValidRString(const String& text) {
  return frame::trapAndShow(u"ValidRString", VBool::False, [&] {
    for (std::size_t i = 0; i < text.size(); ++i) {
      std::int16_t k = ansiCode(text[i]);
      ValidRs_subWorker(k, u"", static_cast<std::int32_t>(i), 0, text.substr(0, i), VBool::True);
      if (k == 0) return VBool::False;
    }
    return VBool::True;
  });
}

void ValidStr_worker(std::int16_t& KeyAscii, const String& BannedChars, VBool SuppressBeep) {
  frame::trapAndShow(u"ValidStr_worker", 0, [&] {
    // Shortcut keys pass while Control is held.
    if (desktop()->isKeyDown(kControlKey)) return 0;
    if (BannedChars.find(characterOf(KeyAscii)) != String::npos) reject(KeyAscii, SuppressBeep);
    return 0;
  });
}

}  // namespace orvo::text
