#include "files/encoding.hpp"

#include <gtest/gtest.h>

#include <map>

#include "files/files_fixture.hpp"
#include "frame/state.hpp"
#include "support/test_support.hpp"

namespace orvo::files {
namespace {

using Encodings = test::FilesTest;

// An encoding as the data files name it, or its number.
enumFileEncoding encodingOf(const String& field) {
  static const std::map<String, enumFileEncoding> names = {{u"encBIN", encBIN},
                                                           {u"encANSI", encANSI},
                                                           {u"encUTF8_NB", encUTF8_NB},
                                                           {u"encUTF16_LE_NB", encUTF16_LE_NB},
                                                           {u"encUTF16_BE_NB", encUTF16_BE_NB},
                                                           {u"encUTF8_BOM", encUTF8_BOM},
                                                           {u"encUTF16_LE", encUTF16_LE},
                                                           {u"encUTF16_BE", encUTF16_BE},
                                                           {u"encUTF32_LE", encUTF32_LE},
                                                           {u"encUTF32_BE", encUTF32_BE}};
  const auto named = names.find(field);
  return named != names.end() ? named->second
                              : static_cast<enumFileEncoding>(test::integerOf(field));
}

TEST_F(Encodings, DetectionFollowsThePlatformRules) {
  for (const auto& row : test::readTestData("files/encoding_detection.tsv", 3)) {
    SCOPED_TRACE("data line " + std::to_string(row.line));
    const String file = write("case" + std::to_string(row.line), test::bytesOf(row.fields[1]));
    EXPECT_EQ(TextFileEncoding(file), encodingOf(row.fields[2]));
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
  for (const auto& row : test::readTestData("files/encoding_tables.tsv", 3)) {
    SCOPED_TRACE("data line " + std::to_string(row.line));
    const enumFileEncoding e = encodingOf(row.fields[0]);
    const auto bomSize = test::integerOf(row.fields[1]);
    EXPECT_EQ(DefaultBOMSize(e), bomSize);
    EXPECT_EQ(CodePageFromEncoding(e), test::integerOf(row.fields[2]));
    const SafeArray bom = DefaultBOM(e);
    EXPECT_EQ(bom.size(), static_cast<std::size_t>(bomSize));
    if (bomSize > 0) {
      EXPECT_EQ(bom.lowerBound(), 1);
    }
  }
  for (const auto& row : test::readTestData("files/code_page_check.tsv", 3)) {
    SCOPED_TRACE("data line " + std::to_string(row.line));
    EXPECT_EQ(CodePageCheck(test::integerOf(row.fields[0]), encodingOf(row.fields[1])),
              test::integerOf(row.fields[2]));
  }
  frame::StaticGlobals::instance().setWriteUnicodeBOM(false);
  EXPECT_EQ(EncodingFromCodePage(65001), encUTF8_NB);
  EXPECT_EQ(EncodingFromCodePage(12000), encUTF32_LE);
  frame::StaticGlobals::instance().resetForTesting();  // BOMs are written by default
  EXPECT_EQ(EncodingFromCodePage(65001), encUTF8_BOM);
  EXPECT_EQ(EncodingFromCodePage(1252), encANSI);
}

}  // namespace
}  // namespace orvo::files
