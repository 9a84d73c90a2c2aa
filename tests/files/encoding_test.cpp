#include "files/encoding.hpp"

#include <gtest/gtest.h>

#include "files/files_fixture.hpp"
#include "frame/state.hpp"
#include "support/test_support.hpp"

namespace orvo::files {
namespace {

using Encodings = test::FilesTest;

std::string utf16leWithZeros(std::size_t bytes, std::size_t zeros) {
  // "A\0" pairs give a zero at every even position (counting from 1); the rest are letters.
  std::string s;
  for (std::size_t i = 0; i < bytes; ++i) s += (i % 2 == 1 && i / 2 < zeros) ? '\0' : 'A';
  return s;
}

TEST_F(Encodings, DetectionFollowsThePlatformRules) {
  struct Case {
    const char* name;
    std::string bytes;
    enumFileEncoding want;
  };
  const Case cases[] = {
      {"empty", "", encANSI},
      {"one zero byte", std::string(1, '\0'), encBIN},
      {"one letter", "a", encANSI},
      {"UTF-32 LE BOM", std::string("\xFF\xFE\0\0A\0\0\0", 8), encUTF32_LE},
      {"UTF-32 BE BOM", std::string("\0\0\xFE\xFF\0\0\0A", 8), encUTF32_BE},
      {"UTF-16 LE BOM",
       std::string("\xFF\xFE"
                   "A\0",
                   4),
       encUTF16_LE},
      {"UTF-16 BE BOM", std::string("\xFE\xFF\0A", 4), encUTF16_BE},
      {"UTF-8 BOM", "\xEF\xBB\xBFtext", encUTF8_BOM},
      {"UTF-8 BOM inside the six-byte window",
       "AB\xEF\xBB\xBF"
       "C",
       encUTF8_BOM},
      {"UTF-8 BOM at offset 6 is not one", "ABCDEF\xEF\xBB\xBF", encUTF8_NB},
      {"UTF-16 BOM at offset 2",
       "AB\xFF\xFE"
       "CD",
       encUTF16_LE},
      {"UTF-16 BOM at offset 3 is outside",
       "ABC\xFF\xFE"
       "D",
       encANSI},
      {"ASCII only", "plain ascii text\r\n", encANSI},
      {"one two-byte UTF-8 sequence", "caf\xC3\xA9 au lait", encUTF8_NB},
      {"a lone E9", "caf\xE9 au lait", encANSI},
      {"UTF-8 cut by the end", "abc\xE2\x82", encANSI},
      {"UTF-8 then cut by the end",
       "\xC3\xA9"
       "abc\xE2\x82",
       encUTF8_NB},
      {"UTF-16 LE without BOM, 10 zeros", utf16leWithZeros(20, 10), encUTF16_LE_NB},
      {"only 9 zeros", utf16leWithZeros(20, 9), encBIN},
      {"odd length", utf16leWithZeros(21, 10), encBIN},
      {"UTF-16 BE without BOM", std::string("\0A\0B\0C\0D\0E\0F\0G\0H\0I\0J\0K", 22),
       encUTF16_BE_NB},
      {"zeros on both parities", std::string("A\0\0B", 4) + utf16leWithZeros(20, 10), encBIN},
  };
  int n = 0;
  for (const auto& c : cases) {
    const String file = write("case" + std::to_string(n++), c.bytes);
    EXPECT_EQ(TextFileEncoding(file), c.want) << c.name;
  }
  EXPECT_EQ(TextFileEncoding(path("missing")), encANSI);
  EXPECT_EQ(TextFileEncoding(fromUtf8(dir_.string())), encANSI) << "a directory";
}

TEST_F(Encodings, VerdictsAreRememberedPerPathUntilCleared) {
  const String file = write("cached.txt", "plain");
  test::TraceCapture trace;
  EXPECT_EQ(TextFileEncoding(file), encANSI);
  write("cached.txt",
        "\xFF\xFE"
        "A");
  EXPECT_EQ(TextFileEncoding(file), encANSI) << "the first verdict stays";
  std::string upper = toUtf8(file);
  for (char& ch : upper) ch = static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
  // The key compares without case; a differently cased path that does not exist is not a file.
  ClearTextFileEncoding(Variant(fromUtf8(upper)));
  EXPECT_EQ(TextFileEncoding(file), encUTF16_LE);
  SetTextFileEncoding(Variant(file), encUTF16_BE);
  EXPECT_EQ(TextFileEncoding(file), encUTF16_BE);
  std::filesystem::remove(dir_ / "cached.txt");
  EXPECT_EQ(TextFileEncoding(file), encANSI) << "a deleted file";
  bool traced = false;
  for (const auto& m : trace.messages()) traced |= m.find(u"File Encoding = 0, for file ") == 0;
  EXPECT_TRUE(traced);
  // An empty file is not cached: once it has text, it is looked at again.
  const String empty = write("empty.txt", "");
  EXPECT_EQ(TextFileEncoding(empty), encANSI);
  write("empty.txt", "\xEF\xBB\xBF");
  EXPECT_EQ(TextFileEncoding(empty), encUTF8_BOM);
}

TEST(EncodingTables, BomsCodePagesAndTheCheck) {
  struct Case {
    enumFileEncoding e;
    std::int32_t bomSize;
    enumCodePages cp;
  };
  const Case cases[] = {{encBIN, 0, CP_ACP},
                        {encANSI, 0, CP_ACP},
                        {encUTF8_NB, 0, CP_UTF8},
                        {encUTF16_LE_NB, 0, CP_UTF16_LE},
                        {encUTF16_BE_NB, 0, CP_UTF16_BE},
                        {encUTF8_BOM, 3, CP_UTF8},
                        {encUTF16_LE, 2, CP_UTF16_LE},
                        {encUTF16_BE, 2, CP_UTF16_BE},
                        {encUTF32_LE, 4, CP_UTF32_LE},
                        {encUTF32_BE, 4, CP_UTF32_BE},
                        {static_cast<enumFileEncoding>(9), 0, CP_ACP}};
  for (const auto& c : cases) {
    EXPECT_EQ(DefaultBOMSize(c.e), c.bomSize) << c.e;
    EXPECT_EQ(CodePageFromEncoding(c.e), c.cp) << c.e;
    const SafeArray bom = DefaultBOM(c.e);
    EXPECT_EQ(bom.size(), static_cast<std::size_t>(c.bomSize)) << c.e;
    if (c.bomSize > 0) {
      EXPECT_EQ(bom.lowerBound(), 1) << c.e;
    }
  }
  frame::StaticGlobals::instance().setWriteUnicodeBOM(false);
  EXPECT_EQ(EncodingFromCodePage(65001), encUTF8_NB);
  EXPECT_EQ(EncodingFromCodePage(12000), encUTF32_LE);
  frame::StaticGlobals::instance().resetForTesting();  // BOMs are written by default
  EXPECT_EQ(EncodingFromCodePage(65001), encUTF8_BOM);
  EXPECT_EQ(EncodingFromCodePage(1252), encANSI);

  struct Check {
    std::int32_t supplied;
    enumFileEncoding e;
    std::int32_t want;
  };
  const Check checks[] = {
      {1252, encUTF8_BOM, 65001}, {1252, encANSI, 1252},
      {0, encUTF16_LE_NB, 1200},  {-1, encBIN, 0},
      {437, encANSI, 0},          {65001, encANSI, 65001},
      {1200, encANSI, 0},         {1252, encBIN, 1252},
      {932, encUTF16_LE_NB, 932}, {1200, encUTF16_BE_NB, 1201},
      {65001, encUTF16_LE, 1200}, {1251, encUTF8_NB, 65001},
  };
  for (const auto& c : checks) {
    EXPECT_EQ(CodePageCheck(c.supplied, c.e), c.want) << c.supplied << " " << c.e;
  }
}

}  // namespace
}  // namespace orvo::files
