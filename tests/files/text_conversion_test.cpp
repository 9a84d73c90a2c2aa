#include "orvogeneric/text_conversion.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "files/files_fixture.hpp"
#include "orvogeneric/classes.hpp"
#include "support/test_support.hpp"

namespace orvo {
namespace {

using test::FilesTest;

constexpr std::size_t kChunk = 1 << 20;  // the routine's read buffer

const std::string kUtf8Bom = "\xEF\xBB\xBF";
const std::string kUtf16LeBom = "\xFF\xFE";
const std::string kUtf16BeBom = "\xFE\xFF";

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
  struct Case {
    const char* name;
    std::string source;
    TextFileConversion conversion;
    std::string target;
  };
  const std::string cafe1252 = "caf\xE9\r\n";
  const std::vector<Case> cases = {
      {"ANSI to UTF-8 gets its BOM", cafe1252, {CP_UTF8, {}, {}}, kUtf8Bom + "caf\xC3\xA9\r\n"},
      {"unless none is wanted", cafe1252, {CP_UTF8, {}, false}, "caf\xC3\xA9\r\n"},
      {"ANSI to UTF-16 LE",
       cafe1252,
       {CP_UTF16_LE, {}, {}},
       kUtf16LeBom + std::string("c\0a\0f\0\xE9\0\r\0\n\0", 12)},
      {"ANSI to UTF-16 BE",
       cafe1252,
       {CP_UTF16_BE, {}, true},
       kUtf16BeBom + std::string("\0c\0a\0f\0\xE9\0\r\0\n", 12)},
      {"an ANSI target never has one", cafe1252, {1252, {}, true}, cafe1252},
      {"the system ANSI code page by 0", kUtf8Bom + "caf\xC3\xA9", {CP_ACP, {}, {}}, "caf\xE9"},
      {"a source's BOM is skipped in its own encoding",
       kUtf8Bom + "\xC3\xA9",
       {1252, 65001, {}},
       "\xE9"},
      {"and read as text in another",
       kUtf8Bom + "a",
       {CP_UTF8, 1252, false},
       "\xC3\xAF\xC2\xBB\xC2\xBF" + std::string("a")},
      {"UTF-16 LE with its BOM",
       kUtf16LeBom + std::string("A\0\xAC\x20", 4),
       {CP_UTF8, {}, false},
       "A\xE2\x82\xAC"},
      {"UTF-16 BE with its BOM",
       kUtf16BeBom + std::string("\0A\x20\xAC", 4),
       {1252, {}, {}},
       "A\x80"},
      {"a double-byte code page",
       "\x93\xFA\x96\x7B\r\n",
       {CP_UTF8, 932, false},
       "\xE6\x97\xA5\xE6\x9C\xAC\r\n"},
      {"into a double-byte code page", "\xE6\x97\xA5", {932, 65001, {}}, "\x93\xFA"},
      {"what the target cannot hold", "\xE6\x97\xA5", {1252, 65001, {}}, "?"},
      {"an empty file", "", {CP_UTF16_LE, {}, {}}, kUtf16LeBom},
  };
  int n = 0;
  for (const auto& c : cases) {
    // A name per case: detected encodings are remembered per path.
    const std::string in = "in" + std::to_string(++n);
    write(in, c.source);
    const ConversionResult r = ConvertTextFile(dir_ / in, dir_ / "out", c.conversion);
    EXPECT_EQ(r.failure, ConversionFailure::None) << c.name;
    EXPECT_EQ(read("out"), c.target) << c.name;
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
  struct Case {
    const char* name;
    std::string source;
    std::filesystem::path target;
    TextFileConversion conversion;
    ConversionFailure failure;
    std::errc error;
  };
  const std::vector<Case> cases = {
      {"a UTF-32 source",
       "utf32",
       dir_ / "t1",
       {CP_UTF8, {}, {}},
       ConversionFailure::UnsupportedSource,
       std::errc()},
      {"read as UTF-32",
       "plain",
       dir_ / "t2",
       {CP_UTF8, CP_UTF32_BE, {}},
       ConversionFailure::UnsupportedSource,
       std::errc()},
      {"a UTF-32 target",
       "plain",
       dir_ / "t3",
       {CP_UTF32_LE, {}, {}},
       ConversionFailure::UnsupportedTarget,
       std::errc()},
      {"a target in a missing directory",
       "plain",
       dir_ / "no" / "t4",
       {CP_UTF8, {}, {}},
       ConversionFailure::OpenTarget,
       std::errc::no_such_file_or_directory},
      {"a directory as the target",
       "plain",
       dir_,
       {CP_UTF8, {}, {}},
       ConversionFailure::OpenTarget,
       std::errc::is_a_directory},
  };
  for (const auto& c : cases) {
    const ConversionResult r = ConvertTextFile(dir_ / c.source, c.target, c.conversion);
    EXPECT_EQ(r.failure, c.failure) << c.name;
    if (c.error == std::errc()) {
      EXPECT_FALSE(r.error) << c.name;
    } else {
      EXPECT_EQ(r.error, std::make_error_code(c.error)) << c.name;
    }
    if (c.target != dir_) {
      EXPECT_FALSE(std::filesystem::exists(c.target)) << c.name;
    }
  }
}

}  // namespace
}  // namespace orvo
