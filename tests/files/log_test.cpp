#include "files/log.hpp"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <regex>
#include <sstream>

#include "files/encoding.hpp"
#include "files/files_fixture.hpp"
#include "frame/parent_app.hpp"
#include "frame/state.hpp"
#include "frame/trace.hpp"
#include "orvogeneric/classes.hpp"
#include "platform/last_error.hpp"
#include "support/test_support.hpp"

namespace orvo::files {
namespace {

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
  for (const auto& row : test::readTestData("files/log_encodings.tsv", 3)) {
    SCOPED_TRACE("data line " + std::to_string(row.line));
    const std::string before = test::bytesOf(row.fields[1]);
    const std::string tail = test::bytesOf(row.fields[2]);
    // Forget the last case's encoding while there is no log to trace into.
    std::filesystem::remove(dir_ / "Model.log");
    ClearTextFileEncoding(Variant(path("Model.log")));
    write("Model.log", before);
    subs.AddToLogB(u"caf\u00e9", u"P");
    const std::string text = read("Model.log");
    EXPECT_TRUE(text.starts_with(before));
    EXPECT_TRUE(text.ends_with(tail));
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
  FileSubs subs;
  for (const auto& row : test::readTestData("files/debug_mirror.tsv", 3)) {
    SCOPED_TRACE("data line " + std::to_string(row.line));
    const String& line = row.fields[2];
    write("ORVO.INI", test::bytesOf(row.fields[0]));
    restart();
    debugLines_.clear();
    subs.AddToLogB(u"run", row.fields[1]);
    // Read once per process: a changed file is not seen again.
    write("ORVO.INI", "");
    subs.AddToLogB(u"run", row.fields[1]);
    // Reading the settings traces the detection of their file's encoding, mirrored as well.
    std::erase_if(debugLines_, [](const String& l) { return !l.ends_with(u":run\r\n"); });
    const std::vector<String> expected =
        line.empty() ? std::vector<String>{} : std::vector<String>{line, line};
    EXPECT_EQ(debugLines_, expected);
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

// The log is held open between lines, yet each line goes where an open of the log's name would
// have taken it, whatever another process did to the file since the last line.
TEST_F(Log, WhatAnotherProcessDidToTheLogDecidesTheNextLine) {
  namespace fs = std::filesystem;
  struct Case {
    const char* change;
    std::function<void(const fs::path&)> make;
    const char* logAfter;  // the log's lines after "second"; <none>: there is no log
    const char* aside;     // what the file moved aside holds, if any
    std::uint32_t error;   // the thread's last error after "second"
  };
  const Case cases[] = {
      {"nothing", [](const fs::path&) {}, "first|second", "", 0},
      {"removed", [](const fs::path& f) { fs::remove(f); }, "<none>", "", 2},
      {"renamed away", [](const fs::path& f) { fs::rename(f, f.string() + ".old"); }, "<none>",
       "first", 2},
      {"replaced by a new file",
       [](const fs::path& f) {
         fs::rename(f, f.string() + ".old");
         std::ofstream(f, std::ios::binary) << "";
       },
       "second", "first", 0},
      // The read-only attribute refuses the line whoever the user is, as the platform's does.
      {"made read-only", [](const fs::path& f) { fs::permissions(f, fs::perms(0444)); }, "first",
       "", 5},
      {"emptied", [](const fs::path& f) { fs::resize_file(f, 0); }, "second", "", 0},
  };
  FileSubs subs;
  const fs::path log = dir_ / "Model.log";
  for (const Case& c : cases) {
    fs::remove(fs::path(log.string() + ".old"));
    if (fs::exists(log)) fs::permissions(log, fs::perms(0644));
    fs::remove(log);
    write("Model.log", "");
    subs.AddToLog(u"first");
    ASSERT_TRUE(test::runInProcesses(1, [&](int) {
      c.make(log);
      return true;
    })) << c.change;
    subs.AddToLog(u"second");
    EXPECT_EQ(platform::lastError(), c.error) << c.change;
    std::string lines;
    if (fs::exists(log)) {
      for (const auto& l : unstamped(read("Model.log"))) {
        lines += (lines.empty() ? "" : "|") + l.substr(7, l.size() - 8);
      }
    } else {
      lines = "<none>";
    }
    EXPECT_EQ(lines, c.logAfter) << c.change;
    const std::string aside = fs::exists(log.string() + ".old") ? read("Model.log.old") : "";
    EXPECT_EQ(unstamped(aside).empty() ? "" : unstamped(aside).front().substr(7, 5),
              std::string(c.aside))
        << c.change;
  }
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
