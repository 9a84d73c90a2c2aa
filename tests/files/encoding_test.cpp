#include "files/encoding.hpp"

#include <gtest/gtest.h>

#include <map>

#include "files/files_fixture.hpp"
#include "frame/state.hpp"
#include "support/test_support.hpp"

namespace orvo::files {
namespace {

using Encodings = test::FilesTest;

TEST_F(Encodings, DetectionFollowsThePlatformRules) {
  const std::map<String, enumFileEncoding> encodings = {{u"encBIN", encBIN},
                                                        {u"encANSI", encANSI},
                                                        {u"encUTF8_NB", encUTF8_NB},
                                                        {u"encUTF16_LE_NB", encUTF16_LE_NB},
                                                        {u"encUTF16_BE_NB", encUTF16_BE_NB},
                                                        {u"encUTF8_BOM", encUTF8_BOM},
                                                        {u"encUTF16_LE", encUTF16_LE},
                                                        {u"encUTF16_BE", encUTF16_BE},
                                                        {u"encUTF32_LE", encUTF32_LE},
                                                        {u"encUTF32_BE", encUTF32_BE}};
  const auto rows = test::readTestData("encoding_detection.tsv");
  ASSERT_GE(rows.size(), 20U);
  for (const auto& row : rows) {
    ASSERT_EQ(row.fields.size(), 3U) << "line " << row.line;
    const String file = write("case" + std::to_string(row.line), test::bytesOf(row.fields[1]));
    EXPECT_EQ(TextFileEncoding(file), encodings.at(row.fields[2])) << test::show(row.fields[0]);
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
