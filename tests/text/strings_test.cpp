#include "text/strings.hpp"

#include <gtest/gtest.h>

#include <tuple>
#include <vector>

#include "orvogeneric/error.hpp"
#include "support/test_support.hpp"

namespace orvo::text {
namespace {

using test::errorOf;
using test::handledBy;
using test::show;

constexpr VBool F = VBool::False;
constexpr VBool T = VBool::True;

SafeArray arrayOf(std::vector<Variant> items, std::int32_t lowerBound = 0) {
  return SafeArray(VarType::Variant, lowerBound, std::move(items));
}

class StringsTest : public ::testing::Test {
 protected:
  test::ScopedLocale locale_{"en_US.UTF-8"};
};

TEST_F(StringsTest, ExpandStringReplacesHighestIndexFirst) {
  std::vector<Variant> twelve;
  for (int i = 0; i < 12; ++i) twelve.emplace_back(u"<" + fromUtf8(std::to_string(i)) + u">");
  const std::vector<std::tuple<const char*, String, std::vector<Variant>, std::int32_t, String>>
      cases = {
          {"order of arguments", u"%1 of %0", {u"a", u"b"}, 0, u"b of a"},
          {"two digits before one", u"%11|%1|%10", twelve, 0, u"<11>|<1>|<10>"},
          {"beyond the last argument", u"%3 %2", {u"a", u"b", u"c"}, 0, u"%3 c"},
          {"every occurrence", u"%0%0-%0", {u"x"}, 0, u"xx-x"},
          {"counted from the lower bound", u"%0,%1", {u"one", u"two"}, 5, u"one,two"},
          {"substituted text is searched again", u"%3", {u"A", u"B", u"C", u"%0"}, 0, u"A"},
          {"lower text is not searched again", u"%0", {u"%1", u"B"}, 0, u"%1"},
          {"a leading zero is no placeholder", u"%01", {u"a", u"b"}, 0, u"a1"},
          {"literal percent before a placeholder", u"%%0", {u"a"}, 0, u"%a"},
          {"default text forms", u"%0;%1;%2", {2.5, std::int32_t{-7}, T}, 0, u"2.5;-7;True"},
          {"values without text become empty", u"[%0][%1]", {Null{}, u"z"}, 0, u"[][z]"},
          {"no arguments", u"x%0y", {}, 0, u"x%0y"},
      };
  for (const auto& [name, tmpl, args, lowerBound, expected] : cases) {
    EXPECT_EQ(ExpandString_Worker(tmpl, Variant(arrayOf(args, lowerBound))), expected) << name;
  }
  // Anything but an array is one empty argument.
  EXPECT_EQ(ExpandString_Worker(u"x%0y%1", Variant(u"ignored")), u"xy%1");
  const Error e = errorOf([] { (void)ExpandString_Worker(u"%0", SafeArray()); });
  EXPECT_EQ(e.number(), 9);
  EXPECT_NE(e.description().find(u"Error handled by ExpandString_Worker"), String::npos);

  test::ScopedLocale german("de_DE.UTF-8");
  EXPECT_EQ(ExpandString_Worker(u"v=%0", arrayOf({Variant(2.5)})), u"v=2,5");
}

TEST_F(StringsTest, QuotesAreAddedAfterStrippingEveryNestedPairAndRemovedOnePairAtATime) {
  // Input, TrimInput, TrimInsideQuotes, AddSingleQuotes, result. Untrimmed outer blanks hide the
  // quotes, mismatched marks are no pair, and trimming inside can expose the next pair.
  const std::vector<std::tuple<String, VBool, VBool, VBool, String>> add = {
      {u"   ", T, T, F, u"\"\""},          {u"", F, T, T, u"''"},
      {u"abc", F, T, T, u"'abc'"},         {u" \"abc\" ", F, T, F, u"\" \"abc\" \""},
      {u"'\"abc\"'", F, T, F, u"\"abc\""}, {u"\"abc'", F, T, F, u"\"\"abc'\""},
      {u"\"", F, T, F, u"\"\"\""},         {u"\" 'a' \"", F, F, F, u"\" 'a' \""},
      {u"\" 'a' \"", F, T, F, u"\"a\""},
  };
  for (const auto& [in, trimInput, trimInside, single, expected] : add) {
    EXPECT_EQ(AddQuotesToString(in, trimInput, trimInside, single), expected)
        << show(in) << " " << value(trimInput) << value(trimInside) << value(single);
  }
  // Input, TrimInput, TrimInsideQuotes, result: an unquoted input comes back exactly as given.
  const std::vector<std::tuple<String, VBool, VBool, String>> remove = {
      {u"  abc  ", T, F, u"  abc  "}, {u"  \" abc \"  ", T, F, u" abc "},
      {u"'abc'", T, F, u"abc"},       {u"  \" abc \"  ", F, T, u"  \" abc \"  "},
      {u"'abc\"", T, F, u"'abc\""},   {u"\"\"\"abc\"\"\"", T, F, u"\"\"abc\"\""},
      {u"\"a\"b\"", T, F, u"a\"b"},
  };
  for (const auto& [in, trimInput, trimInside, expected] : remove) {
    EXPECT_EQ(RemoveQuotesFromString(in, trimInput, trimInside), expected) << show(in);
  }
  // Input, AddQuotesToPath, RemoveQuotesFromPath.
  const std::vector<std::tuple<String, String, String>> paths = {
      {u"    ", u"", u""},
      {u"  C:\\a b\\c.txt  ", u"\"C:\\a b\\c.txt\"", u"C:\\a b\\c.txt"},
      {u"  \" C:\\x \"  ", u"\"C:\\x\"", u"C:\\x"},
      {u"'/opt/x'", u"\"/opt/x\"", u"/opt/x"},
  };
  for (const auto& [in, added, removed] : paths) {
    EXPECT_EQ(std::pair(AddQuotesToPath(in), RemoveQuotesFromPath(in)), std::pair(added, removed));
  }
  EXPECT_EQ(EncodeQuotes(u"it's ''x'' \"q\" \u2019"), u"it`s ``x`` \"q\" \u2019");
}

TEST_F(StringsTest, CountingSpacingAndSplitting) {
  const std::vector<std::tuple<String, String, std::int32_t>> counts = {
      {u"a,b,,c", u",", 3}, {u"", u",", 0},    {u"abc", u"", 0},  {u"aaaa", u"aa", 2},
      {u"aaa", u"aa", 1},   {u"abc", u"x", 0}, {u"ABC", u"b", 0}, {u",", u",", 1},
  };
  for (const auto& [s, find, expected] : counts) EXPECT_EQ(StringCount(s, find), expected);
  const std::vector<std::pair<String, String>> spaces = {
      {u"a    b", u"a b"}, {u"   a  ", u" a "}, {u"a\t\tb", u"a\t\tb"},  {u"a \t  b", u"a \t b"},
      {u"", u""},          {u"     ", u" "},    {u"a  b   c", u"a b c"},
  };
  for (const auto& [in, expected] : spaces) EXPECT_EQ(ReplaceMultipleSpaces(in), expected);
  EXPECT_EQ(LenTrim(u"  ab  "), 2);
  EXPECT_EQ(LenTrim(u"\tab\t"), 4);
  EXPECT_EQ(LenTrim(u"     "), 0);

  // SplitOnSpaces: a zero-based String array and its element count.
  const std::vector<std::tuple<String, VBool, std::vector<String>>> splits = {
      {u"  a   b ", T, {u"a", u"b"}}, {u"  a   b ", F, {u"", u"a", u"b", u""}}, {u"   ", T, {}},
      {u"   ", F, {u"", u""}},        {u"a\tb c", T, {u"a\tb", u"c"}},
  };
  for (const auto& [text, trimFirst, words] : splits) {
    std::int32_t numWords = -5;
    const Variant v = SplitOnSpaces(text, &numWords, trimFirst);
    const SafeArray& a = *v.array();
    EXPECT_TRUE(a.dimensioned() && a.lowerBound() == 0 && a.elementType() == VarType::String);
    ASSERT_NE(a.elements<String>(), nullptr) << "words are held as strings, not variants";
    const std::vector<String> got = *a.elements<String>();
    EXPECT_EQ(std::pair(got, numWords), std::pair(words, std::int32_t(words.size()))) << show(text);
  }
  EXPECT_EQ(SplitOnSpaces(u" x ").array()->upperBound(), 0);
}

TEST_F(StringsTest, LenBAnsiAndDbcsCorrectionFollowTheSystemCodePage) {
  const char* en = "en_US.UTF-8";
  const char* ja = "ja_JP.UTF-8";
  // Locale, text, LenB_ANSI, the text after CorrectDLLStringForDBCS.
  const std::vector<std::tuple<const char*, String, std::int32_t, String>> cases = {
      {en, u"\u3042", 1, u"\u3042"},     {en, u"\u00E9\u20AC", 2, u"\u00E9\u20AC"},
      {ja, u"a\u3042b", 4, u"a\u3042 "}, {en, u"\U0001F600", 2, u"\U0001F600"},
      {ja, u"\u3042", 2, u" "},          {ja, u"\u3042\u3044\u3046", 6, u"\u3042  "},
      {ja, u"\uFF71bc", 3, u"\uFF71bc"},
  };
  for (const auto& [locale, text, bytes, corrected] : cases) {
    test::ScopedLocale scoped(locale);
    String s = text;
    CorrectDLLStringForDBCS(s);
    EXPECT_EQ(std::pair(LenB_ANSI(text), s), std::pair(bytes, corrected)) << locale;
  }
}

TEST_F(StringsTest, BannedCharsInAllThreeForms) {
  // Name, value, BannedChars, Replace, ReplacementChars, result, value afterwards, Info.
  const std::vector<std::tuple<const char*, String, String, VBool, String, VBool, String, String>>
      cases = {
          {"fewer replacements remove", u"a-bx", u"-x", T, u"_", T, u"a_b", u"-x"},
          {"replacements chain", u"ab", u"ab", T, u"bc", T, u"cc", u"ab"},
          {"case change only counts as equal", u"abc", u"a", T, u"A", F, u"Abc", u"a"},
          {"outer blank removal counts as equal", u" abc", u" ", T, u"", F, u"abc", u" "},
          {"inner blank removal differs", u"a bc", u" ", T, u"", T, u"abc", u" "},
          {"any banned character", u"a-b", u"+-", F, u"", T, u"a-b", u"+-"},
          {"character list is case-sensitive", u"abc", u"B", F, u"", F, u"abc", u"B"},
          {"allowed digits broken", u"12a", u"allowed:48,57", F, u"", T, u"12a", u"[0 - 9]"},
          {"allowed any case", u"abc", u"ALLOWED:48,57,97,122", F, u"", F, u"abc", u"[a - z]"},
          {"allowed not trimmed", u"8", u" allowed:48,57", F, u"", T, u"8", u" allowed:48,57"},
          {"equals ignores case and blanks", u" abc ", u"Equals:ABC", F, u"", F, u" abc ", u"ABC"},
          {"equals is whole", u"abcd", u"equals:abc", F, u"", T, u"abcd", u"abc"},
          {"replace wins over keywords", u"e:", u"equals:", T, u"", T, u"", u"equals:"},
      };
  for (const auto& [name, before, banned, replace, replacement, expected, after, info] : cases) {
    String value = before;
    String gotInfo = u"stale";
    const VBool got = bStringContainsBannedChars(value, banned, replace, replacement, &gotInfo);
    EXPECT_EQ(std::tuple(got, value, gotInfo), std::tuple(expected, after, info)) << name;
  }

  String value = u"a-b";
  Error e = errorOf([&] { (void)bStringContainsBannedChars(value, u""); });
  EXPECT_EQ(e.number(), kLibraryErrorNumber);
  EXPECT_EQ(e.description(),
            handledBy(u"List of banned characters cannot be empty", u"bStringContainsBannedChars"));
  e = errorOf([&] { (void)bStringContainsBannedChars(value, u"-", T, u"__"); });
  EXPECT_EQ(e.number(), kLibraryErrorNumber);
  EXPECT_EQ(e.description(), handledBy(u"Inconsistent numbers of banned and replacement characters",
                                       u"bStringContainsBannedChars"));
  EXPECT_EQ(value, u"a-b");
  // Without Replace the replacement list is not looked at.
  EXPECT_EQ(bStringContainsBannedChars(value, u"-", F, u"__"), T);
}

TEST_F(StringsTest, AllowedCharsChecksAnsiCodesAgainstRanges) {
  // Name, value, AllowedAsciiRanges, result, Info, the trace line if any. Info describes only the
  // last complete pair.
  const std::vector<std::tuple<const char*, String, String, VBool, String, String>> cases = {
      {"blank value", u"", u"48,57", T, u"48,57",
       u"bStringContainsAllowedChars was passed blank string for sValue"},
      {"blank ranges", u"1", u"", F, u"",
       u"bStringContainsAllowedChars was passed blank string for AllowedAsciiRanges"},
      {"single number", u"1", u"48", F, u"48",
       u"bStringContainsAllowedChars was not passed any valid ranges of characters: 48"},
      {"too many numbers", u"5", u"48,57,1,2,3,4,5,6,7,8,9,10", T, u"[\u0007 - \u0008]",
       u"bStringContainsAllowedChars was passed too many ranges, AllowedAsciiRanges = "
       u"48,57,1,2,3,4,5,6,7,8,9,10"},
      {"second range", u"9Z", u"48,57,65,90", T, u"[A - Z]", u""},
      {"outside every range", u"9z", u"48,57,65,90", F, u"[A - Z]", u""},
      {"incomplete pair is no range", u"A", u"48,57,65", F, u"[0 - 9]", u""},
      {"non-numeric limits are zero", u"a", u"x,y", F, String(u"[\0 - \0]", 7), u""},
      {"code page character", u"\u20AC", u"128,128", T, u"[\u20AC - \u20AC]", u""},
      // 8364 is 0x20AC: the bytes 0x20 0xAC, two characters of the single-byte code page.
      {"not the UTF-16 code", u"\u20AC", u"8364,8364", F, u"[ \u00AC -  \u00AC]", u""},
      {"no complete pair", u"5", u"48,-1", F, u"48,", u""},
  };
  for (const auto& [name, value, ranges, expected, info, logged] : cases) {
    test::TraceCapture trace;
    String gotInfo = u"stale";
    const VBool got = bStringContainsAllowedChars(value, ranges, &gotInfo);
    const auto lines = logged.empty() ? std::vector<String>{} : std::vector{logged};
    EXPECT_EQ(std::tuple(got, gotInfo, trace.messages()), std::tuple(expected, info, lines))
        << name;
  }

  // The limits are 16-bit integers.
  const Error e = errorOf([] { (void)bStringContainsAllowedChars(u"a", u"0,40000"); });
  EXPECT_EQ(e.number(), 6);
  EXPECT_NE(e.description().find(u"Error handled by bStringContainsAllowedChars"), String::npos);
  EXPECT_EQ(bStringContainsAllowedChars(u"a", u"-32768,32767"), T);

  // U+3042 is 0x82 0xA0 in code page 932: -32096 as a signed 16-bit code.
  test::ScopedLocale japanese("ja_JP.UTF-8");
  String info;
  EXPECT_EQ(bStringContainsAllowedChars(u"\u3042", u"-32096,-32096", &info), T);
  EXPECT_EQ(info, u"[\u3042 - \u3042]");
  EXPECT_EQ(bStringContainsAllowedChars(u"\u3042", u"0,255"), F);
  EXPECT_EQ(bStringContainsAllowedChars(u"a\u3042", u"97,97,-32768,-1"), T);
}

TEST_F(StringsTest, StrCompTrimsSpacesAndUpperCasesOnRequest) {
  // String1, String2, CaseSensitive, TrimWords, result. Both sides are upper-cased: dotless i
  // becomes I.
  const std::vector<std::tuple<String, String, VBool, VBool, VBool>> cases = {
      {u"abc", u"ABC", T, T, F},   {u"\tabc", u"abc", F, T, F},
      {u" abc ", u"abc", F, T, T}, {u"stra\u00DFe", u"STRASSE", F, T, F},
      {u" abc ", u"abc", F, F, F}, {u"\u00E9", u"\u00C9", F, T, T},
      {u"\u0131", u"i", F, T, T},  {u"a", u"a", static_cast<VBool>(1), F, T},
  };
  for (const auto& [a, b, caseSensitive, trim, expected] : cases) {
    EXPECT_EQ(bStrComp(a, b, caseSensitive, trim), expected) << show(a) << " vs " << show(b);
  }
}

TEST_F(StringsTest, StringInArrayReportsTheFirstMatch) {
  const Variant names = Variant(arrayOf({u"alpha", u" Beta", u"beta", u"7"}, 1));
  // Find, CaseSensitive, TrimWords, result, Index.
  const std::vector<std::tuple<String, VBool, VBool, VBool, std::int32_t>> cases = {
      {u"BETA", F, T, T, 2},  {u"beta", T, T, T, 3},    {u"beta", F, F, T, 3},
      {u" beta", F, F, T, 2}, {u"gamma", F, T, F, -99}, {u"7", F, T, T, 4},
  };
  for (const auto& [find, caseSensitive, trim, expected, expectedIndex] : cases) {
    std::int32_t index = -99;
    const VBool got = bStringInArray(find, names, &index, caseSensitive, trim);
    EXPECT_EQ(std::pair(got, index), std::pair(expected, expectedIndex)) << show(find);
  }
  std::int32_t index = -1;
  EXPECT_EQ(bStringInArray(u"2.5", Variant(arrayOf({std::int16_t{5}, 2.5})), &index), T);
  EXPECT_EQ(index, 1);
  EXPECT_EQ(bStringInArray(u"x", Variant(u"x")), F);
  EXPECT_EQ(bStringInArray(u"x", Variant(SafeArray())), F);
  const Error e = errorOf([] { (void)bStringInArray(u"x", Variant(arrayOf({Null{}, u"x"}))); });
  EXPECT_EQ(e.number(), 94);
  EXPECT_NE(e.description().find(u"Error handled by bStringInArray"), String::npos);
}

TEST_F(StringsTest, CollectionsAndArraysCountAsPresentOnlyWhenTheyHoldSomething) {
  auto col = std::make_shared<Collection>();
  col->Add(Variant(u"one"), u"First");
  col->Add(Variant(Null{}), u"Second");
  const std::vector<std::tuple<String, VBool, VBool>> keys = {
      {u"First", T, T},   {u"FIRST", T, T},  {u" first ", T, T},
      {u" first ", F, F}, {u"Second", T, T}, {u"Third", T, F},
  };
  for (const auto& [key, trim, expected] : keys) {
    EXPECT_EQ(bIsInCollection(col, key, trim), expected) << show(key);
  }
  EXPECT_EQ(bIsInCollection(nullptr, u"First"), F);

  // Name, value, IsArrayInitialised with and without bCheckBounds.
  const std::vector<std::tuple<const char*, Variant, VBool, VBool>> arrays = {
      {"not an array", Variant(std::int32_t{3}), F, F},
      {"never dimensioned", Variant(SafeArray(VarType::String)), F, F},
      {"no elements", Variant(arrayOf({})), F, T},
      {"negative bounds", Variant(arrayOf({1, 2}, -5)), T, T},
  };
  for (const auto& [name, v, checked, unchecked] : arrays) {
    EXPECT_EQ(IsArrayInitialised(v, T), checked) << name;
    EXPECT_EQ(IsArrayInitialised(v, F), unchecked) << name;
  }
}

TEST_F(StringsTest, BooleanKeywordsAndNames) {
  // Text, bDefault, result, DefaultUsed.
  const std::vector<std::tuple<String, VBool, VBool, VBool>> cases = {
      {u" yes ", F, T, F}, {u"Y", F, T, F},     {u"true", F, T, F},  {u"t", F, T, F},
      {u"On", F, T, F},    {u"1", F, T, F},     {u"-1", F, T, F},    {u"NO", T, F, F},
      {u"n", T, F, F},     {u"False", T, F, F}, {u"f", T, F, F},     {u"off", T, F, F},
      {u"0", T, F, F},     {u"maybe", T, T, T}, {u"maybe", F, F, T}, {u"", T, T, T},
      {u"\tyes", F, F, T}, {u"+1", T, T, T},    {u"0.0", T, T, T},
  };
  for (const auto& [text, def, expected, defaultUsed] : cases) {
    VBool used = static_cast<VBool>(7);
    const VBool got = bStringToBoolean(text, def, &used);
    EXPECT_EQ(std::pair(got, used), std::pair(expected, defaultUsed)) << show(text);
    EXPECT_EQ(bStringToBoolean(text, def), expected) << show(text);
  }
  EXPECT_EQ(bStringToBoolean(u"x", static_cast<VBool>(1)), static_cast<VBool>(1));

  EXPECT_EQ(sBooleanToString(T), u"True");
  EXPECT_EQ(sBooleanToString(F), u"False");
  EXPECT_EQ(sBooleanToString(static_cast<VBool>(1)), u"");
}

TEST_F(StringsTest, MaximumAndMinimumKeepTheEarliestOfEqualElements) {
  std::vector<Variant> top(32767, Variant(1.0));
  top[32766] = Variant(2.0);
  // Name, values, maximum and minimum (with their types) or the error number. Nothing compares
  // with a Null in front; the 16-bit counter overflows stepping past 32767.
  const std::vector<std::tuple<const char*, SafeArray, Variant, Variant, std::int32_t>> cases = {
      {"ties", arrayOf({std::int32_t{3}, std::int32_t{7}, 7.0, std::int16_t{2}, 2.0}),
       std::int32_t{7}, std::int16_t{2}, 0},
      {"strings by code units", arrayOf({u"b", u"a", u"B"}), u"b", u"B", 0},
      {"one element", arrayOf({2.5}, 7), 2.5, 2.5, 0},
      {"null elements are passed over", arrayOf({1.0, Null{}, 5.0, 0.5}), 5.0, 0.5, 0},
      {"leading null stays", arrayOf({Null{}, 9.0}), Null{}, Null{}, 0},
      {"last index the counter reaches", arrayOf(top), 2.0, 1.0, 0},
      {"no elements", arrayOf({}), {}, {}, 9},
      {"never dimensioned", SafeArray(), {}, {}, 9},
      {"upper bound beyond 32767", arrayOf(std::vector<Variant>(40000, Variant(1.0))), {}, {}, 6},
      {"lower bound at the top", arrayOf({1.0}, 32767), {}, {}, 6},
      {"counter steps past 32767", arrayOf(std::vector<Variant>(32768, Variant(1.0))), {}, {}, 6},
  };
  for (const auto& [name, vals, max, min, number] : cases) {
    SCOPED_TRACE(name);
    EXPECT_EQ(test::errorNumber([&v = vals] { (void)Maximum_Worker(v); }), number);
    EXPECT_EQ(test::errorNumber([&v = vals] { (void)Minimum_Worker(v); }), number);
    if (number != 0) continue;
    const Variant gotMax = Maximum_Worker(vals);
    const Variant gotMin = Minimum_Worker(vals);
    EXPECT_EQ(std::pair(gotMax.type(), gotMin.type()), std::pair(max.type(), min.type()));
    EXPECT_TRUE(max.isNull() || (gotMax == max && gotMin == min));
  }
  for (const auto& [worker, procedure] : {std::pair{&Maximum_Worker, u"Maximum_Worker"},
                                          std::pair{&Minimum_Worker, u"Minimum_Worker"}}) {
    const String description = errorOf([w = worker] { (void)w(SafeArray()); }).description();
    EXPECT_NE(description.find(u"Error handled by " + String(procedure)), String::npos);
  }
}

}  // namespace
}  // namespace orvo::text
