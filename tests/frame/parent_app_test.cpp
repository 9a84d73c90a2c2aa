#include "frame/parent_app.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <memory>

#include "files/files_fixture.hpp"
#include "frame/state.hpp"
#include "orvogeneric/classes.hpp"
#include "orvogeneric/user_interface.hpp"
#include "platform/system_paths.hpp"
#include "support/test_support.hpp"

namespace orvo::frame {
namespace {

using test::TraceCapture;

class ParentApp : public test::FilesTest {
 protected:
  void SetUp() override {
    FilesTest::SetUp();
    StaticGlobals::instance().resetForTesting();
  }
  void TearDown() override {
    StaticGlobals::instance().resetForTesting();
    FilesTest::TearDown();
  }
  String base() const { return fromUtf8(dir_.string()); }
  test::ScopedRecordingUserInterface ui_;
};

TEST_F(ParentApp, TheFirstInitialisationWinsAndLaterOnesAreTraced) {
  std::filesystem::create_directory(dir_ / "other");
  INI ini;
  ini.InitialiseAppProperties(u"  " + base() + u"/  ", u" Model ");
  EXPECT_EQ(sParentAppPath(), base() + u"/");
  EXPECT_EQ(sParentAppEXEName(), u"Model");
  EXPECT_EQ(sParentAppTitle(), u"Model");
  TraceCapture trace;
  ini.InitialiseAppProperties(base() + u"/other", u"Model");
  EXPECT_EQ(trace.messages(),
            (std::vector<String>{
                u"InitialiseParentAppProperties: existing & proposed new paths are different: '" +
                base() + u"/' : '" + base() + u"/other'"}));
  ini.InitialiseAppProperties(base() + u"/", u"Other");
  EXPECT_EQ(trace.messages().back(),
            u"InitialiseParentAppProperties: existing & proposed new exenames are different: "
            u"'Model' : 'Other'");
  EXPECT_EQ(trace.messages().size(), 2U);
  EXPECT_EQ(sParentAppPath(), base() + u"/");
  EXPECT_TRUE(ui_->boxes.empty());
}

// The expected block is the data file's, filled in with the version fields the build was
// configured with and the test program's own directory, read from the system.
TEST_F(ParentApp, InitialisationWritesTheInformationBlock) {
  const std::map<String, String> values = {
      {u"{description}", fromUtf8(ORVO_EXPECTED_DESCRIPTION)},
      {u"{title}", fromUtf8(ORVO_EXPECTED_TITLE)},
      {u"{company}", fromUtf8(ORVO_EXPECTED_COMPANY)},
      {u"{copyright}", fromUtf8(ORVO_EXPECTED_COPYRIGHT)},
      {u"{comments}", fromUtf8(ORVO_EXPECTED_COMMENTS)},
      {u"{directory}",
       fromUtf8(std::filesystem::read_symlink("/proc/self/exe").parent_path().string())},
      {u"{path}", base()},
  };
  std::vector<String> expected;
  for (const auto& row : test::readTestData("information_block.txt")) {
    String line = row.fields.at(0);
    for (const auto& [name, value] : values) {
      if (const auto at = line.find(name); at != String::npos) line.replace(at, name.size(), value);
    }
    expected.push_back(line);
  }
  TraceCapture trace;
  InitialiseParentAppProperties(base(), u"Model");
  EXPECT_EQ(trace.messages(), expected);
}

TEST_F(ParentApp, BadArgumentsStoreNothingAndTheExecutableIsUsed) {
  struct Case {
    String path, name;
  };
  const Case cases[] = {
      {base() + u"/missing", u"Model"},
      {u"", u"Model"},
      {base(), u""},
  };
  const String exe = platform::executablePath();
  for (const auto& c : cases) {
    StaticGlobals::instance().resetForTesting();
    TraceCapture trace;
    InitialiseParentAppProperties(c.path, c.name);
    EXPECT_TRUE(trace.messages().empty());
    EXPECT_FALSE(StaticGlobals::instance().parentAppInitialised());
    EXPECT_EQ(sParentAppPathAndEXEName(), exe.substr(0, exe.rfind(u'/') + 1) + u"orvo_tests");
    EXPECT_TRUE(trace.messages().empty()) << "no block on the derived path";
  }
  // A name of blanks passes the test and is stored empty.
  StaticGlobals::instance().resetForTesting();
  InitialiseParentAppProperties(base(), u"   ");
  EXPECT_TRUE(StaticGlobals::instance().parentAppInitialised());
  EXPECT_EQ(sParentAppEXEName(), u"");
  EXPECT_TRUE(ui_->boxes.empty());
}

TEST_F(ParentApp, TheDevelopmentEnvironmentIsRefusedEveryTime) {
  const String message =
      u"Programmer error: missing call to inibas.InitialiseAppProperties(App.Path, App.EXEName) "
      u"in program startup code";
  deriveParentAppProperties(u"C:\\Program Files\\Microsoft Visual Studio\\VB98\\vb6.exe");
  deriveParentAppProperties(u"C:\\VB98\\VB6.EXE");
  ASSERT_EQ(ui_->boxes.size(), 2U);
  EXPECT_EQ(ui_->boxes[0].text, message);
  EXPECT_EQ(ui_->boxes[0].style, vbOKOnly);
  EXPECT_FALSE(StaticGlobals::instance().parentAppInitialised());

  deriveParentAppProperties(u"C:\\Apps\\Model\\model.exe");
  EXPECT_EQ(sParentAppPath(), u"C:\\Apps\\Model\\");
  EXPECT_EQ(sParentAppPathAndEXEName(), u"C:\\Apps\\Model\\model");
  EXPECT_EQ(ui_->boxes.size(), 2U);
}

TEST_F(ParentApp, ATitleIsTrimmedAndReplacedByInitialisation) {
  TraceCapture trace;
  INI ini;
  ini.SetAppTitle(u"  My Model  ");
  EXPECT_EQ(StaticGlobals::instance().parentAppTitle(), u"My Model");
  EXPECT_EQ(trace.messages().back(), u"SetAppTitle has set application title to: 'My Model'");
  EXPECT_FALSE(StaticGlobals::instance().parentAppInitialised());
  ini.InitialiseAppProperties(base(), u"Model");
  EXPECT_EQ(sParentAppTitle(), u"Model");
  EXPECT_EQ(sParentAppPathAndEXEName(), base() + u"/Model") << "one separator added";
  ini.SetAppTitle(u"Later");
  EXPECT_EQ(sParentAppTitle(), u"Later");
}

}  // namespace
}  // namespace orvo::frame
