#include "text/strings.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <vector>

#include "orvogeneric/classes.hpp"
#include "orvogeneric/error.hpp"
#include "support/test_support.hpp"

namespace orvo::text {
namespace {

using test::errorOf;

using test::show;

// The error a call raises; a call that returns normally fails the test.

String handledBy(std::u16string_view message, std::u16string_view procedure) {
  return String(message) + u"\r\nError handled by " + String(procedure);
}

SafeArray arrayOf(std::vector<Variant> items, std::int32_t lowerBound = 0,
                  VarType type = VarType::Variant) {
  return SafeArray(type, lowerBound, std::move(items));
}

std::vector<String> stringsOf(const Variant& v) {
  std::vector<String> out;
  const SafeArray* a = v.array();
  if (a == nullptr) {
    ADD_FAILURE() << "not an array";
    return out;
  }
  for (const Variant& item : a->items()) out.push_back(*item.get<String>());
  return out;
}

class StringsTest : public ::testing::Test {
 protected:
  test::ScopedLocale locale_{"en_US.UTF-8"};
};

// ExpandString --------------------------------------------------------------------------------

struct ExpandCase {
  const char* name;
  String tmpl;
  std::vector<Variant> args;
  std::int32_t lowerBound;
  String expected;
};

TEST_F(StringsTest, ExpandStringReplacesHighestIndexFirst) {
  std::vector<Variant> twelve;
  for (int i = 0; i < 12; ++i) twelve.emplace_back(u"<" + fromUtf8(std::to_string(i)) + u">");
  const std::vector<ExpandCase> cases = {
      {"order of arguments", u"%1 of %0", {u"a", u"b"}, 0, u"b of a"},
      {"two digits before one", u"%11|%1|%10", twelve, 0, u"<11>|<1>|<10>"},
      {"beyond the last argument", u"%3 %2", {u"a", u"b", u"c"}, 0, u"%3 c"},
      {"no placeholders", u"plain 100% text", {u"a"}, 0, u"plain 100% text"},
      {"every occurrence", u"%0%0-%0", {u"x"}, 0, u"xx-x"},
      {"counted from the lower bound", u"%0,%1", {u"one", u"two"}, 5, u"one,two"},
      {"substituted text is searched again", u"%3", {u"A", u"B", u"C", u"%0"}, 0, u"A"},
      {"lower text is not searched again", u"%0", {u"%1", u"B"}, 0, u"%1"},
      {"a leading zero is no placeholder", u"%01", {u"a", u"b"}, 0, u"a1"},
      {"literal percent before a placeholder", u"%%0", {u"a"}, 0, u"%a"},
      {"numbers in the default text form",
       u"%0;%1;%2",
       {Variant(2.5), Variant(std::int32_t{-7}), Variant(VBool::True)},
       0,
       u"2.5;-7;True"},
      {"values without text become empty",
       u"[%0][%1]",
       {Variant(Null{}), Variant(u"z")},
       0,
       u"[][z]"},
      {"no arguments", u"x%0y", {}, 0, u"x%0y"},
      {"numeric range message",
       u"You have entered a number%0below the allowed minimum%0%0Input Value%1%2%0Limiting "
       u"Value%1%3",
       {u"\r\n", u"\t", u"5", u"10"},
       0,
       u"You have entered a number\r\nbelow the allowed minimum\r\n\r\nInput Value\t5\r\n"
       u"Limiting Value\t10"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    SafeArray args = arrayOf(c.args, c.lowerBound);
    EXPECT_EQ(ExpandString_Worker(c.tmpl, args), c.expected);
    EXPECT_EQ(ExpandString_Worker(c.tmpl, Variant(args)), c.expected);
  }
}

TEST_F(StringsTest, ExpandStringWithoutAnArrayHasOneEmptyArgument) {
  EXPECT_EQ(ExpandString_Worker(u"x%0y", Variant(u"ignored")), u"xy");
  EXPECT_EQ(ExpandString_Worker(u"x%0y%1", Variant()), u"xy%1");
}

TEST_F(StringsTest, ExpandStringOfANeverDimensionedArrayIsSubscriptOutOfRange) {
  const SafeArray never;
  const Error e = errorOf([&] { (void)ExpandString_Worker(u"%0", never); });
  EXPECT_EQ(e.number(), 9);
  EXPECT_NE(e.description().find(u"Error handled by ExpandString_Worker"), String::npos);
}

TEST_F(StringsTest, ExpandStringUsesTheRegionalDecimalSeparator) {
  test::ScopedLocale german("de_DE.UTF-8");
  SafeArray args = arrayOf({Variant(2.5)});
  EXPECT_EQ(ExpandString_Worker(u"v=%0", args), u"v=2,5");
}

// Quotes --------------------------------------------------------------------------------------

struct AddQuotesCase {
  String in;
  VBool trimInput, trimInside, single;
  String expected;
};

TEST_F(StringsTest, AddQuotesToStringStripsEveryNestedPair) {
  const auto F = VBool::False;
  const auto T = VBool::True;
  const std::vector<AddQuotesCase> cases = {
      {u"", F, T, F, u"\"\""},
      {u"", F, T, T, u"''"},
      {u"   ", F, T, F, u"\"   \""},
      {u"   ", T, T, F, u"\"\""},
      {u"abc", F, T, F, u"\"abc\""},
      {u"abc", F, T, T, u"'abc'"},
      {u"\"\"abc\"\"", F, T, F, u"\"abc\""},
      {u"'abc'", F, T, F, u"\"abc\""},
      {u"\"abc\"", F, T, T, u"'abc'"},
      {u"'\"abc\"'", F, T, F, u"\"abc\""},
      {u"\" abc \"", F, T, F, u"\"abc\""},
      {u"\" abc \"", F, F, F, u"\" abc \""},
      // Untrimmed outer blanks hide the quotes.
      {u" \"abc\" ", F, T, F, u"\" \"abc\" \""},
      {u" \"abc\" ", T, T, F, u"\"abc\""},
      // Mismatched marks are no pair.
      {u"\"abc'", F, T, F, u"\"\"abc'\""},
      {u"\"", F, T, F, u"\"\"\""},
      {u"\"\"", F, T, F, u"\"\""},
      // Trimming inside can expose the next pair.
      {u"\" 'a' \"", F, T, F, u"\"a\""},
      {u"\" 'a' \"", F, F, F, u"\" 'a' \""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(show(c.in) + " trimIn=" + std::to_string(value(c.trimInput)) +
                 " inside=" + std::to_string(value(c.trimInside)) +
                 " single=" + std::to_string(value(c.single)));
    EXPECT_EQ(AddQuotesToString(c.in, c.trimInput, c.trimInside, c.single), c.expected);
  }
}

struct RemoveQuotesCase {
  String in;
  VBool trimInput, trimInside;
  String expected;
};

TEST_F(StringsTest, RemoveQuotesFromStringRemovesOnePair) {
  const auto F = VBool::False;
  const auto T = VBool::True;
  const std::vector<RemoveQuotesCase> cases = {
      {u"  abc  ", T, F, u"  abc  "},
      {u"\"abc\"", T, F, u"abc"},
      {u"'abc'", T, F, u"abc"},
      {u"\"", T, F, u"\""},
      {u"''", T, F, u""},
      {u"  \" abc \"  ", T, F, u" abc "},
      {u"  \" abc \"  ", T, T, u"abc"},
      {u"  \" abc \"  ", F, T, u"  \" abc \"  "},
      {u"\"\"\"abc\"\"\"", T, F, u"\"\"abc\"\""},
      {u"'abc\"", T, F, u"'abc\""},
      {u"\"abc'", T, F, u"\"abc'"},
      {u"\"a\"b\"", T, F, u"a\"b"},
      {u"x\"abc\"", T, F, u"x\"abc\""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(show(c.in));
    EXPECT_EQ(RemoveQuotesFromString(c.in, c.trimInput, c.trimInside), c.expected);
  }
}

TEST_F(StringsTest, PathQuotingTrimsAndLeavesBlankPathsEmpty) {
  const std::vector<std::pair<String, String>> add = {
      {u"", u""},
      {u"    ", u""},
      {u"  C:\\a b\\c.txt  ", u"\"C:\\a b\\c.txt\""},
      {u"\"C:\\x\"", u"\"C:\\x\""},
      {u"\" C:\\x \"", u"\"C:\\x\""},
  };
  for (const auto& [in, expected] : add) {
    SCOPED_TRACE(show(in));
    EXPECT_EQ(AddQuotesToPath(in), expected);
  }
  const std::vector<std::pair<String, String>> remove = {
      {u"  \" C:\\a \"  ", u"C:\\a"},
      {u"  C:\\a  ", u"C:\\a"},
      {u"\"\"", u""},
      {u"'/opt/x'", u"/opt/x"},
  };
  for (const auto& [in, expected] : remove) {
    SCOPED_TRACE(show(in));
    EXPECT_EQ(RemoveQuotesFromPath(in), expected);
  }
}

TEST_F(StringsTest, EncodeQuotesTouchesApostrophesOnly) {
  EXPECT_EQ(EncodeQuotes(u"it's"), u"it`s");
  EXPECT_EQ(EncodeQuotes(u"''x''"), u"``x``");
  EXPECT_EQ(EncodeQuotes(u"\"quoted\" \u2019"), u"\"quoted\" \u2019");
}

// Counting and splitting ----------------------------------------------------------------------

TEST_F(StringsTest, StringCountCountsNonOverlappingOccurrences) {
  const std::vector<std::tuple<String, String, std::int32_t>> cases = {
      {u"a,b,,c", u",", 3}, {u"", u",", 0},    {u"abc", u"", 0},  {u"aaaa", u"aa", 2},
      {u"aaa", u"aa", 1},   {u"abc", u"x", 0}, {u"ABC", u"b", 0}, {u",", u",", 1},
  };
  for (const auto& [s, find, expected] : cases) {
    SCOPED_TRACE(show(s) + " / " + show(find));
    EXPECT_EQ(StringCount(s, find), expected);
  }
}

TEST_F(StringsTest, ReplaceMultipleSpacesLeavesSingleBlanks) {
  const std::vector<std::pair<String, String>> cases = {
      {u"a    b", u"a b"}, {u"   a  ", u" a "}, {u"a\t\tb", u"a\t\tb"},  {u"a \t  b", u"a \t b"},
      {u"", u""},          {u"     ", u" "},    {u"a  b   c", u"a b c"},
  };
  for (const auto& [in, expected] : cases) {
    SCOPED_TRACE(show(in));
    EXPECT_EQ(ReplaceMultipleSpaces(in), expected);
  }
}

struct SplitCase {
  String text;
  VBool trimFirst;
  std::vector<String> words;
};

TEST_F(StringsTest, SplitOnSpacesGivesZeroBasedWords) {
  const std::vector<SplitCase> cases = {
      {u"  a   b ", VBool::True, {u"a", u"b"}},
      {u"  a   b ", VBool::False, {u"", u"a", u"b", u""}},
      {u"", VBool::True, {}},
      {u"   ", VBool::True, {}},
      {u"   ", VBool::False, {u"", u""}},
      {u"a\tb c", VBool::True, {u"a\tb", u"c"}},
      {u"one", VBool::True, {u"one"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(show(c.text));
    std::int32_t numWords = -5;
    const Variant v = SplitOnSpaces(c.text, &numWords, c.trimFirst);
    ASSERT_NE(v.array(), nullptr);
    EXPECT_TRUE(v.array()->dimensioned());
    EXPECT_EQ(v.array()->lowerBound(), 0);
    EXPECT_EQ(v.array()->upperBound(), static_cast<std::int32_t>(c.words.size()) - 1);
    EXPECT_EQ(v.array()->elementType(), VarType::String);
    EXPECT_EQ(stringsOf(v), c.words);
    EXPECT_EQ(numWords, static_cast<std::int32_t>(c.words.size()));
  }
  EXPECT_EQ(stringsOf(SplitOnSpaces(u"x y")), (std::vector<String>{u"x", u"y"}));
}

TEST_F(StringsTest, LenTrimCountsWithoutOuterBlanks) {
  EXPECT_EQ(LenTrim(u"  ab  "), 2);
  EXPECT_EQ(LenTrim(u"\tab\t"), 4);
  EXPECT_EQ(LenTrim(u""), 0);
  EXPECT_EQ(LenTrim(u"     "), 0);
}

// ANSI byte counts ----------------------------------------------------------------------------

struct AnsiCase {
  const char* locale;
  String text;
  std::int32_t bytes;
  String corrected;
};

TEST_F(StringsTest, LenBAnsiAndDbcsCorrectionFollowTheSystemCodePage) {
  const std::vector<AnsiCase> cases = {
      {"en_US.UTF-8", u"abc", 3, u"abc"},
      {"en_US.UTF-8", u"\u00E9\u20AC", 2, u"\u00E9\u20AC"},
      {"en_US.UTF-8", u"\u3042", 1, u"\u3042"},
      {"en_US.UTF-8", u"\U0001F600", 2, u"\U0001F600"},
      {"en_US.UTF-8", u"", 0, u""},
      {"ja_JP.UTF-8", u"\u3042\u3044\u3046", 6, u"\u3042  "},
      {"ja_JP.UTF-8", u"a\u3042b", 4, u"a\u3042 "},
      {"ja_JP.UTF-8", u"\u3042\u3044", 4, u"\u3042 "},
      {"ja_JP.UTF-8", u"\u3042", 2, u" "},
      {"ja_JP.UTF-8", u"\uFF71bc", 3, u"\uFF71bc"},
      {"ja_JP.UTF-8", u"ab  ", 4, u"ab  "},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.locale) + " " + show(c.text));
    test::ScopedLocale locale(c.locale);
    EXPECT_EQ(LenB_ANSI(c.text), c.bytes);
    String s = c.text;
    CorrectDLLStringForDBCS(s);
    EXPECT_EQ(s, c.corrected);
    EXPECT_EQ(s.size(), c.text.size());
  }
}

// Banned and allowed characters ---------------------------------------------------------------

struct BannedCase {
  const char* name;
  String value;
  String banned;
  VBool replace;
  String replacement;
  VBool expected;
  String valueAfter;
  String info;
};

TEST_F(StringsTest, BannedCharsInAllThreeForms) {
  const auto F = VBool::False;
  const auto T = VBool::True;
  const std::vector<BannedCase> cases = {
      {"replace one", u"a-b", u"-", T, u"_", T, u"a_b", u"-"},
      {"replace by nothing", u"a-b", u"-", T, u"", T, u"ab", u"-"},
      {"fewer replacements", u"a-bx", u"-x", T, u"_", T, u"a_b", u"-x"},
      {"replacements chain", u"ab", u"ab", T, u"bc", T, u"cc", u"ab"},
      {"nothing to replace", u"abc", u"-", T, u"_", F, u"abc", u"-"},
      {"case change only counts as equal", u"abc", u"a", T, u"A", F, u"Abc", u"a"},
      {"outer blank removal counts as equal", u" abc", u" ", T, u"", F, u"abc", u" "},
      {"inner blank removal differs", u"a bc", u" ", T, u"", T, u"abc", u" "},
      {"any banned character", u"a-b", u"+-", F, u"", T, u"a-b", u"+-"},
      {"no banned character", u"ab", u"-+", F, u"", F, u"ab", u"-+"},
      {"character list is case-sensitive", u"abc", u"B", F, u"", F, u"abc", u"B"},
      {"allowed digits", u"123", u"allowed:48,57", F, u"", F, u"123", u"[0 - 9]"},
      {"allowed digits broken", u"12a", u"allowed:48,57", F, u"", T, u"12a", u"[0 - 9]"},
      {"allowed keyword any case", u"abc", u"ALLOWED:48,57,97,122", F, u"", F, u"abc", u"[a - z]"},
      {"allowed keyword not trimmed", u"8", u" allowed:48,57", F, u"", T, u"8", u" allowed:48,57"},
      {"equals ignores case", u"Abc", u"equals:abc", F, u"", F, u"Abc", u"abc"},
      {"equals ignores outer blanks", u" abc ", u"Equals:ABC", F, u"", F, u" abc ", u"ABC"},
      {"equals is whole", u"abcd", u"equals:abc", F, u"", T, u"abcd", u"abc"},
      {"replace wins over keywords", u"e:", u"equals:", T, u"", T, u"", u"equals:"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    String value = c.value;
    String info = u"stale";
    EXPECT_EQ(bStringContainsBannedChars(value, c.banned, c.replace, c.replacement, &info),
              c.expected);
    EXPECT_EQ(value, c.valueAfter);
    EXPECT_EQ(info, c.info);
    String again = c.value;
    EXPECT_EQ(bStringContainsBannedChars(again, c.banned, c.replace, c.replacement), c.expected);
  }
}

TEST_F(StringsTest, BannedCharsRejectsBadLists) {
  String value = u"a-b";
  Error e = errorOf([&] { (void)bStringContainsBannedChars(value, u""); });
  EXPECT_EQ(e.number(), kLibraryErrorNumber);
  EXPECT_EQ(e.description(),
            handledBy(u"List of banned characters cannot be empty", u"bStringContainsBannedChars"));

  e = errorOf([&] { (void)bStringContainsBannedChars(value, u"-", VBool::True, u"__"); });
  EXPECT_EQ(e.number(), kLibraryErrorNumber);
  EXPECT_EQ(e.description(), handledBy(u"Inconsistent numbers of banned and replacement characters",
                                       u"bStringContainsBannedChars"));
  EXPECT_EQ(value, u"a-b");

  // Without Replace the replacement list is not looked at.
  EXPECT_EQ(bStringContainsBannedChars(value, u"-", VBool::False, u"__"), VBool::True);
}

struct AllowedCase {
  const char* name;
  String value;
  String ranges;
  VBool expected;
  String info;
  std::optional<String> logged;
};

TEST_F(StringsTest, AllowedCharsChecksAnsiCodesAgainstRanges) {
  const std::vector<AllowedCase> cases = {
      {"blank value", u"", u"48,57", VBool::True, u"48,57",
       u"bStringContainsAllowedChars was passed blank string for sValue"},
      {"blank ranges", u"1", u"", VBool::False, u"",
       u"bStringContainsAllowedChars was passed blank string for AllowedAsciiRanges"},
      {"single number", u"1", u"48", VBool::False, u"48",
       u"bStringContainsAllowedChars was not passed any valid ranges of characters: 48"},
      {"too many numbers", u"5", u"48,57,1,2,3,4,5,6,7,8,9,10", VBool::True, u"[\u0007 - \u0008]",
       u"bStringContainsAllowedChars was passed too many ranges, AllowedAsciiRanges = "
       u"48,57,1,2,3,4,5,6,7,8,9,10"},
      {"digits", u"0123456789", u"48,57", VBool::True, u"[0 - 9]", std::nullopt},
      {"second range", u"9Z", u"48,57,65,90", VBool::True, u"[A - Z]", std::nullopt},
      {"outside every range", u"9z", u"48,57,65,90", VBool::False, u"[A - Z]", std::nullopt},
      {"incomplete pair is no range", u"A", u"48,57,65", VBool::False, u"[0 - 9]", std::nullopt},
      {"non-numeric limits are zero", u"a", u"x,y", VBool::False,
       String(u"[") + u'\0' + u" - " + u'\0' + u"]", std::nullopt},
      {"code page character", u"\u20AC", u"128,128", VBool::True, u"[\u20AC - \u20AC]",
       std::nullopt},
      // 8364 is 0x20AC: the bytes 0x20 0xAC, which the single-byte code page reads as two
      // characters.
      {"not the UTF-16 code", u"\u20AC", u"8364,8364", VBool::False, u"[ \u00AC -  \u00AC]",
       std::nullopt},
      {"no complete pair", u"5", u"48,-1", VBool::False, u"48,", std::nullopt},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    test::TraceCapture trace;
    String info = u"stale";
    EXPECT_EQ(bStringContainsAllowedChars(c.value, c.ranges, &info), c.expected);
    EXPECT_EQ(show(info), show(c.info));
    if (c.logged) {
      ASSERT_EQ(trace.messages().size(), 1U);
      EXPECT_EQ(trace.messages()[0], *c.logged);
    } else {
      EXPECT_TRUE(trace.messages().empty());
    }
  }
}

TEST_F(StringsTest, AllowedCharsLimitsAreSixteenBit) {
  const Error e = errorOf([] { (void)bStringContainsAllowedChars(u"a", u"0,40000"); });
  EXPECT_EQ(e.number(), 6);
  EXPECT_NE(e.description().find(u"Error handled by bStringContainsAllowedChars"), String::npos);
  EXPECT_EQ(bStringContainsAllowedChars(u"a", u"-32768,32767"), VBool::True);
}

TEST_F(StringsTest, AllowedCharsGivesDoubleByteCharactersNegativeCodes) {
  test::ScopedLocale japanese("ja_JP.UTF-8");
  // U+3042 is 0x82 0xA0 in code page 932: -32096 as a signed 16-bit code.
  String info;
  EXPECT_EQ(bStringContainsAllowedChars(u"\u3042", u"-32096,-32096", &info), VBool::True);
  EXPECT_EQ(info, u"[\u3042 - \u3042]");
  EXPECT_EQ(bStringContainsAllowedChars(u"\u3042", u"0,255"), VBool::False);
  EXPECT_EQ(bStringContainsAllowedChars(u"a\u3042", u"97,97,-32768,-1"), VBool::True);
}

// Comparison and lookup -----------------------------------------------------------------------

struct CompareCase {
  String a, b;
  VBool caseSensitive, trim;
  VBool expected;
};

TEST_F(StringsTest, StrCompTrimsAndUpperCasesOnRequest) {
  const auto F = VBool::False;
  const auto T = VBool::True;
  const std::vector<CompareCase> cases = {
      {u"abc", u"ABC", F, T, T},
      {u"abc", u"ABC", T, T, F},
      {u" abc ", u"abc", F, T, T},
      {u" abc ", u"abc", F, F, F},
      {u"\tabc", u"abc", F, T, F},
      {u"stra\u00DFe", u"STRASSE", F, T, F},
      {u"\u00E9", u"\u00C9", F, T, T},
      {u"", u"   ", F, T, T},
      {u"a", u"a", static_cast<VBool>(1), F, T},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(show(c.a) + " vs " + show(c.b));
    EXPECT_EQ(bStrComp(c.a, c.b, c.caseSensitive, c.trim), c.expected);
  }
}

TEST_F(StringsTest, StringInArrayReportsTheFirstMatch) {
  const Variant names = Variant(arrayOf({u"alpha", u" Beta", u"beta", u"7"}, 1));
  struct Case {
    String find;
    VBool caseSensitive, trim;
    VBool expected;
    std::int32_t index;
  };
  const std::vector<Case> cases = {
      {u"BETA", VBool::False, VBool::True, VBool::True, 2},
      {u"beta", VBool::True, VBool::True, VBool::True, 3},
      {u"beta", VBool::False, VBool::False, VBool::True, 3},
      {u" beta", VBool::False, VBool::False, VBool::True, 2},
      {u"gamma", VBool::False, VBool::True, VBool::False, -99},
      {u"7", VBool::False, VBool::True, VBool::True, 4},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(show(c.find));
    std::int32_t index = -99;
    EXPECT_EQ(bStringInArray(c.find, names, &index, c.caseSensitive, c.trim), c.expected);
    EXPECT_EQ(index, c.index);
  }
  const Variant numbers = Variant(arrayOf({Variant(std::int16_t{5}), Variant(2.5)}));
  std::int32_t index = -1;
  EXPECT_EQ(bStringInArray(u"2.5", numbers, &index), VBool::True);
  EXPECT_EQ(index, 1);

  EXPECT_EQ(bStringInArray(u"x", Variant(u"x")), VBool::False);
  EXPECT_EQ(bStringInArray(u"x", Variant(SafeArray())), VBool::False);
  EXPECT_EQ(bStringInArray(u"", Variant(arrayOf({}))), VBool::False);
}

TEST_F(StringsTest, StringInArrayFailsOnANullElement) {
  const Variant withNull = Variant(arrayOf({Variant(Null{}), u"x"}));
  const Error e = errorOf([&] { (void)bStringInArray(u"x", withNull); });
  EXPECT_EQ(e.number(), 94);
  EXPECT_NE(e.description().find(u"Error handled by bStringInArray"), String::npos);
}

TEST_F(StringsTest, IsInCollectionTreatsOnlyAMissingKeyAsAbsent) {
  auto col = std::make_shared<Collection>();
  col->Add(Variant(u"one"), u"First");
  col->Add(Variant(Null{}), u"Second");
  struct Case {
    String key;
    VBool trim;
    VBool expected;
  };
  const std::vector<Case> cases = {
      {u"First", VBool::True, VBool::True},   {u"FIRST", VBool::True, VBool::True},
      {u" first ", VBool::True, VBool::True}, {u" first ", VBool::False, VBool::False},
      {u"Second", VBool::True, VBool::True},  {u"Third", VBool::True, VBool::False},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(show(c.key));
    EXPECT_EQ(bIsInCollection(col, c.key, c.trim), c.expected);
  }
  EXPECT_EQ(bIsInCollection(nullptr, u"First"), VBool::False);
}

TEST_F(StringsTest, IsArrayInitialisedDistinguishesTheEmptyForms) {
  struct Case {
    const char* name;
    Variant v;
    VBool checked, unchecked;
  };
  const std::vector<Case> cases = {
      {"not an array", Variant(std::int32_t{3}), VBool::False, VBool::False},
      {"empty variant", Variant(), VBool::False, VBool::False},
      {"never dimensioned", Variant(SafeArray(VarType::String)), VBool::False, VBool::False},
      {"no elements", Variant(arrayOf({})), VBool::False, VBool::True},
      {"one element", Variant(arrayOf({u"a"})), VBool::True, VBool::True},
      {"negative bounds", Variant(arrayOf({1, 2}, -5)), VBool::True, VBool::True},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(IsArrayInitialised(c.v, VBool::True), c.checked);
    EXPECT_EQ(IsArrayInitialised(c.v, VBool::False), c.unchecked);
  }
}

// Booleans ------------------------------------------------------------------------------------

TEST_F(StringsTest, StringToBooleanKeywordsAndDefault) {
  struct Case {
    String text;
    VBool def;
    VBool expected;
    VBool defaultUsed;
  };
  const auto F = VBool::False;
  const auto T = VBool::True;
  const std::vector<Case> cases = {
      {u" yes ", F, T, F}, {u"Y", F, T, F},     {u"true", F, T, F},  {u"t", F, T, F},
      {u"On", F, T, F},    {u"1", F, T, F},     {u"-1", F, T, F},    {u"NO", T, F, F},
      {u"n", T, F, F},     {u"False", T, F, F}, {u"f", T, F, F},     {u"off", T, F, F},
      {u"0", T, F, F},     {u"maybe", T, T, T}, {u"maybe", F, F, T}, {u"", T, T, T},
      {u"2", F, F, T},     {u"\tyes", F, F, T}, {u"+1", T, T, T},    {u"yes!", F, F, T},
      {u"0.0", T, T, T},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(show(c.text));
    VBool used = static_cast<VBool>(7);
    EXPECT_EQ(bStringToBoolean(c.text, c.def, &used), c.expected);
    EXPECT_EQ(used, c.defaultUsed);
    EXPECT_EQ(bStringToBoolean(c.text, c.def), c.expected);
  }
  VBool used = VBool::True;
  EXPECT_EQ(bStringToBoolean(u"x", static_cast<VBool>(1), &used), static_cast<VBool>(1));
}

TEST_F(StringsTest, BooleanToStringNamesOnlyCanonicalValues) {
  EXPECT_EQ(sBooleanToString(VBool::True), u"True");
  EXPECT_EQ(sBooleanToString(VBool::False), u"False");
  EXPECT_EQ(sBooleanToString(static_cast<VBool>(1)), u"");
  EXPECT_EQ(sBooleanToString(static_cast<VBool>(-2)), u"");
}

// Maximum and minimum -------------------------------------------------------------------------

TEST_F(StringsTest, MaximumAndMinimumKeepTheEarliestOfEqualElements) {
  struct Case {
    const char* name;
    SafeArray vals;
    Variant max, min;
    VarType maxType, minType;
  };
  const std::vector<Case> cases = {
      {"ties", arrayOf({std::int32_t{3}, std::int32_t{7}, 7.0, std::int16_t{2}, 2.0}),
       std::int32_t{7}, std::int16_t{2}, VarType::Long, VarType::Integer},
      {"strings by code units", arrayOf({u"b", u"a", u"B"}), u"b", u"B", VarType::String,
       VarType::String},
      {"one element", arrayOf({2.5}, 7), 2.5, 2.5, VarType::Double, VarType::Double},
      {"negative numbers", arrayOf({-1.5, -0.5, -3.0}), -0.5, -3.0, VarType::Double,
       VarType::Double},
      {"null elements are passed over", arrayOf({1.0, Variant(Null{}), 5.0, 0.5}), 5.0, 0.5,
       VarType::Double, VarType::Double},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const Variant max = Maximum_Worker(c.vals);
    const Variant min = Minimum_Worker(c.vals);
    EXPECT_TRUE(max == c.max);
    EXPECT_TRUE(min == c.min);
    EXPECT_EQ(max.type(), c.maxType);
    EXPECT_EQ(min.type(), c.minType);
  }
  // A Null in front stays: nothing compares greater than Null.
  EXPECT_TRUE(Maximum_Worker(arrayOf({Variant(Null{}), 9.0})).isNull());
}

TEST_F(StringsTest, MaximumFailsOnMissingElementsAndSixteenBitOverflow) {
  struct Case {
    const char* name;
    SafeArray vals;
    std::int32_t number;
  };
  const std::vector<Case> cases = {
      {"no elements", arrayOf({}), 9},
      {"never dimensioned", SafeArray(), 9},
      {"upper bound beyond 32767", arrayOf(std::vector<Variant>(40000, Variant(1.0))), 6},
      {"lower bound at the top", arrayOf({1.0}, 32767), 6},
      {"counter steps past 32767", arrayOf(std::vector<Variant>(32768, Variant(1.0))), 6},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    Error e = errorOf([&] { (void)Maximum_Worker(c.vals); });
    EXPECT_EQ(e.number(), c.number);
    EXPECT_NE(e.description().find(u"Error handled by Maximum_Worker"), String::npos);
    e = errorOf([&] { (void)Minimum_Worker(c.vals); });
    EXPECT_EQ(e.number(), c.number);
    EXPECT_NE(e.description().find(u"Error handled by Minimum_Worker"), String::npos);
  }
  std::vector<Variant> many(32767, Variant(1.0));
  many[32766] = Variant(2.0);
  EXPECT_TRUE(Maximum_Worker(arrayOf(many)) == Variant(2.0));
}

// The public class ----------------------------------------------------------------------------

TEST_F(StringsTest, ClassMembersForwardTheirArguments) {
  StringUtilities su;
  EXPECT_EQ(su.BannedCharExtender_Allowed() + su.BannedCharExtender_Equals(), u"allowed:equals:");
  String value = u"a-b";
  EXPECT_EQ(su.StringContainsBannedChars(value, u"-", VBool::True, u"_"), VBool::True);
  EXPECT_EQ(value, u"a_b");
  String info;
  value = u"12a";
  EXPECT_EQ(su.StringContainsBannedCharsEx(value, u"allowed:48,57", VBool::False, u"", &info),
            VBool::True);
  EXPECT_EQ(info, u"[0 - 9]");
  EXPECT_EQ(su.StringContainsAllowedChars(value, u"48,57,97,122"), VBool::True);
  SafeArray args = arrayOf({u"a", u"b"});
  EXPECT_EQ(su.ExpandString(u"%1 of %0", args), u"b of a");
  Variant arr = Variant(arrayOf({u"q", u"r"}));
  std::int32_t index = -1;
  EXPECT_EQ(su.IsStringInArray(u"R", arr, &index), VBool::True);
  EXPECT_EQ(index, 1);
  EXPECT_EQ(su.IsArrayInitialised_Fast(arr), VBool::True);
  SafeArray vals = arrayOf({1.0, 4.0, 2.0});
  EXPECT_TRUE(su.Maximum(vals) == Variant(4.0));
  EXPECT_TRUE(su.Minimum(vals) == Variant(1.0));
}

}  // namespace
}  // namespace orvo::text
