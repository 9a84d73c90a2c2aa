#include "files/textfiles.hpp"

#include <gtest/gtest.h>

#include "files/encoding.hpp"
#include "files/files_fixture.hpp"
#include "files/textio.hpp"
#include "frame/state.hpp"
#include "support/test_support.hpp"

namespace orvo::files {
namespace {

using TextFiles = test::FilesTest;
using test::errorOf;

TEST(TextIoTest, ConversionsOfBytesAndText) {
  struct Case {
    std::vector<std::uint8_t> bytes;
    std::int32_t codePage;
    String text;
  };
  const Case cases[] = {
      {{0x41, 0x00, 0x42, 0x00}, 1200, u"AB"},
      {{0x00, 0x41, 0x00, 0x42}, 1201, u"AB"},
      {{0x41, 0x00, 0x42}, 1200, u"A\u0042"},  // the odd byte is the low half of a last unit
      {{0xC3, 0xA9, 0xE2, 0x82, 0xAC}, 65001, u"\u00e9\u20ac"},
      {{0x63, 0x61, 0x66, 0xE9, 0x80}, 1252, u"caf\u00e9\u20ac"},
      {{0x82, 0xA0}, 932, u"\u3042"},
      {{0xC0, 0xE0}, 1251, u"\u0410\u0430"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(FromBytesToVBString(SafeArray(1, c.bytes), c.codePage), c.text) << c.codePage;
  }
  EXPECT_EQ(FromBytesToVBString(SafeArray(VarType::Byte), 1200), u"");
  const SafeArray utf8 = FromVBStringToBytes(u"AB", 65001);
  EXPECT_EQ(utf8.lowerBound(), 0);
  EXPECT_EQ(utf8.upperBound(), 1);
  const SafeArray be = FromVBStringToBytes(u"AB", 1201);
  EXPECT_EQ(std::vector<std::uint8_t>(be.bytes().begin(), be.bytes().end()),
            (std::vector<std::uint8_t>{0, 0x41, 0, 0x42}));
  EXPECT_EQ(FromVBStringToBytes(u"\u0101\U0001F600", 1252).size(), 3U) << "a, then ?? for the pair";
  for (const std::int32_t cp : {12000, 12001}) {
    const Error to = errorOf(
        [&] { (void)FromBytesToVBString(SafeArray(1, std::vector<std::uint8_t>{0x41}), cp); });
    const Error from = errorOf([&] { (void)FromVBStringToBytes(u"A", cp); });
    EXPECT_EQ(to.description(), cp == 12000
                                    ? u"UTF-32 LE is not supported. Cannot convert to string."
                                    : u"UTF-32 BE is not supported. Cannot convert to string.");
    EXPECT_EQ(from.description(), cp == 12000
                                      ? u"UTF-32 LE is not supported. Cannot convert from string."
                                      : u"UTF-32 BE is not supported. Cannot convert from string.");
  }
}

TEST(TextIoTest, LongsToCurrencyKeepsItsBase) {
  struct Case {
    std::int32_t low, high;
    std::int64_t scaled;
  };
  const Case cases[] = {{-1, 0, 42949672950000LL},
                        {0, 1, 42949672950000LL},
                        {5, 1, 42949673000000LL},
                        {100, 0, 1000000},
                        {0, 0, 0}};
  for (const auto& c : cases) {
    Currency value{};
    LongsToCurrency(c.low, c.high, value);
    EXPECT_EQ(value.scaled, c.scaled) << c.low << " " << c.high;
  }
}

TEST_F(TextFiles, ReadingWholeFiles) {
  struct Case {
    const char* name;
    std::string bytes;
    std::int32_t codePageIn;
    String text;
    std::int32_t codePageOut;
  };
  const Case cases[] = {
      {"UTF-8 with BOM asked as 1252",
       "\xEF\xBB\xBF"
       "caf\xC3\xA9",
       1252, u"caf\u00e9", 65001},
      {"ANSI asked as 1252", "caf\xE9", 1252, u"caf\u00e9", 1252},
      {"ANSI asked as 1251", "\xC0", 1251, u"\u0410", 1251},
      {"UTF-16 LE with BOM",
       std::string("\xFF\xFE"
                   "A\0B\0",
                   6),
       0, u"AB", 1200},
      {"a BOM only", "\xEF\xBB\xBF", 0, u"", 65001},
      {"empty", "", 0, u"", 0},
      {"zero characters", std::string("a\0b", 3), 1252, u"a b", 1252},
  };
  int n = 0;
  for (const auto& c : cases) {
    const String file = write("whole" + std::to_string(n++), c.bytes);
    std::int32_t cp = c.codePageIn;
    Variant bytes;
    EXPECT_EQ(ReadTextFileToStringB(file, &cp, VBool::True, &bytes), c.text) << c.name;
    EXPECT_EQ(cp, c.codePageOut) << c.name;
    ASSERT_TRUE(bytes.isArray()) << c.name;
  }
  EXPECT_EQ(errorOf([&] { (void)ReadTextFileToString(path("missing")); }).number(), 53);
}

TEST_F(TextFiles, ReadingLinesAndCountingThem) {
  const String five = write("five.txt", "one\r\ntwo\r\nthree\r\n\r\nfive\r\n");
  SafeArray lines(VarType::String);
  std::int32_t returned = 0;
  std::int32_t start = 3;
  std::int32_t end = 0;
  std::int32_t cp = 0;
  ReadTextFileToArrayB(five, lines, &returned, &start, &end, &cp);
  EXPECT_EQ(returned, 3);
  EXPECT_EQ(lines.lowerBound(), 0);
  EXPECT_EQ(*lines.elements<String>(), (std::vector<String>{u"three", u"", u"five"}));
  EXPECT_EQ(end, 5);
  start = 1;
  end = 0;
  ReadTextFileToArrayB(five, lines, &returned, &start, &end, &cp, VBool::True);
  EXPECT_EQ(*lines.elements<String>(), (std::vector<String>{u"one", u"two", u"three", u"five"}));
  EXPECT_EQ(FileLineCount(five), 5);
  VBool exists = VBool::True;
  EXPECT_EQ(FileLineCount(path("missing"), &exists), 0);
  EXPECT_EQ(exists, VBool::False);
  EXPECT_EQ(FileLineCount(write("unterminated", "a\rb\nc")), 3);
  EXPECT_EQ(FileLineCount(write("empty", "")), 0);
  const Error e = errorOf([&] { ReadTextFileToArray(path("missing"), lines, returned); });
  EXPECT_EQ(e.number(), 53);
  EXPECT_EQ(e.description().substr(0, 16), u"File not found\r\n");
}

TEST(TextToLinesTest, NormalisesAndSplits) {
  struct Case {
    String text;
    bool ignoreBlank;
    String normalised;
    std::vector<String> lines;
  };
  const Case cases[] = {
      {u"a\r\nb\n\rc\rd", false, u"a\nb\nc\nd", {u"a", u"b", u"c", u"d"}},
      {u"a\n", false, u"a\n", {u"a", u""}},
      {u"\n\na\n\n\nb\n", true, u"a\nb", {u"a", u"b"}},
      {u"single", false, u"single", {u"single"}},
      {u"", false, u"", {}},
  };
  for (const auto& c : cases) {
    String text = c.text;
    SafeArray lines(VarType::String);
    std::int32_t count = -1;
    TextToLines(text, lines, &count, toVBool(c.ignoreBlank));
    EXPECT_EQ(text, c.normalised) << test::show(c.text);
    EXPECT_EQ(count, static_cast<std::int32_t>(c.lines.size()));
    EXPECT_EQ(*lines.elements<String>(), c.lines) << test::show(c.text);
  }
}

TEST_F(TextFiles, WritingWholeFiles) {
  test::ScopedLocale english("en_US.UTF-8");  // ANSI code page 1252
  struct Case {
    const char* name;
    std::int32_t codePage;
    bool putByte;
    bool unicodeBOM;
    std::string bytes;
  };
  const Case cases[] = {
      {"ANSI, no BOM", 0, true, true, "caf\xE9"},
      {"ANSI by name", 1252, true, true, "caf\xE9"},
      {"line mode ignores the code page", 65001, false, true, "caf\xE9"},
      {"UTF-16 LE with BOM", 1200, true, true,
       std::string("\xFF\xFE"
                   "c\0a\0f\0\xE9\0",
                   10)},
      {"UTF-16 LE without BOM", 1200, true, false, std::string("c\0a\0f\0\xE9\0", 8)},
      {"UTF-16 BE with BOM", 1201, true, true, std::string("\xFE\xFF\0c\0a\0f\0\xE9", 10)},
      {"UTF-8 with BOM", 65001, true, true,
       "\xEF\xBB\xBF"
       "caf\xC3\xA9"},
      {"UTF-8 without BOM", 65001, true, false, "caf\xC3\xA9"},
  };
  for (const auto& c : cases) {
    frame::StaticGlobals::instance().setWriteUnicodeBOM(c.unicodeBOM);
    // An older, longer file of another encoding must be replaced, not overwritten in place.
    const String file = write("out.txt",
                              "\xFF\xFE"
                              "older and longer content");
    WriteStringToTextFileB(u"caf\u00e9", file, c.codePage, toVBool(c.putByte));
    EXPECT_EQ(read("out.txt"), c.bytes) << c.name;
    std::int32_t cp = 0;
    // A short UTF-16 file without BOM is too short for the zero-byte heuristic to recognise.
    if (c.putByte && (c.unicodeBOM || c.codePage != 1200)) {
      EXPECT_EQ(ReadTextFileToStringB(file, &cp), u"caf\u00e9") << c.name;
    }
  }
  frame::StaticGlobals::instance().resetForTesting();

  const SafeArray lines(1, std::vector<String>{u"one", u"", u"three"});
  WriteStringArrayToTextFile(lines, path("lines.txt"));
  EXPECT_EQ(read("lines.txt"), "one\r\n\r\nthree") << "no terminator after the last line";
  WriteStringArrayToTextFileB(SafeArray(VarType::String), path("lines.txt"));
  EXPECT_EQ(read("lines.txt"), "");

  // Byte mode into a directory that does not exist: traced, nothing raised.
  test::TraceCapture trace;
  const String lost = path("no/such/dir.txt");
  WriteStringToTextFileB(u"x", lost);
  ASSERT_EQ(trace.messages().size(), 1U);
  EXPECT_EQ(trace.messages()[0],
            u"WriteStringToTextFileB failed on OpenForOutputB, file '" + lost + u"'");
}

TEST_F(TextFiles, PrintingLinesKeepsTheFilesEncoding) {
  test::ScopedLocale english("en_US.UTF-8");
  test::TraceCapture trace;
  const String missing = path("missing.log");
  PrintB(u"x", missing);
  EXPECT_FALSE(std::filesystem::exists(dir_ / "missing.log")) << "byte mode never creates";
  ASSERT_EQ(trace.messages().size(), 2U);
  EXPECT_EQ(trace.messages()[0], u"OpenForAppendB: file does not exist: " + missing);
  EXPECT_EQ(trace.messages()[1], u"PrintB failed on OpenForAppendB, file '" + missing + u"'");

  PrintB(u"caf\u00e9", missing, 65001, VBool::False, VBool::False);
  PrintB(u"two", missing, 0, VBool::False);
  EXPECT_EQ(read("missing.log"), "caf\xE9\r\ntwo\r\n") << "line mode: ANSI, always terminated";

  struct Case {
    const char* name;
    std::string before;
    std::int32_t codePage;
    bool newLine;
    std::string after;
  };
  const Case cases[] = {
      {"UTF-8 file stays UTF-8 whatever is asked",
       "\xEF\xBB\xBF"
       "a",
       1252, true,
       "\xEF\xBB\xBF"
       "a\xC3\xA9\r\n"},
      {"UTF-16 LE appends code units",
       std::string("\xFF\xFE"
                   "a\0",
                   4),
       0, false,
       std::string("\xFF\xFE"
                   "a\0\xE9\0",
                   6)},
      {"ANSI file in the asked code page, best fit", "a", 1251, false, "ae"},
      {"ANSI file in the system code page", "a", 0, true, "a\xE9\r\n"},
      {"an empty file gets no BOM for ANSI", "", 0, false, "\xE9"},
  };
  int n = 0;
  for (const auto& c : cases) {
    const std::string name = "append" + std::to_string(n++);
    const String file = write(name, c.before);
    PrintB(u"\u00e9", file, c.codePage, VBool::True, toVBool(c.newLine));
    EXPECT_EQ(read(name), c.after) << c.name;
  }
}

TEST_F(TextFiles, ReadingRawBytes) {
  enumFileEncoding encoding = encANSI;
  const Variant bytes = ReadFileToByteArray(write("u8",
                                                  "\xEF\xBB\xBF"
                                                  "ab"),
                                            &encoding);
  ASSERT_TRUE(bytes.isArray());
  const SafeArray& array = *bytes.array();
  EXPECT_EQ(array.lowerBound(), 1);
  EXPECT_EQ(std::string(array.bytes().begin(), array.bytes().end()), "ab") << "BOM skipped";
  EXPECT_EQ(encoding, encUTF8_BOM);
  EXPECT_EQ(ReadFileToByteArray(write("empty", "")).array()->size(), 0U);
  EXPECT_EQ(errorOf([&] { (void)ReadFileToByteArray(path("missing")); }).number(), 53);
}

}  // namespace
}  // namespace orvo::files
