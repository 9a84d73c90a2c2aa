#include "errors/error_reporter.hpp"

#include <gtest/gtest.h>

#include <cctype>
#include <filesystem>
#include <regex>

#include "files/files_fixture.hpp"
#include "frame/state.hpp"
#include "support/test_support.hpp"

namespace orvo::errors {
namespace {

class ReportRecorder final : public UserInterface {
 public:
  MsgBoxResult messageBox(std::u16string_view text, std::u16string_view, std::int32_t) override {
    boxes.emplace_back(text);
    return vbOK;
  }
  void beep() override {}
  void showErrorReport(std::u16string_view details, std::u16string_view logPath) override {
    reports.emplace_back(details);
    paths.emplace_back(logPath);
  }
  std::vector<String> boxes;
  std::vector<String> reports;
  std::vector<String> paths;
};

class ErrorReports : public test::FilesTest {
 protected:
  void SetUp() override {
    FilesTest::SetUp();
    previous_ = setUserInterface(ui_);
    frame::StaticGlobals::instance().resetForTesting();
  }
  void TearDown() override {
    frame::StaticGlobals::instance().resetForTesting();
    setUserInterface(previous_);
    FilesTest::TearDown();
  }
  std::shared_ptr<ReportRecorder> ui_ = std::make_shared<ReportRecorder>();
  std::shared_ptr<UserInterface> previous_;
  test::ScopedLocale english_{"en_US.UTF-8"};
};

TEST_F(ErrorReports, ReportText) {
  struct Case {
    std::int32_t number;
    const char16_t* extra;
    String expected;
  };
  const Case cases[] = {
      {5, u"", u"VB error number: 5, What\r\nError source: Src\r\nProcedure: Proc"},
      {static_cast<std::int32_t>(0x80040000U), u"",
       u"VB error number: -2147221504 (0), What\r\nError source: Src\r\nProcedure: Proc"},
      {static_cast<std::int32_t>(0x8004FFFFU), u"",
       u"VB error number: -2147155969 (65535), What\r\nError source: Src\r\nProcedure: Proc"},
      {static_cast<std::int32_t>(0x80050000U), u"",
       u"VB error number: -2147155968, What\r\nError source: Src\r\nProcedure: Proc"},
      {static_cast<std::int32_t>(0x7FFFFFFFU), u"more",
       u"more\r\nVB error number: 2147483647, What\r\nError source: Src\r\nProcedure: Proc"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(errorReportText(Error(c.number, u"What", u"Src"), u"Proc", c.extra), c.expected)
        << c.number;
  }
  EXPECT_EQ(
      errorReportText(Error(static_cast<std::int32_t>(0x8004F138U),
                            u"Cannot locate language support file 'x.dll'", u"orvoGeneric DLL"),
                      u"Init", u""),
      u"VB error number: -2147159752 (61752), Cannot locate language support file 'x.dll'"
      u"\r\nError source: orvoGeneric DLL\r\nProcedure: Init");
  EXPECT_EQ(messageReportText(u"Proc", u"Plain"), u"Plain\r\nProcedure: Proc");
}

TEST_F(ErrorReports, LoggedBlocksAndTheDetailsLine) {
  ErrorReporter reporter;
  reporter.ReportError(u"Proc", u"not logged");
  ASSERT_EQ(ui_->reports.size(), 1U);
  EXPECT_EQ(ui_->reports[0], u"not logged\r\nProcedure: Proc") << "no log: no details line";

  const String log = fromUtf8((dir_ / "Errors.LOG").string());
  reporter.StartLoggingErrors(log);
  EXPECT_EQ(reporter.ErrorLogFilePath(), log);
  reporter.ReportError(u"P1", u"first caf\u00e9");
  reporter.ReportVBError(Error(5, u"Bad", u"Src"), u"P2", u"");
  ASSERT_EQ(ui_->reports.size(), 3U);
  std::string lowered = (dir_ / "Errors.LOG").string();
  for (char& c : lowered) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  EXPECT_EQ(ui_->reports[1],
            u"first caf\u00e9\r\nProcedure: P1\r\nDetails logged to: " + fromUtf8(lowered))
      << "the path is shown in lower case";
  const std::regex block(
      "\r\n-{60}\r\nAN ERROR HAS OCCURRED\r\nDate/time: [0-9/]+ [0-9:]+ [AP]M\r\n"
      "first caf\xE9\r\nProcedure: P1\r\n"
      "\r\n-{60}\r\nAN ERROR HAS OCCURRED\r\nDate/time: [0-9/]+ [0-9:]+ [AP]M\r\n"
      "VB error number: 5, Bad\r\nError source: Src\r\nProcedure: P2\r\n");
  EXPECT_TRUE(std::regex_match(read("Errors.LOG"), block)) << read("Errors.LOG");

  reporter.StartLoggingErrors(path("no/such/dir/e.log"));
  reporter.ReportError(u"P3", u"lost");
  EXPECT_EQ(ui_->reports.back(), u"lost\r\nProcedure: P3") << "not written: not mentioned";
  EXPECT_TRUE(ui_->boxes.empty());
}

}  // namespace
}  // namespace orvo::errors
