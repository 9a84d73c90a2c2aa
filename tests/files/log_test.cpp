#include "files/log.hpp"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <map>
#include <regex>
#include <sstream>

#include "files/encoding.hpp"
#include "files/files_fixture.hpp"
#include "frame/parent_app.hpp"
#include "frame/state.hpp"
#include "frame/trace.hpp"
#include "orvogeneric/classes.hpp"
#include "support/test_support.hpp"

namespace orvo::files {
namespace {

using namespace std::string_literals;

class Log : public test::FilesTest {
 protected:
  void SetUp() override {
    FilesTest::SetUp();
    restart();
    previousSink_ =
        setDebugOutputSink([this](std::u16string_view line) { debugLines_.emplace_back(line); });
  }
  void TearDown() override {
    setDebugOutputSink(previousSink_);
    frame::StaticGlobals::instance().resetForTesting();
    FilesTest::TearDown();
  }
  // A freshly loaded library whose application is "Model" in the scratch directory. The
  // information block traced on initialising reads the log's settings, from the current file.
  void restart() {
    frame::StaticGlobals::instance().resetForTesting();
    frame::InitialiseParentAppProperties(fromUtf8(dir_.string()), u"Model");
  }
  // The log's lines with their time stamps checked and cut off.
  std::vector<std::string> unstamped(const std::string& text) const {
    static const std::regex stamp(R"(^\d{4}-[A-Z][a-z]{2}-\d{2} \d{2}:\d{2}:\d{2}: )");
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
      std::smatch m;
      lines.push_back(std::regex_search(line, m, stamp) ? "<stamp>" + m.suffix().str() : line);
    }
    return lines;
  }
  test::ScopedLocale english_{"en_US.UTF-8"};
  DebugOutputSink previousSink_;
  std::vector<String> debugLines_;
};

TEST_F(Log, TheFileIsTheSwitch) {
  FileSubs subs;
  EXPECT_EQ(subs.LogFile(), fromUtf8((dir_ / "Model").string()) + u".log");
  subs.AddToLog(u"x");
  EXPECT_FALSE(std::filesystem::exists(dir_ / "Model.log")) << "the log is never created";
  write("Model.log", "");
  for (const std::int32_t level : {0, 1, 99, -5}) subs.AddToLog(u"x", level);
  subs.AddToLog(u"");
  subs.AddToLogB(u"caf\u00e9", u"P");
  // The first byte-mode line detects the log's encoding, and that trace goes into the log too.
  const std::string detected = "<stamp>" + toUtf8(frame::tracePrefix()) +
                               ": File Encoding = 0, for file " + (dir_ / "Model.log").string() +
                               "\r";
  const std::vector<std::string> expected = {"<stamp>x\r",         "<stamp>x\r", "<stamp>x\r",
                                             "<stamp>x\r",         "\r",         detected,
                                             "<stamp>P: caf\xE9\r"};
  EXPECT_EQ(unstamped(read("Model.log")), expected);
}

TEST_F(Log, ByteModeWritesInTheLogsEncoding) {
  FileSubs subs;
  struct Case {
    const char* name;
    std::string before;
    std::string expectedTail;
  };
  const Case cases[] = {
      {"UTF-8 with BOM", "\xEF\xBB\xBF", ": P: caf\xC3\xA9\r\n"},
      {"UTF-16 LE", "\xFF\xFE", std::string(":\0 \0P\0:\0 \0c\0a\0f\0\xE9\0\r\0\n\0", 22)},
      {"ANSI", "old line\r\n", ": P: caf\xE9\r\n"},
  };
  for (const auto& c : cases) {
    // Forget the last case's encoding while there is no log to trace into.
    std::filesystem::remove(dir_ / "Model.log");
    ClearTextFileEncoding(Variant(path("Model.log")));
    write("Model.log", c.before);
    subs.AddToLogB(u"caf\u00e9", u"P");
    const std::string text = read("Model.log");
    EXPECT_EQ(text.substr(0, c.before.size()), c.before) << c.name;
    ASSERT_GE(text.size(), c.expectedTail.size()) << c.name;
    EXPECT_EQ(text.substr(text.size() - c.expectedTail.size()), c.expectedTail) << c.name;
  }
}

TEST_F(Log, TraceLinesReachTheLog) {
  write("Model.log", "");
  frame::LibraryTrace(u"hello");
  const auto lines = unstamped(read("Model.log"));
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_EQ(lines[0], "<stamp>" + toUtf8(frame::tracePrefix()) + ": hello\r");
  INI ini;
  ini.SuppressORVOGenericLogging(VBool::True);
  frame::LibraryTrace(u"dropped");
  EXPECT_EQ(unstamped(read("Model.log")).size(), 1U);
}

TEST_F(Log, DebuggerMirrorNameField) {
  const test::ScopedEnvironment windows("ORVO_WINDIR", dir_.c_str());
  struct Case {
    std::string ini;
    std::u16string prefix;
    String line;
  };
  const Case cases[] = {
      {"", u"Solver", u""},  // off by default
      {"[Logging]\r\nOutputDebugString=True\r\n", u"Solver",
       u"Model[Solver]" + String(19, u' ') + u":run\r\n"},
      {"[logging]\r\noutputdebugstring=1\r\nOutputDebugStringPrefixLen=4\r\n", u"Solver",
       u"ver]:run\r\n"},
      {"[Logging]\r\nOutputDebugString=True\r\nOutputDebugStringPrefixLen=0\r\n", u"Solver",
       u":run\r\n"},
      {"[Logging]\r\nOutputDebugString=True\r\nOutputDebugStringPrefixLen=8\r\n", u"",
       u"Model   :run\r\n"},
  };
  FileSubs subs;
  for (const auto& c : cases) {
    write("ORVO.INI", c.ini);
    restart();
    debugLines_.clear();
    subs.AddToLogB(u"run", c.prefix);
    // Read once per process: a changed file is not seen again.
    write("ORVO.INI", "");
    subs.AddToLogB(u"run", c.prefix);
    // Reading the settings traces the detection of their file's encoding, mirrored as well.
    std::erase_if(debugLines_, [](const String& l) { return !l.ends_with(u":run\r\n"); });
    if (c.line.empty()) {
      EXPECT_TRUE(debugLines_.empty());
    } else {
      ASSERT_EQ(debugLines_.size(), 2U) << test::show(c.line);
      EXPECT_EQ(debugLines_[0], c.line);
      EXPECT_EQ(debugLines_[1], c.line);
    }
  }
  // A negative width fails inside the mirror; the caller sees nothing and the file line is
  // written first all the same.
  write("ORVO.INI", "[Logging]\r\nOutputDebugString=True\r\nOutputDebugStringPrefixLen=-1\r\n");
  restart();
  write("Model.log", "");
  debugLines_.clear();
  subs.AddToLog(u"still written");
  EXPECT_TRUE(debugLines_.empty());
  EXPECT_EQ(unstamped(read("Model.log")).front(), "<stamp>still written\r");
}

// Several processes appending to one log: every line arrives whole.
TEST_F(Log, ConcurrentProcessesKeepEveryLine) {
  write("Model.log", "");
  constexpr int kProcesses = 4;
  constexpr int kLines = 5000;
  EXPECT_TRUE(test::runInProcesses(kProcesses, [&](int p) {
    FileSubs subs;
    for (int i = 0; i < kLines; ++i) {
      subs.AddToLog(fromUtf8("process " + std::to_string(p) + " line " + std::to_string(i) + " " +
                             std::string(40, static_cast<char>('a' + p))));
    }
    return true;
  }));
  const std::regex line(R"(<stamp>process (\d) line (\d+) ([a-d])\3{39}\r)");
  std::map<int, int> next;
  int intact = 0;
  for (const auto& l : unstamped(read("Model.log"))) {
    std::smatch m;
    if (!std::regex_match(l, m, line)) continue;
    const int p = std::stoi(m[1].str());
    if (m[3].str()[0] != 'a' + p) continue;
    EXPECT_EQ(std::stoi(m[2].str()), next[p]++) << "lines of one process stay in order";
    ++intact;
  }
  EXPECT_EQ(intact, kProcesses * kLines);
}

}  // namespace
}  // namespace orvo::files
