#include "platform/posix/command_line.hpp"

#include <gtest/gtest.h>

#include "support/test_support.hpp"

namespace orvo::platform {
namespace {

TEST(CommandLineTest, SplitsAsThePlatformsProgramsDo) {
  for (const auto& row : test::readTestData("platform/command_line.tsv", 3)) {
    std::vector<std::string> args;
    for (const String& arg : test::split(row.fields[2], u'|')) args.push_back(toUtf8(arg));
    EXPECT_EQ(splitCommandLine(row.fields[1]), args)
        << "data line " << row.line << ": " << toUtf8(row.fields[0]);
  }
}

}  // namespace
}  // namespace orvo::platform
