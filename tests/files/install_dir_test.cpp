#include <gtest/gtest.h>

#include "files/fileutils.hpp"
#include "frame/parent_app.hpp"
#include "frame/state.hpp"
#include "support/test_support.hpp"

namespace orvo::files {
namespace {

using test::show;

TEST(InstallDir, OneSeparatorStandsBetweenFolderAndRest) {
  struct Case {
    String path, installDir, expanded;
  };
  const Case cases[] = {
      {u"%installdir%\\data.csv", u"C:\\App\\", u"C:\\App\\data.csv"},
      {u"%InstallDir%data.csv", u"C:\\App\\", u"C:\\App\\data.csv"},
      {u"%InstallDir%data.csv", u"C:\\App", u"C:\\App\\data.csv"},
      {u"%INSTALLDIR%\\a;%installDir%b", u"C:\\App", u"C:\\App\\a;C:\\Appb"},  // decided once
      {u"%InstallDir%\\x", u"C:\\", u"C:\\x"},
      {u"%InstallDir%/data.csv", u"/opt/app/", u"/opt/app/data.csv"},
      {u"%InstallDir%data.csv", u"/opt/app", u"/opt/app/data.csv"},
      {u"C:\\data.csv", u"C:\\App", u"C:\\data.csv"},
      {u"%InstallDir", u"C:\\App", u"%InstallDir"},
      {u"", u"C:\\App", u""},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(ExpandInstallDir(c.path, c.installDir), c.expanded) << show(c.path);
  }
  EXPECT_EQ(gsINSTALL_DIR, u"%InstallDir%");
}

TEST(InstallDir, WithoutAFolderTheParentApplicationsIsUsed) {
  auto& globals = frame::StaticGlobals::instance();
  globals.resetForTesting();
  ASSERT_TRUE(globals.initialiseParentApp(u"/opt/model", u"model", u"model"));
  EXPECT_EQ(ExpandInstallDir(u"%InstallDir%/data.csv"), u"/opt/model/data.csv");
  EXPECT_EQ(ExpandInstallDir(u"%InstallDir%data.csv"), u"/opt/model/data.csv");
  globals.resetForTesting();
}

}  // namespace
}  // namespace orvo::files
