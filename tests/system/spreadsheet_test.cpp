#include "system/spreadsheet.hpp"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <regex>
#include <sstream>
#include <thread>

#include "files/files_fixture.hpp"
#include "frame/state.hpp"
#include "orvogeneric/desktop.hpp"
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

// A process that the system names as Calc's: the program behind `link` (a link named soffice.bin)
// with these arguments, ended when the stand-in goes.
class CalcStandIn {
 public:
  CalcStandIn(const std::filesystem::path& link, std::vector<std::string> arguments) {
    std::vector<char*> argv;
    arguments.insert(arguments.begin(), "soffice.bin");
    for (auto& a : arguments) argv.push_back(a.data());
    argv.push_back(nullptr);
    pid_ = ::fork();
    if (pid_ == 0) {
      ::execv(link.c_str(), argv.data());
      ::_exit(127);
    }
  }
  ~CalcStandIn() { end(); }
  CalcStandIn(const CalcStandIn&) = delete;
  CalcStandIn& operator=(const CalcStandIn&) = delete;
  // Whether the library finds it as the running Calc, within two seconds.
  [[nodiscard]] bool found() const {
    for (int i = 0; i < 100 && platform::runningCalc() != pid_; ++i) {
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return platform::runningCalc() == pid_;
  }
  void end() {
    if (pid_ <= 0) return;
    ::kill(pid_, SIGKILL);
    ::waitpid(pid_, nullptr, 0);
    pid_ = 0;
  }
  [[nodiscard]] pid_t pid() const { return pid_; }

 private:
  pid_t pid_ = 0;
};

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
  // Each finds, or starts, this user's one Calc: they run one after the other.
  void withoutCalc();
  void runningCalc();
  void handedOnceListening();
  void startedCalc();
  String ini_;
};

// Without Calc the user is told and the settings file records it.
void SpreadsheetProgram::withoutCalc() {
  ASSERT_EQ(platform::runningCalc(), 0) << "another Calc of this user runs on the default profile";
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

// A desktop with Calc's one window, as the window manager shows it, recording what is asked of it.
class CalcDesktop final : public Desktop {
 public:
  static constexpr WindowHandle kWindow = 0x1200007;
  std::int64_t process = 0;
  bool iconic = false;
  bool zoomed = false;
  std::vector<ShowCommand> shown;
  std::vector<WindowHandle> activated;
  std::vector<WindowHandle> topLevelWindows() override { return {0x1100001, kWindow}; }
  bool isWindowVisible(WindowHandle) override { return true; }
  String windowTitle(WindowHandle w) override {
    return w == kWindow ? u"Untitled 1 - LibreOffice Calc" : u"Terminal";
  }
  String windowClassName(WindowHandle w) override {
    return w == kWindow ? u"libreoffice-calc" : u"XTerm";
  }
  std::int64_t windowOwnerId(WindowHandle w) override { return w == kWindow ? process : 1; }
  bool isIconic(WindowHandle w) override { return w == kWindow && iconic; }
  bool isZoomed(WindowHandle w) override { return w == kWindow && zoomed; }
  std::int32_t showWindow(WindowHandle, ShowCommand c) override {
    shown.push_back(c);
    return 1;
  }
  std::int32_t activateWindow(WindowHandle w) override {
    activated.push_back(w);
    return 1;
  }
};

// A running Calc is attached as it is: a minimised one is shown normal, or maximised when that
// was asked, never left minimised (a request for minimised restores it too); one that is not
// minimised is left in its state. Its main window is then activated.
void SpreadsheetProgram::runningCalc() {
  std::filesystem::remove(dir_ / "App.ini");
  std::filesystem::create_symlink("/bin/sleep", dir_ / "soffice.bin");
  const CalcStandIn calc(dir_ / "soffice.bin", {"30"});
  ASSERT_TRUE(calc.found());
  const pid_t pid = calc.pid();

  struct Case {
    bool iconic;
    bool zoomed;
    std::int32_t windowState;
    std::vector<ShowCommand> want;
  };
  const Case cases[] = {
      {true, false, 1, {ShowCommand::ShowNormal}},
      {true, false, 0, {ShowCommand::ShowNormal}},
      {true, false, 2, {ShowCommand::Maximize}},
      {true, true, 2, {ShowCommand::Maximize}},
      {false, false, 1, {}},
      {false, true, 0, {}},
  };
  for (const auto& c : cases) {
    auto screen = std::make_shared<CalcDesktop>();
    screen->process = pid;
    screen->iconic = c.iconic;
    screen->zoomed = c.zoomed;
    const auto previous = setDesktop(screen);
    std::shared_ptr<Object> object;
    const VBool ok = RunOrRestoreExcel(&object, VBool::True, VBool::True, c.windowState);
    setDesktop(previous);
    const std::string what = "iconic " + std::to_string(c.iconic) + " zoomed " +
                             std::to_string(c.zoomed) + " asked " + std::to_string(c.windowState);
    EXPECT_EQ(ok, VBool::True) << what;
    EXPECT_EQ(screen->shown, c.want) << what;
    EXPECT_EQ(screen->activated, std::vector<WindowHandle>{CalcDesktop::kWindow}) << what;
    ASSERT_NE(object, nullptr) << what;
    auto app = std::static_pointer_cast<SpreadsheetApplication>(object);
    setDesktop(screen);
    EXPECT_EQ(app->Hwnd(), CalcDesktop::kWindow);
    EXPECT_EQ(app->WindowState(), c.iconic ? xlMinimized : c.zoomed ? xlMaximized : xlNormal);
    // A state that is not one of Excel's three is an invalid call, and the window is left alone.
    const auto shownBefore = screen->shown.size();
    std::int32_t number = 0;
    try {
      app->WindowState(-4142);
    } catch (const Error& e) {
      number = e.number();
    }
    EXPECT_EQ(number, 5);
    EXPECT_EQ(screen->shown.size(), shownBefore);
    setDesktop(previous);
  }
  EXPECT_FALSE(std::filesystem::exists(dir_ / "App.ini")) << "a running Calc is not recorded";

  // Only a file that can be read to its end is handed over: a pipe would hold Calc forever.
  ASSERT_EQ(::mkfifo((dir_ / "pipe.csv").c_str(), 0600), 0);
  std::filesystem::create_directory(dir_ / "folder.csv");
  SpreadsheetApplication app;
  ASSERT_TRUE(attachCalc(app));
  for (const char* name : {"pipe.csv", "folder.csv", "missing.csv"}) {
    std::int32_t number = 0;
    try {
      app.OpenText(path(name));
    } catch (const Error& e) {
      number = e.number();
    }
    EXPECT_EQ(number, 1004) << name;
  }
}

// A Calc still starting is not handed the file until it listens for launchers: a launcher that
// finds none becomes a second program, which on a slow start took the profile from the first and
// then ended with it. The stand-in listens after a while; the launcher stand-in records whether it
// was called before that.
void SpreadsheetProgram::handedOnceListening() {
  const std::filesystem::path bin = dir_ / "bin";
  std::filesystem::create_directories(bin);
  const std::string calls = (dir_ / "calls").string();
  const std::string listening = (dir_ / "listening").string();
  {
    std::ofstream launcher(bin / "soffice");
    launcher << "#!/bin/sh\nif [ -e '" << listening << "' ]; then echo \"handed $*\" >>'" << calls
             << "'; else echo early >>'" << calls << "'; exit 1; fi\n";
  }
  std::filesystem::permissions(bin / "soffice", std::filesystem::perms::owner_all);
  std::filesystem::create_symlink("/usr/bin/python3", bin / "soffice.bin");
  const std::string pipe = (dir_ / "OSL_PIPE_1_SingleOfficeIPC_0f").string();
  const char* script =
      "import socket, sys, time\n"
      "time.sleep(1.5)\n"
      "s = socket.socket(socket.AF_UNIX)\n"
      "s.bind(sys.argv[1])\n"
      "s.listen(1)\n"
      "open(sys.argv[2], 'w').close()\n"
      "time.sleep(30)\n";
  CalcStandIn calc(bin / "soffice.bin", {"-c", script, pipe, listening});
  ASSERT_TRUE(calc.found());
  const test::ScopedEnvironment launchers("PATH", bin.c_str());
  ASSERT_TRUE(platform::openInCalc(path("Data.csv"), u"Text - txt - csv (StarCalc):44,34,76,1"));
  std::ifstream recorded(calls);
  std::stringstream text;
  text << recorded.rdbuf();
  EXPECT_EQ(text.str(), "handed --infilter=Text - txt - csv (StarCalc):44,34,76,1 " +
                            toUtf8(path("Data.csv")) + "\n");
  calc.end();
  EXPECT_FALSE(platform::openInCalc(path("Data.csv"), u"")) << "no Calc runs";
}

// The real program: Calc is started as the library starts it, the file is handed over with the
// import options, and headless Calc reading the file with those options finds the cells.
void SpreadsheetProgram::startedCalc() {
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
  // The running Calc takes an empty file too, as Excel opened an empty book.
  const test::ScopedRecordingUserInterface ui;
  OpenInExcel(write("Empty.csv", ""), Variant(String(u";")), VBool::False, VBool::False,
              VBool::False, 0);
  EXPECT_TRUE(ui->boxes.empty()) << test::show(ui->boxes.empty() ? u"" : ui->boxes[0].text);

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

TEST_F(SpreadsheetProgram, AbsentRunningAndStarted) {
  withoutCalc();
  runningCalc();
  handedOnceListening();
  startedCalc();
}

}  // namespace
}  // namespace orvo::system
