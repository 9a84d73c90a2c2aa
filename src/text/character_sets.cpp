#include <array>
#include <limits>
#include <string_view>
#include <vector>

#include "frame/trace.hpp"
#include "frame/traps.hpp"
#include "platform/codepage.hpp"
#include "runtime/errors.hpp"
#include "runtime/strings.hpp"
#include "text/numbers.hpp"
#include "text/strings.hpp"

namespace orvo::text {

namespace {

using runtime::UCase;

// The ANSI code of one UTF-16 code unit as the language's Asc reports it: a byte value for a
// single-byte character, lead * 256 + trail as a signed 16-bit value for a double-byte one.
std::int16_t ansiCode(char16_t c, std::uint32_t codePage) {
  const std::string bytes = platform::wideToMultiByte(codePage, std::u16string_view(&c, 1));
  if (bytes.empty()) return 0;
  const auto lead = static_cast<std::uint8_t>(bytes[0]);
  if (bytes.size() == 1) return lead;
  const auto trail = static_cast<std::uint8_t>(bytes[1]);
  return static_cast<std::int16_t>(static_cast<std::uint16_t>((lead << 8) | trail));
}

// The character whose ANSI code is given (the language's Chr): codes beyond a byte are taken as
// a lead and a trail byte, which only a double-byte code page turns into one character.
String ansiCharacter(std::int16_t code, std::uint32_t codePage) {
  const auto u = static_cast<std::uint16_t>(code);
  std::string bytes;
  if (u <= 0xFF) {
    bytes.push_back(static_cast<char>(u));
  } else {
    bytes.push_back(static_cast<char>(u >> 8));
    bytes.push_back(static_cast<char>(u & 0xFF));
  }
  return platform::multiByteToWide(codePage, bytes);
}

std::int16_t toInteger(std::int32_t value) {
  if (value < std::numeric_limits<std::int16_t>::min() ||
      value > std::numeric_limits<std::int16_t>::max()) {
    runtime::raise(runtime::errOverflow);
  }
  return static_cast<std::int16_t>(value);
}

bool startsWithNoCase(const String& text, std::u16string_view prefix) {
  return UCase(runtime::Left(text, static_cast<std::int64_t>(prefix.size()))) == UCase(prefix);
}

}  // namespace

VBool bStringContainsBannedChars(String& value, const String& BannedChars, VBool Replace,
                                 const String& ReplacementChars, String* Info) {
  return frame::trap(u"bStringContainsBannedChars", [&]() -> VBool {
    String localInfo;
    String& info = Info != nullptr ? *Info : localInfo;
    if (BannedChars.empty()) {
      frame::RaiseLibraryError(u"List of banned characters cannot be empty");
    }
    if (nonZero(Replace)) {
      if (BannedChars.size() < ReplacementChars.size()) {
        frame::RaiseLibraryError(u"Inconsistent numbers of banned and replacement characters");
      }
      info = BannedChars;
      String w = value;
      for (std::size_t i = 0; i < BannedChars.size(); ++i) {
        const String with = i < ReplacementChars.size() ? String(1, ReplacementChars[i]) : String();
        w = runtime::Replace(w, std::u16string_view(&BannedChars[i], 1), with);
      }
      // The comparison is the loose one (case and outer blanks ignored), so a replacement that
      // only changes those reports no banned character; the value is rewritten all the same.
      const VBool changed = toVBool(!nonZero(bStrComp(w, value, VBool::False, VBool::True)));
      value = std::move(w);
      return changed;
    }
    const std::u16string_view allowed = kBannedCharExtender_Allowed;
    const std::u16string_view equals = kBannedCharExtender_Equals;
    if (startsWithNoCase(BannedChars, allowed)) {
      info = BannedChars.substr(allowed.size());
      const String ranges = info;
      return toVBool(!nonZero(bStringContainsAllowedChars(value, ranges, &info)));
    }
    if (startsWithNoCase(BannedChars, equals)) {
      info = BannedChars.substr(equals.size());
      return toVBool(!nonZero(bStrComp(value, info, VBool::False, VBool::True)));
    }
    info = BannedChars;
    return toVBool(value.find_first_of(BannedChars) != String::npos);
  });
}

VBool bStringContainsAllowedChars(const String& value, const String& AllowedAsciiRanges,
                                  String* Info) {
  return frame::trap(u"bStringContainsAllowedChars", [&]() -> VBool {
    // The ranges are read from a copy: a caller may pass the same string as ranges and as Info.
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
    const String ranges = AllowedAsciiRanges;
    String localInfo;
    String& info = Info != nullptr ? *Info : localInfo;
    info = ranges;
    if (value.empty()) {
      frame::LibraryTrace(u"bStringContainsAllowedChars was passed blank string for sValue");
      return VBool::True;
    }
    if (ranges.empty()) {
      frame::LibraryTrace(
          u"bStringContainsAllowedChars was passed blank string for AllowedAsciiRanges");
      return VBool::False;
    }
    const std::vector<String> pieces = runtime::Split(ranges, u",");
    if (pieces.size() == 1) {
      frame::LibraryTrace(
          u"bStringContainsAllowedChars was not passed any valid ranges of characters: " + ranges);
      return VBool::False;
    }
    constexpr std::size_t kLimits = 10;
    if (pieces.size() > kLimits) {
      frame::LibraryTrace(
          u"bStringContainsAllowedChars was passed too many ranges, AllowedAsciiRanges = " +
          ranges);
    }
    std::array<std::int16_t, kLimits> limits{};
    limits.fill(-1);
    for (std::size_t i = 0; i < kLimits && i < pieces.size(); ++i) {
      limits[i] = toInteger(ValLng(Variant(pieces[i])));
    }

    const std::uint32_t cp = platform::systemAnsiCodePage();
    // Each pair overwrites the description, so only the last complete pair is described; the
    // callers show it as it is.
    for (std::size_t j = 0; j < kLimits / 2; ++j) {
      if (limits[2 * j + 1] == -1) break;
      info = u"[" + ansiCharacter(limits[2 * j], cp) + u" - " +
             ansiCharacter(limits[2 * j + 1], cp) + u"], ";
    }
    info = runtime::Left(info, static_cast<std::int64_t>(info.size()) - 2);

    for (const char16_t c : value) {
      const std::int16_t code = ansiCode(c, cp);
      bool inside = false;
      for (std::size_t j = 0; j < kLimits / 2; ++j) {
        if (limits[2 * j] <= code && code <= limits[2 * j + 1]) inside = true;
      }
      if (!inside) return VBool::False;
    }
    return VBool::True;
  });
}

}  // namespace orvo::text
