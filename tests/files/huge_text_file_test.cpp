#include <gtest/gtest.h>

#include <random>

#include "files/HugeTextFile.hpp"
#include "files/encoding.hpp"
#include "files/files_fixture.hpp"
#include "files/textio.hpp"
#include "runtime/strings.hpp"
#include "support/reference_lines.hpp"
#include "support/test_support.hpp"

namespace orvo::files {
namespace {

using HugeText = test::FilesTest;
using test::errorOf;
using test::referenceLines;

struct Read {
  std::vector<String> lines;
  std::int32_t codePage = 0;
  std::int64_t count = 0;
};

Read readAll(const String& file, std::int32_t bufferSize) {
  HugeTextFile reader;
  Read out;
  reader.FileOpen(file, HugeTextFile::Read, 0, -1, bufferSize, &out.codePage);
  for (String line; !reader.EndOfFile();) {
    if (reader.LineRead(line)) out.lines.push_back(line);
  }
  out.count = reader.LineCount();
  return out;
}

std::string bomOf(std::int32_t codePage) {
  return codePage == 1200    ? "\xFF\xFE"
         : codePage == 1201  ? "\xFE\xFF"
         : codePage == 65001 ? "\xEF\xBB\xBF"
                             : "";
}

TEST_F(HugeText, EveryBufferSizeGivesTheLinesOfTheText) {
  const String text =
      u"first\r\nsecond\rthird\nfourth\r\n\r\nafter a blank\n\ncaf\u00e9 \u00fc\u00df\r"
      u"a longer line that is longer than several of the small buffers used here\r\nlast";
  struct Form {
    const char* name;
    std::int32_t codePage;  // how the text is written
    std::string bom;
  };
  const Form forms[] = {
      {"1252", 1252, ""},
      {"UTF-8 with BOM", 65001, "\xEF\xBB\xBF"},
      {"UTF-16 LE with BOM", 1200, "\xFF\xFE"},
      {"UTF-16 BE with BOM", 1201, "\xFE\xFF"},
      {"UTF-16 LE without BOM", 1200, ""},
  };
  for (const auto& form : forms) {
    for (const bool endsWithTerminator : {false, true}) {
      const String whole = endsWithTerminator ? text + u"\r\n" : text;
      std::string bytes;
      encodeText(whole, form.codePage, bytes);
      const String file = write(std::string("lines_") + form.name, form.bom + bytes);
      const std::vector<String> want = referenceLines(whole);
      for (std::int32_t size = 4; size <= 64; ++size) {
        const Read got = readAll(file, size);
        ASSERT_EQ(got.lines, want)
            << form.name << " buffer " << size << " end " << endsWithTerminator;
        EXPECT_EQ(got.count, static_cast<std::int64_t>(want.size()));
        EXPECT_EQ(got.codePage, form.codePage == 1252 ? 0 : form.codePage) << form.name;
      }
    }
  }
}

TEST_F(HugeText, RandomTextsAgreeWithTheReferenceSplitter) {
  std::mt19937 random(7);
  const char16_t alphabet[] = {u'a', u'\r', u'\n', u' ', u'\u00e9', u'\u0d0a', u'\u0a0d', u'z'};
  for (int round = 0; round < 200; ++round) {
    String text;
    const int length = static_cast<int>(random() % 60);
    for (int i = 0; i < length; ++i) text += alphabet[random() % 8];
    for (const std::int32_t cp : {65001, 1200, 1201}) {
      std::string bytes;
      encodeText(text, cp, bytes);
      const String file =
          write("random" + std::to_string(round) + "_" + std::to_string(cp), bomOf(cp) + bytes);
      const std::int32_t size = 4 + static_cast<std::int32_t>(random() % 20) * 2;
      EXPECT_EQ(readAll(file, size).lines, referenceLines(text))
          << cp << " size " << size << " " << test::show(text);
    }
  }
}

TEST_F(HugeText, FailuresHaveTheirNumbers) {
  write("three.txt", "a\r\nb\r\nc\r\n");
  for (const auto& row : test::readTestData("files/huge_text_file_failures.tsv", 3)) {
    SCOPED_TRACE("data line " + std::to_string(row.line));
    HugeTextFile f;
    const Error e = errorOf([&] {
      for (const String& call : runtime::Split(row.fields[1], u";")) {
        const std::vector<String> part = runtime::Split(call, u":");
        if (part[0] == u"open") f.FileOpen(inScratch(part[1]), test::integerOf(part[2]));
        if (part[0] == u"skip") f.LineSkip(test::integerOf(part[1]));
        if (part[0] == u"read") (void)f.LineRead();
        if (part[0] == u"write") f.LineWrite(part[1]);
        if (part[0] == u"rewind") f.Rewind();
        if (part[0] == u"close") f.FileClose();
        if (part[0] == u"codepage") (void)f.CodePage();
      }
    });
    EXPECT_EQ(e.number(), test::integerOf(row.fields[2]));
    EXPECT_FALSE(f.IsOpen()) << "a failure closes the file";
  }
  HugeTextFile f;
  const Error e = errorOf([&] { f.FileOpen(path("missing.txt"), 1); });
  EXPECT_EQ(e.description(), u"File not found.\r\nError handled by FileOpen");
}

TEST_F(HugeText, WritesWithTheEncodingsBomAndReadsBack) {
  for (const std::int32_t cp : {1200, 1201, 65001, 1252, 932}) {
    const String file = path("written" + std::to_string(cp));
    {
      HugeTextFile out;
      std::int32_t used = cp;
      bool existed = true;
      out.FileOpen(file, HugeTextFile::Write, 0, -1, 16, &used, &existed);
      EXPECT_FALSE(existed);
      for (int i = 0; i < 20; ++i) out.LineWrite(u"line \u00e9 " + fromUtf8(std::to_string(i)));
      out.LineWrite(String(100, u'x'));  // longer than the buffer: written directly
      EXPECT_EQ(out.LineCount(), 21);
      out.FileClose();
    }
    EXPECT_TRUE(read("written" + std::to_string(cp)).starts_with(bomOf(cp))) << cp;
    const auto lines = readAll(file, 32768).lines;
    ASSERT_EQ(lines.size(), 21U) << cp;
    // 932 has no e-acute: the platform's best fit writes a plain e.
    EXPECT_EQ(lines[3], cp == 932 ? u"line e 3" : u"line \u00e9 3") << cp;
    EXPECT_EQ(lines[20], String(100, u'x'));
  }
  // Appending keeps the lines already there.
  const String file = write("append.txt", "one\r\n");
  HugeTextFile out;
  out.FileOpen(file, HugeTextFile::Append);
  out.LineWrite(u"two");
  out.FileClose();
  EXPECT_EQ(read("append.txt"), "one\r\ntwo\r\n");
}

TEST_F(HugeText, LineSkipCountsWhatItPasses) {
  std::string text;
  for (int i = 0; i < 1000; ++i) text += "line\r\n";
  const String file = write("skip.txt", text + "tail");
  HugeTextFile f;
  f.FileOpen(file, 1, 0, -1, 64);
  f.LineSkip(998);
  EXPECT_EQ(f.LineCount(), 998);
  EXPECT_EQ(f.LineRead(), u"line");
  f.LineSkip(100000);
  EXPECT_EQ(f.LineCount(), 1001);
  EXPECT_TRUE(f.EndOfFile());
  f.Rewind();
  EXPECT_EQ(f.LineCount(), 0);
  EXPECT_EQ(f.LineRead(), u"line");
  EXPECT_EQ(f.FileLen(), static_cast<std::int64_t>(text.size() + 4));
}

}  // namespace
}  // namespace orvo::files
