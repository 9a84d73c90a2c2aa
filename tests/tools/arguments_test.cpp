#include "arguments.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace orvo::cli {
namespace {

using Words = std::vector<std::string>;

// What a verb with -v VALUE and -f gets from each command line: its operands, its options
// (name=value), help, or the usage error, for both placements of options.
TEST(ArgumentsTest, SplitsAsTheShellToolsDo) {
  struct Case {
    Words args;
    OptionPlacement placement;
    Words operands;
    Words options;
    std::string error;
    bool help = false;
  };
  const auto anywhere = OptionPlacement::Anywhere;
  const auto before = OptionPlacement::BeforeOperands;
  const std::vector<Case> cases = {
      {{"a", "b"}, anywhere, {"a", "b"}, {}, ""},
      {{"-f", "a", "--v", "1", "b"}, anywhere, {"a", "b"}, {"-f=", "--v=1"}, ""},
      {{"a", "-f"}, anywhere, {"a"}, {"-f="}, ""},
      {{"a", "-f"}, before, {"a", "-f"}, {}, ""},
      {{"a", "-5"}, before, {"a", "-5"}, {}, ""},
      {{"-f", "a", "--v"}, before, {"a", "--v"}, {"-f="}, ""},
      {{"--", "-f", "--help"}, anywhere, {"-f", "--help"}, {}, ""},
      {{"a", "--", "-x", "--"}, anywhere, {"a", "-x", "--"}, {}, ""},
      {{"-", "a"}, anywhere, {"-", "a"}, {}, ""},
      {{"", "a"}, anywhere, {"", "a"}, {}, ""},
      {{"--bogus", "a"}, anywhere, {}, {}, "unknown option --bogus"},
      {{"a", "-x"}, anywhere, {"a"}, {}, "unknown option -x"},
      {{"--v"}, anywhere, {}, {}, "--v needs a value"},
      {{"--v", "--v"}, anywhere, {}, {"--v=--v"}, ""},
      {{"a", "--help", "--bogus"}, anywhere, {"a"}, {}, "", true},
      {{"-h"}, before, {}, {}, "", true},
      {{"a", "-h"}, before, {"a", "-h"}, {}, ""},
      {{"--" + std::string(100, 'x')},
       anywhere,
       {},
       {},
       "unknown option --" + std::string(38, 'x')},
  };
  for (const Case& c : cases) {
    std::string line;
    for (const auto& a : c.args) line += "[" + a + "]";
    SCOPED_TRACE(line);
    const Arguments got = splitArguments(c.args, {{"--v", true}, {"-f", false}}, c.placement);
    EXPECT_EQ(got.help, c.help);
    EXPECT_EQ(got.error, c.error);
    if (!c.error.empty() || c.help) continue;
    EXPECT_EQ(got.operands, c.operands);
    Words options;
    for (const auto& [name, value] : got.options) options.push_back(name + "=" + value);
    EXPECT_EQ(options, c.options);
  }
}

TEST(ArgumentsTest, TheLastValueGivenCounts) {
  const Arguments got =
      splitArguments({"--v", "1", "-f", "--v", "2"}, {{"--v", true}, {"-f", false}});
  ASSERT_NE(got.value("--v"), nullptr);
  EXPECT_EQ(*got.value("--v"), "2");
  EXPECT_TRUE(got.has("-f"));
  EXPECT_FALSE(got.has("--x"));
  EXPECT_EQ(got.value("-x"), nullptr);
}

}  // namespace
}  // namespace orvo::cli
