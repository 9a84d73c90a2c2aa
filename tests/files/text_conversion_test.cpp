#include "orvogeneric/text_conversion.hpp"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "files/files_fixture.hpp"
#include "orvogeneric/classes.hpp"
#include "support/test_support.hpp"

namespace orvo {
namespace {

using test::FilesTest;

constexpr std::size_t kChunk = 1 << 16;  // the routine's read buffer

const std::string kUtf8Bom = "\xEF\xBB\xBF";
const std::string kUtf16LeBom = "\xFF\xFE";

std::string repeat(std::string_view unit, std::size_t count) {
  std::string out;
  out.reserve(unit.size() * count);
  for (std::size_t i = 0; i < count; ++i) out += unit;
  return out;
}

class TextConversionTest : public FilesTest {
 protected:
  test::ScopedEnvironment acp_{"ORVO_ANSI_CODEPAGE", "1252"};
};

TEST_F(TextConversionTest, ReEncodesWithTheBomTheCallerChose) {
  for (const auto& row : test::readTestData("files/convert_text_file.tsv", 6)) {
    SCOPED_TRACE("data line " + std::to_string(row.line));
    const auto& f = row.fields;
    TextFileConversion conversion{static_cast<std::int32_t>(test::integerOf(f[2])), {}, {}};
    if (!f[3].empty()) conversion.from = test::integerOf(f[3]);
    if (!f[4].empty()) conversion.bom = f[4] == u"1";
    // A name per case: detected encodings are remembered per path.
    const std::string in = "in" + std::to_string(row.line);
    write(in, test::bytesOf(f[1]));
    const ConversionResult r = ConvertTextFile(dir_ / in, dir_ / "out", conversion);
    EXPECT_EQ(r.failure, ConversionFailure::None);
    EXPECT_EQ(read("out"), test::bytesOf(f[5]));
  }
}

// A legacy target counts the characters it cannot hold, across read buffers; strict refuses
// them and leaves the target as it was.
TEST_F(TextConversionTest, LostCharactersAreCountedAndStrictRefusesThem) {
  struct Case {
    const char* name;
    std::string utf8;
    std::int32_t to;
    std::int64_t lost;
  };
  const std::string kanji = "\xE6\x97\xA5";         // 日, in 932, not in 1252
  const std::string aMacron = "\xC4\x81";           // ā, best fit "a" in 1252, "?" in 932
  const std::string grinning = "\xF0\x9F\x98\x80";  // a pair: two characters lost
  const std::vector<Case> cases = {
      {"plain ASCII", "plain text\r\n", 1252, 0},
      {"western accents", "M\xC3\xBCller, caf\xC3\xA9", 1252, 0},
      {"a kanji", "x" + kanji + "y", 1252, 1},
      {"a kanji in 932", "x" + kanji + "y", 932, 0},
      {"best fit", aMacron, 1252, 1},
      {"no fit in 932", aMacron + kanji, 932, 1},
      {"a surrogate pair", grinning, 1252, 2},
      {"a question mark kept", "?" + std::string("?"), 1252, 0},
      {"across buffers", repeat("a", kChunk - 1) + kanji + repeat(kanji, 3), 1252, 4},
      {"to UTF-8", kanji + grinning, 65001, 0},
      {"to UTF-16", kanji + grinning, 1200, 0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const std::string in = std::string("lost_") + c.name;
    write(in, kUtf8Bom + c.utf8);
    const ConversionResult r = ConvertTextFile(dir_ / in, dir_ / "lossy", {c.to, {}, false});
    EXPECT_EQ(r.failure, ConversionFailure::None);
    EXPECT_EQ(r.unrepresentable, c.lost);
    EXPECT_EQ(CountUnrepresentable(fromUtf8(c.utf8), c.to), c.lost) << "the same count for a text";
    write("kept", "before");
    const ConversionResult strict =
        ConvertTextFile(dir_ / in, dir_ / "kept", {c.to, {}, false, true});
    EXPECT_EQ(strict.failure,
              c.lost > 0 ? ConversionFailure::Unrepresentable : ConversionFailure::None);
    EXPECT_EQ(read("kept") == "before", c.lost > 0) << "a refused conversion writes nothing";
    if (c.lost == 0) {
      EXPECT_EQ(read("kept"), read("lossy"));
    }
  }
}

TEST_F(TextConversionTest, CharactersCutByTheReadBufferComeOutWhole) {
  struct Case {
    const char* name;
    std::string source;
    TextFileConversion conversion;
    std::string target;
  };
  // "あ" is 82 A0 in 932 and E3 81 82 in UTF-8; "😀" is D83D DE00 in UTF-16.
  const std::string a932 = "\x82\xA0";
  const std::string aUtf8 = "\xE3\x81\x82";
  const std::string smileLe = std::string("\x3D\xD8\x00\xDE", 4);
  const std::string smileUtf8 = "\xF0\x9F\x98\x80";
  const std::size_t pairs = kChunk / 2;
  const std::vector<Case> cases = {
      {"a double-byte character across the buffer's end",
       "\r\n" + repeat("x", 1) + repeat(a932, pairs) + "\r\n",
       {CP_UTF8, 932, false},
       "\r\nx" + repeat(aUtf8, pairs) + "\r\n"},
      {"no safe place for longer than a buffer",
       repeat(a932, pairs + 10),
       {CP_UTF8, 932, false},
       repeat(aUtf8, pairs + 10)},
      {"a UTF-8 character across the buffer's end",
       kUtf8Bom + "\n" + repeat("y", kChunk - 3) + smileUtf8 + "\n",
       {CP_UTF16_BE, {}, false},
       std::string("\0\n", 2) + repeat(std::string("\0y", 2), kChunk - 3) +
           std::string("\xD8\x3D\xDE\x00\0\n", 6)},
      {"several megabytes, written while the next are converted",
       kUtf8Bom + repeat("a\xE2\x82\xAC\n", 700000),
       {CP_UTF16_BE, {}, false},
       repeat(std::string("\0a\x20\xAC\0\n", 6), 700000)},
      {"a surrogate pair across the buffer's end",
       kUtf16LeBom + repeat(std::string("z\0", 2), pairs - 1) + smileLe + std::string("\n\0", 2),
       {CP_UTF8, {}, false},
       repeat("z", pairs - 1) + smileUtf8 + "\n"},
  };
  int n = 0;
  for (const auto& c : cases) {
    const std::string in = "big" + std::to_string(++n);
    write(in, c.source);
    const ConversionResult r = ConvertTextFile(dir_ / in, dir_ / "out", c.conversion);
    EXPECT_EQ(r.failure, ConversionFailure::None) << c.name;
    const std::string got = read("out");
    EXPECT_EQ(got.size(), c.target.size()) << c.name;
    EXPECT_TRUE(got == c.target) << c.name;
  }
}

TEST_F(TextConversionTest, ProgressCountsTheSourceBytesRead) {
  write("progress", kUtf16LeBom + repeat(std::string("p\0", 2), kChunk));
  std::vector<std::int64_t> seen;
  const ConversionResult r = ConvertTextFile(dir_ / "progress", dir_ / "out", {CP_UTF8, {}, false},
                                             [&](std::int64_t done) { seen.push_back(done); });
  EXPECT_EQ(r.failure, ConversionFailure::None);
  // Two full buffers after the skipped BOM, then the empty read that ends the file.
  const std::vector<std::int64_t> expected = {static_cast<std::int64_t>(kChunk),
                                              static_cast<std::int64_t>(2 * kChunk),
                                              static_cast<std::int64_t>(2 * kChunk)};
  EXPECT_EQ(seen, expected);
}

TEST_F(TextConversionTest, RefusalsAndFilesThatCannotBeUsed) {
  write("utf32", std::string("\xFF\xFE\0\0a\0\0\0", 8));
  write("plain", "text");
  const std::map<String, ConversionFailure> failures = {
      {u"UnsupportedSource", ConversionFailure::UnsupportedSource},
      {u"UnsupportedTarget", ConversionFailure::UnsupportedTarget},
      {u"OpenTarget", ConversionFailure::OpenTarget}};
  for (const auto& row : test::readTestData("files/convert_text_file_refusals.tsv", 7)) {
    SCOPED_TRACE("data line " + std::to_string(row.line));
    const auto& f = row.fields;
    const std::filesystem::path target = toUtf8(inScratch(f[2]));
    TextFileConversion conversion{static_cast<std::int32_t>(test::integerOf(f[3])), {}, {}};
    if (!f[4].empty()) conversion.from = test::integerOf(f[4]);
    const ConversionResult r = ConvertTextFile(dir_ / toUtf8(f[1]), target, conversion);
    EXPECT_EQ(r.failure, failures.at(f[5]));
    const auto error = static_cast<int>(test::integerOf(f[6]));
    EXPECT_EQ(r.error, error == 0 ? std::error_code() : std::make_error_code(std::errc(error)));
    if (target != dir_) {
      EXPECT_FALSE(std::filesystem::exists(target));
    }
  }
}

}  // namespace
}  // namespace orvo
