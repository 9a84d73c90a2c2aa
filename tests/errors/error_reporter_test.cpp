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
  void showErrorReport(const ErrorReportShown& report) override {
    reports.push_back(report.details);
    moments.push_back(report.receivedAt);
  }
  std::vector<String> boxes;
  std::vector<String> reports;
  std::vector<String> moments;
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
  for (const auto& row : test::readTestData("errors/report_text.tsv", 6)) {
    const auto& f = row.fields;
    const Error e(static_cast<std::int32_t>(test::integerOf(f[0])), f[1], f[2]);
    EXPECT_EQ(test::show(errorReportText(e, f[3], f[4])), test::show(f[5]))
        << "data line " << row.line;
  }
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
  EXPECT_NE(read("Errors.LOG").find("Date/time: " + toUtf8(ui_->moments[1]) + "\r\n"),
            std::string::npos)
      << "the log and the dialog record the same moment";

  reporter.StartLoggingErrors(path("no/such/dir/e.log"));
  reporter.ReportError(u"P3", u"lost");
  EXPECT_EQ(ui_->reports.back(), u"lost\r\nProcedure: P3") << "not written: not mentioned";
  EXPECT_TRUE(ui_->boxes.empty());
}

}  // namespace
}  // namespace orvo::errors
