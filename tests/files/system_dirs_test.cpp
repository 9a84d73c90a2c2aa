#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "files/files_fixture.hpp"
#include "files/fileutils.hpp"
#include "frame/state.hpp"
#include "support/test_support.hpp"

namespace orvo::files {
namespace {

using test::ScopedEnvironment;
using test::TraceCapture;

class SystemDirs : public test::FilesTest {
 protected:
  void SetUp() override {
    FilesTest::SetUp();
    frame::StaticGlobals::instance().resetForTesting();
  }
  void TearDown() override {
    frame::StaticGlobals::instance().resetForTesting();
    FilesTest::TearDown();
  }
};

TEST_F(SystemDirs, TempDirEndsWithASeparator) {
  const std::string scratch = dir_.string();
  const std::pair<std::optional<std::string>, std::string> cases[] = {
      {scratch, scratch + "/"},
      {scratch + "/", scratch + "/"},
      {std::nullopt, "/tmp/"},
      {"", "/tmp/"}};
  for (const auto& [tmpdir, expected] : cases) {
    const ScopedEnvironment env("TMPDIR", tmpdir ? tmpdir->c_str() : nullptr);
    TraceCapture trace;
    EXPECT_EQ(TempDir(), fromUtf8(expected)) << tmpdir.value_or("(unset)");
    EXPECT_TRUE(trace.messages().empty());
  }
}

TEST_F(SystemDirs, AMissingTempDirFallsBackToTheApplicationsFolder) {
  ASSERT_TRUE(frame::StaticGlobals::instance().initialiseParentApp(fromUtf8(dir_.string()),
                                                                   u"model", u"model"));
  const ScopedEnvironment env("TMPDIR", (dir_ / "gone").c_str());
  TraceCapture trace;
  const String app = fromUtf8(dir_.string()) + u"/";
  EXPECT_EQ(TempDir(), app);
  EXPECT_EQ(trace.messages(),
            (std::vector<String>{u"TempDir: invalid candidate dir from GetTempPath: " +
                                     fromUtf8((dir_ / "gone").string()) + u"/",
                                 u"TempDir: falling back to ParentAppPath: " + app}));
}

TEST_F(SystemDirs, WinDirIsTheConfiguredFolderOrEtc) {
  // The answer must fit the platform's 260-character buffer, terminator included.
  const std::string fits = "/" + std::string(258, 'w');
  const std::pair<std::optional<std::string>, std::string> cases[] = {
      {dir_.string(), dir_.string()}, {std::nullopt, "/etc"}, {fits + "w", ""}, {fits, fits}};
  for (const auto& [setting, expected] : cases) {
    const ScopedEnvironment env("ORVO_WINDIR", setting ? setting->c_str() : nullptr);
    EXPECT_EQ(WinDir(), fromUtf8(expected)) << setting.value_or("(unset)");
  }
}

}  // namespace
}  // namespace orvo::files
