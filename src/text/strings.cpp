#include "text/strings.hpp"

#include <array>
#include <limits>
#include <string_view>
#include <vector>

#include "frame/trace.hpp"
#include "frame/traps.hpp"
#include "platform/codepage.hpp"
#include "platform/locale.hpp"
#include "runtime/convert.hpp"
#include "runtime/errors.hpp"
#include "runtime/strings.hpp"
#include "text/numbers.hpp"

namespace orvo::text {

namespace {

using runtime::Trim;
using runtime::UCase;

// The procedures count with the language's typed loop counters: the bounds are converted to the
// counter's type up front and the step past the last index is itself an addition that can
// overflow, so an array ending at the counter type's maximum fails after its last element.
// body returns true to leave the loop early.
template <class Counter, class Body>
void countedLoop(std::int64_t first, std::int64_t last, Body&& body) {
  constexpr std::int64_t lo = std::numeric_limits<Counter>::min();
  constexpr std::int64_t hi = std::numeric_limits<Counter>::max();
  if (first < lo || first > hi || last < lo || last > hi) runtime::raise(runtime::errOverflow);
  for (std::int64_t i = first; i <= last; ++i) {
    if (body(static_cast<Counter>(i))) return;
    if (i == hi) runtime::raise(runtime::errOverflow);
  }
}

String expandWith(const String& Template, const std::vector<String>& texts) {
  String result = Template;
  for (std::size_t k = texts.size(); k-- > 0;) {
    result = runtime::Replace(result, u"%" + runtime::DecimalText(static_cast<std::int64_t>(k)),
                              texts[k]);
  }
  return result;
}

// The text of one argument, or "" when the value has none: the conversion runs with its errors
// suppressed, as the callers pass whatever they hold.
String argumentText(const Variant& value, const platform::RegionalSettings& rs) {
  try {
    return runtime::CStr(value, rs);
  } catch (const Error&) {
    return {};
  }
}

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

template <class Better>
Variant extremeOf(const SafeArray& Vals, Better better) {
  const auto rs = platform::userRegionalSettings();
  const std::int32_t lower = Vals.lowerBound();
  Variant result = Vals.get(lower);
  countedLoop<std::int16_t>(static_cast<std::int64_t>(lower) + 1, Vals.upperBound(),
                            [&](std::int16_t i) {
                              const Variant candidate = Vals.get(i);
                              // A comparison with Null is Null, which an If takes as false: the
                              // running result stays.
                              if (!candidate.isNull() && !result.isNull() &&
                                  better(runtime::compareVariants(candidate, result, *rs))) {
                                result = candidate;
                              }
                              return false;
                            });
  return result;
}

}  // namespace

String ExpandString_Worker(const String& Template, const SafeArray& Arguments) {
  return frame::trap(u"ExpandString_Worker", [&] {
    const std::int32_t lower = Arguments.lowerBound();
    const std::int32_t upper = Arguments.upperBound();
    const auto rs = platform::userRegionalSettings();
    std::vector<String> texts;
    if (upper >= lower) texts.reserve(static_cast<std::size_t>(upper - lower) + 1);
    for (std::int64_t i = lower; i <= upper; ++i) {
      texts.push_back(argumentText(Arguments.get(static_cast<std::int32_t>(i)), *rs));
    }
    return expandWith(Template, texts);
  });
}

String ExpandString_Worker(const String& Template, const Variant& Arguments) {
  if (const SafeArray* array = Arguments.array()) return ExpandString_Worker(Template, *array);
  return expandWith(Template, {String()});
}

String EncodeQuotes(const String& InputString) { return runtime::Replace(InputString, u"'", u"`"); }

String AddQuotesToString(const String& InputString, VBool TrimInput, VBool TrimInsideQuotes,
                         VBool AddSingleQuotes) {
  const String q = nonZero(AddSingleQuotes) ? u"'" : u"\"";
  String s = nonZero(TrimInput) ? Trim(InputString) : InputString;
  if (s.empty()) return q + q;
  std::size_t before = 0;
  do {
    before = s.size();
    s = RemoveQuotesFromString(s, VBool::False, TrimInsideQuotes);
  } while (s.size() != before);
  return q + s + q;
}

String RemoveQuotesFromString(const String& InputString, VBool TrimInput, VBool TrimInsideQuotes) {
  const String s = nonZero(TrimInput) ? Trim(InputString) : InputString;
  if (s.size() < 2) return InputString;
  const char16_t mark = s.front() == u'\'' ? u'\'' : u'"';
  if (s.front() != mark || s.back() != mark) return InputString;
  const String inside = s.substr(1, s.size() - 2);
  return nonZero(TrimInsideQuotes) ? Trim(inside) : inside;
}

String AddQuotesToPath(const String& InputString) {
  const String t = Trim(InputString);
  if (t.empty()) return {};
  return AddQuotesToString(t, VBool::True, VBool::True, VBool::False);
}

String RemoveQuotesFromPath(const String& InputString) {
  return RemoveQuotesFromString(Trim(InputString), VBool::False, VBool::True);
}

std::int32_t StringCount(const String& StringToSearch, const String& StringToCount) {
  // The count of pieces a Split would give, less one, without making the pieces.
  if (StringToSearch.empty() || StringToCount.empty()) return 0;
  std::int64_t count = 0;
  for (std::size_t at = StringToSearch.find(StringToCount); at != String::npos;
       at = StringToSearch.find(StringToCount, at + StringToCount.size())) {
    ++count;
  }
  return static_cast<std::int32_t>(count);
}

namespace {
// Runs of spaces as single spaces: what replacing "  " by " " until nothing changes leaves.
template <class Sink>
void forEachSpaceSeparated(std::u16string_view s, Sink sink) {
  std::size_t start = 0;
  while (true) {
    const std::size_t space = s.find(u' ', start);
    if (space == std::u16string_view::npos) {
      sink(s.substr(start));
      return;
    }
    sink(s.substr(start, space - start));
    start = s.find_first_not_of(u' ', space);
    if (start == std::u16string_view::npos) {
      sink(std::u16string_view());
      return;
    }
  }
}
}  // namespace

String ReplaceMultipleSpaces(const String& text) {
  String out;
  out.reserve(text.size());
  bool first = true;
  forEachSpaceSeparated(text, [&](std::u16string_view word) {
    if (!first) out += u' ';
    out += word;
    first = false;
  });
  return out;
}

Variant SplitOnSpaces(const String& text, std::int32_t* NumWords, VBool TrimFirst) {
  const std::u16string_view s = nonZero(TrimFirst) ? runtime::trimView(text) : text;
  std::vector<String> words;
  if (!s.empty()) forEachSpaceSeparated(s, [&](std::u16string_view w) { words.emplace_back(w); });
  if (NumWords != nullptr) *NumWords = static_cast<std::int32_t>(words.size());
  return Variant(SafeArray(0, std::move(words)));
}

std::int32_t LenTrim(const String& CharString) {
  return static_cast<std::int32_t>(runtime::trimView(CharString).size());
}

std::int32_t LenB_ANSI(const String& CharString) {
  return static_cast<std::int32_t>(
      platform::wideToMultiByte(platform::systemAnsiCodePage(), CharString).size());
}

void CorrectDLLStringForDBCS(String& ToCorrect) {
  frame::trap(u"CorrectDLLStringForDBCS", [&] {
    const std::size_t n = ToCorrect.size();
    const std::uint32_t cp = platform::systemAnsiCodePage();
    auto bytesOf = [&](std::size_t length) {
      return platform::wideToMultiByte(cp, std::u16string_view(ToCorrect).substr(0, length)).size();
    };
    // Dropping characters from the end one at a time until the bytes fit is a search for the
    // longest prefix that fits; the byte count never shrinks as the prefix grows, so halving
    // finds the same prefix without converting the text once per character.
    std::size_t keep = n;
    if (bytesOf(n) > n) {
      std::size_t lo = 0;
      std::size_t hi = n;  // bytesOf(lo) <= n < bytesOf(hi)
      while (hi - lo > 1) {
        const std::size_t mid = lo + (hi - lo) / 2;
        (bytesOf(mid) <= n ? lo : hi) = mid;
      }
      keep = lo;
    }
    String corrected = ToCorrect.substr(0, keep);
    corrected.append(n - keep, u' ');
    ToCorrect = std::move(corrected);
  });
}

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

VBool bStrComp(const String& String1, const String& String2, VBool CaseSensitive, VBool TrimWords) {
  String a = nonZero(TrimWords) ? Trim(String1) : String1;
  String b = nonZero(TrimWords) ? Trim(String2) : String2;
  if (!nonZero(CaseSensitive)) {
    a = UCase(a);
    b = UCase(b);
  }
  return toVBool(a == b);
}

VBool bStringInArray(const String& Find, const Variant& vArray, std::int32_t* Index,
                     VBool CaseSensitive, VBool TrimWords) {
  return frame::trap(u"bStringInArray", [&]() -> VBool {
    if (!nonZero(IsArrayInitialised(vArray, VBool::True))) return VBool::False;
    const SafeArray& items = *vArray.array();
    const auto rs = platform::userRegionalSettings();
    VBool found = VBool::False;
    countedLoop<std::int32_t>(items.lowerBound(), items.upperBound(), [&](std::int32_t i) {
      if (nonZero(bStrComp(Find, runtime::CStr(items.get(i), *rs), CaseSensitive, TrimWords))) {
        if (Index != nullptr) *Index = i;
        found = VBool::True;
        return true;
      }
      return false;
    });
    return found;
  });
}

VBool bIsInCollection(const std::shared_ptr<Collection>& col, const String& Key, VBool TrimKey) {
  if (!col) return VBool::False;
  // The collection reports a missing key as error 5; any other failure of the lookup still
  // means the key is there.
  try {
    (void)col->Item(nonZero(TrimKey) ? Trim(Key) : Key);
  } catch (const Error& e) {
    return toVBool(e.number() != runtime::errInvalidProcedureCall);
  }
  return VBool::True;
}

VBool IsArrayInitialised(const Variant& vArray, VBool bCheckBounds) {
  return frame::trap(u"IsArrayInitialised", [&]() -> VBool {
    const SafeArray* array = vArray.array();
    if (array == nullptr) return VBool::False;
    // A dynamic array that was never dimensioned has no bounds at all (asking is error 9); that
    // is the uninitialised case, different from bounds 0 to -1.
    if (!array->dimensioned()) return VBool::False;
    if (nonZero(bCheckBounds) && array->upperBound() < array->lowerBound()) return VBool::False;
    return VBool::True;
  });
}

VBool bStringToBoolean(const String& sValue, VBool bDefault, VBool* DefaultUsed) {
  static constexpr std::u16string_view kTrue[] = {u"YES", u"Y", u"TRUE", u"T", u"ON", u"1", u"-1"};
  static constexpr std::u16string_view kFalse[] = {u"NO", u"N", u"FALSE", u"F", u"OFF", u"0"};
  const String key = UCase(runtime::trimView(sValue));
  if (DefaultUsed != nullptr) *DefaultUsed = VBool::False;
  for (const auto word : kTrue) {
    if (key == word) return VBool::True;
  }
  for (const auto word : kFalse) {
    if (key == word) return VBool::False;
  }
  if (DefaultUsed != nullptr) *DefaultUsed = VBool::True;
  return bDefault;
}

String sBooleanToString(VBool bValue) {
  // Only the two canonical values have names; a stray 1 is not "True".
  if (bValue == VBool::True) return u"True";
  if (bValue == VBool::False) return u"False";
  return {};
}

Variant Maximum_Worker(const SafeArray& Vals) {
  return frame::trap(u"Maximum_Worker",
                     [&] { return extremeOf(Vals, [](int c) { return c > 0; }); });
}

Variant Minimum_Worker(const SafeArray& Vals) {
  return frame::trap(u"Minimum_Worker",
                     [&] { return extremeOf(Vals, [](int c) { return c < 0; }); });
}

}  // namespace orvo::text
