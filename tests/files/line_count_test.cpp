#include "orvogeneric/line_count.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "files/files_fixture.hpp"
#include "files/textfiles.hpp"
#include "support/test_support.hpp"

namespace orvo::files {
namespace {

using LineCount = test::FilesTest;

// The public count agrees with FileLineCount on every terminator and encoding, and its progress
// climbs to the bytes it read, across buffers.
TEST_F(LineCount, CountsAsFileLineCountAndTellsHowFarItGot) {
  std::string big;
  std::int64_t bigLines = 0;
  for (; big.size() < 300000; ++bigLines) big += "line " + std::to_string(bigLines) + "\r\n";
  struct Case {
    const char* name;
    std::string bytes;
    std::int64_t lines;
  };
  const std::vector<Case> cases = {
      {"empty", "", 0},
      {"CR, LF and CR LF, last line unterminated", "a\rb\nc\r\nd", 4},
      {"blank lines", "\r\n\r\n\n\r", 4},
      {"UTF-16 LE with its BOM",
       std::string("\xFF\xFE"
                   "a\0\r\0\n\0b\0",
                   10),
       2},
      {"many buffers", big, bigLines},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const String file = write(std::string("count_") + std::to_string(&c - cases.data()), c.bytes);
    std::vector<std::int64_t> heard;
    const std::int64_t count =
        CountFileLines(toUtf8(file), [&](std::int64_t bytes) { heard.push_back(bytes); });
    EXPECT_EQ(count, FileLineCount(file));
    EXPECT_EQ(count, c.lines);
    if (c.bytes.empty()) continue;
    ASSERT_FALSE(heard.empty());
    for (std::size_t i = 1; i < heard.size(); ++i) EXPECT_GT(heard[i], heard[i - 1]);
    EXPECT_LE(heard.back(), static_cast<std::int64_t>(c.bytes.size()));
    EXPECT_GE(heard.back(), static_cast<std::int64_t>(c.bytes.size()) - 2) << "all but a BOM";
  }
  EXPECT_GT(CountFileLines(toUtf8(write("no progress", "x\n"))), 0);
}

TEST_F(LineCount, AMissingFileIsTheReadersError) {
  const Error e = test::errorOf([&] { CountFileLines(toUtf8(path("missing.txt"))); });
  EXPECT_EQ(e.number(), 45604);
  EXPECT_EQ(e.description(), u"File not found.\r\nError handled by FileOpen");
}

}  // namespace
}  // namespace orvo::files
