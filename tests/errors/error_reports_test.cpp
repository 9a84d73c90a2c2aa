#include "orvogeneric/error_reports.hpp"

#include <gtest/gtest.h>

#include <vector>

#include "orvogeneric/user_interface.hpp"

namespace orvo {
namespace {

// The dialog a host would show, recording what it is given.
class Dialog final : public UserInterface {
 public:
  MsgBoxResult messageBox(std::u16string_view, std::u16string_view, std::int32_t) override {
    return vbOK;
  }
  void beep() override {}
  void showErrorReport(const ErrorReportShown& report) override { shown.push_back(report.details); }
  std::vector<String> shown;
};

// What a host calls reaches the dialog as the applications' reports, and the log path it
// chooses is the process's.
TEST(ErrorReportsForHosts, ReportsReachTheInstalledDialog) {
  const auto dialog = std::make_shared<Dialog>();
  const auto previous = setUserInterface(dialog);
  const String previousLog = ErrorLogFilePath();
  StartLoggingErrors(u"");
  EXPECT_EQ(ErrorLogFilePath(), u"");
  ReportVBError(
      Error(-2147159752, u"Cannot locate language support file 'x.dll'", u"orvoGeneric DLL"),
      u"Init");
  ReportError(u"Save", u"Disk full");
  ReportVBError(Error(5, u"Invalid procedure call or argument", u""), u"Load", u"While loading");
  EXPECT_EQ(dialog->shown,
            (std::vector<String>{
                u"VB error number: -2147159752 (61752), Cannot locate language support file "
                u"'x.dll'\r\nError source: orvoGeneric DLL\r\nProcedure: Init",
                u"Disk full\r\nProcedure: Save",
                u"While loading\r\nVB error number: 5, Invalid procedure call or argument\r\n"
                u"Error source: \r\nProcedure: Load"}));
  StartLoggingErrors(previousLog);
  setUserInterface(previous);
}

}  // namespace
}  // namespace orvo
