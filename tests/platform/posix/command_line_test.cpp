#include "platform/posix/command_line.hpp"

#include <gtest/gtest.h>

#include "support/test_support.hpp"

namespace orvo::platform {
namespace {

TEST(CommandLineTest, SplitsAsThePlatformsProgramsDo) {
  struct Case {
    const char16_t* line;
    std::vector<std::string> args;
  };
  const Case cases[] = {
      {u"prog a  b\tc", {"prog", "a", "b", "c"}},
      {u"  \"a b\" c  ", {"a b", "c"}},
      {uR"(a\\\"b)", {R"(a\"b)"}},
      {uR"(a\\"b c")", {R"(a\b c)"}},
      {uR"("a""b" c)", {R"(a"b)", "c"}},
      {uR"(C:\dir\ "x\y")", {R"(C:\dir\)", R"(x\y)"}},
      {u"\"\"", {""}},
      {u"", {}},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(platform::splitCommandLine(c.line), c.args) << test::show(c.line);
  }
}

}  // namespace
}  // namespace orvo::platform
