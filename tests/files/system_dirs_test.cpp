#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <string>

#include "files/files_fixture.hpp"
#include "files/fileutils.hpp"
#include "frame/state.hpp"
#include "support/test_support.hpp"

namespace orvo::files {
namespace {

using test::TraceCapture;

// Sets or clears an environment variable for the test's lifetime.
class ScopedEnv {
 public:
  ScopedEnv(const char* name, std::optional<std::string> value) : name_(name) {
    if (const char* old = std::getenv(name)) previous_ = old;
    if (value) {
      ::setenv(name, value->c_str(), 1);
    } else {
      ::unsetenv(name);
    }
  }
  ~ScopedEnv() {
    if (previous_) {
      ::setenv(name_, previous_->c_str(), 1);
    } else {
      ::unsetenv(name_);
    }
  }
  ScopedEnv(const ScopedEnv&) = delete;
  ScopedEnv& operator=(const ScopedEnv&) = delete;

 private:
  const char* name_;
  std::optional<std::string> previous_;
};

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
    const ScopedEnv env("TMPDIR", c.tmpdir);
    TraceCapture trace;
    EXPECT_EQ(TempDir(), c.expected) << c.tmpdir.value_or("(unset)");
    EXPECT_TRUE(trace.messages().empty());
  }
}

TEST_F(SystemDirs, AMissingTempDirFallsBackToTheApplicationsFolder) {
  ASSERT_TRUE(frame::StaticGlobals::instance().initialiseParentApp(fromUtf8(dir_.string()),
                                                                   u"model", u"model"));
  const ScopedEnv env("TMPDIR", (dir_ / "gone").string());
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
    const ScopedEnv env("ORVO_WINDIR", dir_.string());
    EXPECT_EQ(WinDir(), fromUtf8(dir_.string()));
  }
  {
    const ScopedEnv env("ORVO_WINDIR", std::nullopt);
    EXPECT_EQ(WinDir(), u"/etc");
  }
  {
    // The answer must fit the platform's 260-character buffer, terminator included.
    const ScopedEnv env("ORVO_WINDIR", "/" + std::string(259, 'w'));
    EXPECT_EQ(WinDir(), u"");
  }
  {
    const ScopedEnv env("ORVO_WINDIR", "/" + std::string(258, 'w'));
    EXPECT_EQ(WinDir().size(), 259U);
  }
}

}  // namespace
}  // namespace orvo::files
