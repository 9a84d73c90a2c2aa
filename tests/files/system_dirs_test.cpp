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
  struct Case {
    std::optional<std::string> tmpdir;
    String expected;
  };
  const Case cases[] = {
      {scratch, fromUtf8(scratch) + u"/"},
      {scratch + "/", fromUtf8(scratch) + u"/"},
      {std::nullopt, u"/tmp/"},
      {"", u"/tmp/"},
  };
  for (const auto& c : cases) {
    const ScopedEnvironment env("TMPDIR", c.tmpdir ? c.tmpdir->c_str() : nullptr);
    TraceCapture trace;
    EXPECT_EQ(TempDir(), c.expected) << c.tmpdir.value_or("(unset)");
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
  {
    const ScopedEnvironment env("ORVO_WINDIR", dir_.c_str());
    EXPECT_EQ(WinDir(), fromUtf8(dir_.string()));
  }
  {
    const ScopedEnvironment env("ORVO_WINDIR", nullptr);
    EXPECT_EQ(WinDir(), u"/etc");
  }
  {
    // The answer must fit the platform's 260-character buffer, terminator included.
    const ScopedEnvironment env("ORVO_WINDIR", ("/" + std::string(259, 'w')).c_str());
    EXPECT_EQ(WinDir(), u"");
  }
  {
    const ScopedEnvironment env("ORVO_WINDIR", ("/" + std::string(258, 'w')).c_str());
    EXPECT_EQ(WinDir().size(), 259U);
  }
}

}  // namespace
}  // namespace orvo::files
