#include "files/textfiles.hpp"

#include <gtest/gtest.h>

#include <random>

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
  for (const auto& row : test::readTestData("files/textio.tsv", 4)) {
    SCOPED_TRACE("data line " + std::to_string(row.line));
    const auto& f = row.fields;
    test::expectCall(row, f[3], [&]() -> Variant {
      if (f[0] == u"LongsToCurrency") {
        Currency value{};
        LongsToCurrency(test::integerOf(f[1]), test::integerOf(f[2]), value);
        return value;
      }
      const std::string bytes = test::bytesOf(f[2]);
      const SafeArray array(1, std::vector<std::uint8_t>(bytes.begin(), bytes.end()));
      return FromBytesToVBString(array, test::integerOf(f[1]));
    });
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

TEST_F(TextFiles, ReadingWholeFiles) {
  for (const auto& row : test::readTestData("files/read_whole.tsv", 5)) {
    SCOPED_TRACE("data line " + std::to_string(row.line));
    const auto& f = row.fields;
    const String file = write("whole" + std::to_string(row.line), test::bytesOf(f[1]));
    std::int32_t cp = test::integerOf(f[2]);
    Variant bytes;
    EXPECT_EQ(ReadTextFileToStringB(file, &cp, VBool::True, &bytes), f[3]);
    EXPECT_EQ(cp, test::integerOf(f[4]));
    ASSERT_TRUE(bytes.isArray());
  }
  EXPECT_EQ(errorOf([&] { (void)ReadTextFileToString(path("missing")); }).number(), 53);
}

// A big file's lines share one block: the array costs about its UTF-16 text, where a string
// object and an allocation a line cost some 70 % more for lines of this length.
TEST_F(TextFiles, LinesOfAFileAreHeldInLittleMoreThanTheirText) {
  std::mt19937 random(5);
  std::string bytes;
  std::vector<String> expected;
  std::size_t units = 0;
  for (int i = 0; i < 50000; ++i) {
    String line(random() % 60, u'x');
    for (auto& c : line) c = static_cast<char16_t>(u'!' + random() % 90);
    bytes += toUtf8(line) + "\r\n";
    units += line.size();
    expected.push_back(std::move(line));
  }
  SafeArray lines(VarType::String);
  std::int32_t count = 0;
  ReadTextFileToArray(write("lines.txt", bytes), lines, count);
  ASSERT_EQ(count, 50000);
  EXPECT_EQ(lines.elements<String>()->toVector(), expected);
  EXPECT_LE(static_cast<double>(lines.elementBytes()), 1.3 * static_cast<double>(units * 2));
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
  EXPECT_EQ(lines.elements<String>()->toVector(), (std::vector<String>{u"three", u"", u"five"}));
  EXPECT_EQ(end, 5);
  start = 1;
  end = 0;
  ReadTextFileToArrayB(five, lines, &returned, &start, &end, &cp, VBool::True);
  EXPECT_EQ(lines.elements<String>()->toVector(),
            (std::vector<String>{u"one", u"two", u"three", u"five"}));
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

// UTF-32 text as the file holds it, after its BOM: each character a 4-byte unit.
std::string utf32(std::string_view text, bool bigEndian) {
  std::string out = bigEndian ? std::string("\0\0\xFE\xFF", 4) : std::string("\xFF\xFE\0\0", 4);
  for (const char c : text) {
    const std::string unit = bigEndian ? std::string(3, '\0') + c : c + std::string(3, '\0');
    out += unit;
  }
  return out;
}

TEST_F(TextFiles, UTF32FilesCountTheirLines) {
  const struct {
    const char* text;
    std::int32_t lines;
  } cases[] = {
      {"one\r\ntwo\r\nthree\r\n", 3},
      {"one\ntwo\nthree", 3},
      {"one\rtwo\r\rfour\r", 4},
      {"a\r\n\nb\rc", 4},
      {"", 0},
      {"single", 1},
  };
  int n = 0;  // a file per case: the encoding is remembered per path
  for (const bool bigEndian : {false, true}) {
    for (const auto& c : cases) {
      const String file = write("utf32-" + std::to_string(++n) + ".txt", utf32(c.text, bigEndian));
      EXPECT_EQ(FileLineCount(file), c.lines)
          << test::show(fromUtf8(c.text)) << (bigEndian ? " BE" : " LE");
    }
  }
  // A unit carrying 13 or 10 in its low byte alongside others is a character, not a line end.
  const String file =
      write("utf32-unit.txt", std::string("\xFF\xFE\0\0a\0\0\0\x0D\x01\0\0b\0\0\0", 16));
  EXPECT_EQ(FileLineCount(file), 1);
}

TEST(TextToLinesTest, NormalisesAndSplits) {
  for (const auto& row : test::readTestData("files/text_to_lines.tsv", 4)) {
    SCOPED_TRACE("data line " + std::to_string(row.line));
    const auto& f = row.fields;
    String text = f[0];
    SafeArray lines(VarType::String);
    std::int32_t count = -1;
    TextToLines(text, lines, &count, toVBool(f[1] == u"1"));
    EXPECT_EQ(text, f[2]);
    String bracketed;
    for (const std::u16string_view line : *lines.elements<String>()) {
      bracketed.append(u"[").append(line).append(u"]");
    }
    EXPECT_EQ(bracketed, f[3]);
    EXPECT_EQ(count, static_cast<std::int32_t>(lines.size()));
  }
}

TEST_F(TextFiles, WritingWholeFiles) {
  test::ScopedLocale english("en_US.UTF-8");  // ANSI code page 1252
  for (const auto& row : test::readTestData("files/write_whole.tsv", 5)) {
    SCOPED_TRACE("data line " + std::to_string(row.line));
    const auto& f = row.fields;
    const std::int32_t codePage = test::integerOf(f[1]);
    frame::StaticGlobals::instance().setWriteUnicodeBOM(f[3] == u"1");
    // An older, longer file of another encoding must be replaced, not overwritten in place.
    const String file = write("out.txt", "\xFF\xFEolder and longer content");
    WriteStringToTextFileB(u"caf\u00e9", file, codePage, toVBool(f[2] == u"1"));
    EXPECT_EQ(read("out.txt"), test::bytesOf(f[4]));
    std::int32_t cp = 0;
    // A short UTF-16 file without BOM is too short for the zero-byte heuristic to recognise.
    if (f[2] == u"1" && (f[3] == u"1" || codePage != 1200)) {
      EXPECT_EQ(ReadTextFileToStringB(file, &cp), u"caf\u00e9");
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
  EXPECT_EQ(trace.messages(),
            std::vector<String>{u"WriteStringToTextFileB failed on OpenForOutputB, file '" + lost +
                                u"'"});
}

TEST_F(TextFiles, PrintingLinesKeepsTheFilesEncoding) {
  test::ScopedLocale english("en_US.UTF-8");
  test::TraceCapture trace;
  const String missing = path("missing.log");
  PrintB(u"x", missing);
  EXPECT_FALSE(std::filesystem::exists(dir_ / "missing.log")) << "byte mode never creates";
  EXPECT_EQ(trace.messages(),
            (std::vector<String>{u"OpenForAppendB: file does not exist: " + missing,
                                 u"PrintB failed on OpenForAppendB, file '" + missing + u"'"}));

  PrintB(u"caf\u00e9", missing, 65001, VBool::False, VBool::False);
  PrintB(u"two", missing, 0, VBool::False);
  EXPECT_EQ(read("missing.log"), "caf\xE9\r\ntwo\r\n") << "line mode: ANSI, always terminated";

  for (const auto& row : test::readTestData("files/print_append.tsv", 5)) {
    SCOPED_TRACE("data line " + std::to_string(row.line));
    const auto& f = row.fields;
    const std::string name = "append" + std::to_string(row.line);
    const String file = write(name, test::bytesOf(f[1]));
    PrintB(u"\u00e9", file, test::integerOf(f[2]), VBool::True, toVBool(f[3] == u"1"));
    EXPECT_EQ(read(name), test::bytesOf(f[4]));
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
