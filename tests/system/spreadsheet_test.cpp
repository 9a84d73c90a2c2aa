#include "system/spreadsheet.hpp"

#include <gtest/gtest.h>
#include <signal.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <regex>
#include <sstream>
#include <thread>

#include "files/files_fixture.hpp"
#include "frame/state.hpp"
#include "platform/calc.hpp"
#include "settings/ini_values.hpp"
#include "support/test_support.hpp"

namespace orvo::system {
namespace {

TEST(Spreadsheet, ImportOptionsFromTheDelimiterAndTheSeparators) {
  const test::ScopedLocale english("en_US.UTF-8");
  for (const auto& row : test::readTestData("system/calc_import_options.tsv", 5)) {
    const auto& f = row.fields;
    DelimitedImport import = delimiterFlags(Variant(f[0]));
    import.decimalSeparator = f[1];
    import.thousandsSeparator = f[2];
    const auto encoding = static_cast<enumFileEncoding>(test::integerOf(f[3]));
    EXPECT_EQ(test::show(calcImportOptions(import, encoding)),
              test::show(u"Text - txt - csv (StarCalc):" + f[4]))
        << "data line " << row.line;
  }
  // Only a single blank merges runs; two blanks are an "other" delimiter of their first one.
  const DelimitedImport twoBlanks = delimiterFlags(Variant(String(u"  ")));
  EXPECT_TRUE(twoBlanks.other);
  EXPECT_FALSE(twoBlanks.consecutiveDelimiter);
}

class SpreadsheetProgram : public test::FilesTest {
 protected:
  void SetUp() override {
    FilesTest::SetUp();
    frame::StaticGlobals::instance().resetForTesting();
    ini_ = path("App.ini");
    frame::StaticGlobals::instance().setAppINIFileOverride(ini_);
  }
  void TearDown() override {
    frame::StaticGlobals::instance().resetForTesting();
    FilesTest::TearDown();
  }
  String installedRecord() {
    std::ifstream in(dir_ / "App.ini", std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return fromUtf8(text.str());
  }
  String ini_;
};

TEST_F(SpreadsheetProgram, WithoutCalcTheUserIsToldAndTheSettingsRecordIt) {
  const test::ScopedEnvironment noProgram("PATH", toUtf8(path("empty")).c_str());
  struct Case {
    VBool suppress;
    VBool useIni;
    bool boxShown;
    bool recorded;
  };
  const Case cases[] = {{VBool::True, VBool::True, false, true},
                        {VBool::False, VBool::False, true, false},
                        {VBool::False, VBool::True, true, true}};
  for (const auto& c : cases) {
    std::filesystem::remove(dir_ / "App.ini");
    const test::ScopedRecordingUserInterface ui;
    std::shared_ptr<Object> app;
    EXPECT_EQ(RunOrRestoreExcel(&app, c.suppress, c.useIni, 0), VBool::False);
    EXPECT_EQ(app, nullptr);
    ASSERT_EQ(ui->boxes.size(), c.boxShown ? 1U : 0U);
    if (c.boxShown) {
      EXPECT_EQ(test::show(ui->boxes[0].text),
                test::show(u"Unexpected Error (RunOrRestoreExcel): Could not create an instance of "
                           u"Excel.\r\nMake sure it is installed properly on this computer\r\n"
                           u"Error 429: ActiveX component can't create object"));
      EXPECT_EQ(ui->boxes[0].style, vbCritical);
    }
    EXPECT_EQ(installedRecord().find(u"\r\n[Excel]\r\nInstalled=False\r\n") != String::npos,
              c.recorded)
        << test::show(installedRecord());
    // OpenInExcel goes no further than the launch, and says the same.
    OpenInExcel(path("none.csv"), Variant(String(u";")), VBool::True, VBool::True, VBool::False, 0);
  }
}

// The real program: Calc is started as the library starts it, the file is handed over with the
// import options, and headless Calc reading the file with those options finds the cells.
TEST_F(SpreadsheetProgram, CalcOpensTheDelimitedFileWithTheRightCells) {
  ASSERT_EQ(std::system("command -v soffice >/dev/null"), 0) << "scripts/setup.sh installs Calc";
  const test::ScopedEnvironment home("HOME", toUtf8(path("home")).c_str());
  const test::ScopedLocale german("de_DE.UTF-8");
  const String file =
      write("Data.csv", "Name;Value;Big\r\na;1,5;1.234,5\r\nb;-2,25;12.345.678,9\r\n");
  ASSERT_EQ(platform::runningCalc(), 0) << "another Calc of this user runs on the default profile";
  // The Calc the library starts is ended with the test, and waited for, so that no other test
  // finds it running.
  struct Ending {
    ~Ending() {
      const std::int32_t calc = platform::runningCalc();
      if (calc == 0) return;
      ::kill(calc, SIGTERM);
      for (int i = 0; i < 100 && platform::runningCalc() != 0; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
      }
    }
  } ending;
  const test::TraceCapture trace;
  OpenInExcel(file, Variant(String(u";")), VBool::False, VBool::True, VBool::False, 0);
  EXPECT_NE(platform::runningCalc(), 0) << "Calc was started";
  String options;
  for (const auto& line : trace.messages()) {
    const auto at = line.find(u" handed to LibreOffice Calc with the import options \"");
    if (at != String::npos) options = line.substr(line.find(u'"', at) + 1);
  }
  ASSERT_FALSE(options.empty()) << "no file was handed over";
  options.pop_back();
  EXPECT_EQ(test::show(options), "Text - txt - csv (StarCalc):59,34,1,1,,1031,false,true");

  const std::string out = (dir_ / "out").string();
  const std::string command = "soffice --headless -env:UserInstallation=file://" +
                              (dir_ / "check").string() + " '--infilter=" + toUtf8(options) +
                              "' --convert-to fods --outdir " + out + " " + toUtf8(file) +
                              " >/dev/null 2>&1";
  EXPECT_EQ(std::system(command.c_str()), 0);
  std::ifstream fods(dir_ / "out" / "Data.fods");
  std::stringstream xml;
  xml << fods.rdbuf();
  std::vector<std::string> numbers;
  const std::regex cell("office:value-type=\"float\" office:value=\"([^\"]+)\"");
  const std::string text = xml.str();
  for (std::sregex_iterator it(text.begin(), text.end(), cell), end; it != end; ++it) {
    numbers.push_back((*it)[1]);
  }
  EXPECT_EQ(numbers, (std::vector<std::string>{"1.5", "1234.5", "-2.25", "12345678.9"}));
}

}  // namespace
}  // namespace orvo::system
