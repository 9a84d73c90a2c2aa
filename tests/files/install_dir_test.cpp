#include <gtest/gtest.h>

#include "files/fileutils.hpp"
#include "frame/parent_app.hpp"
#include "frame/state.hpp"
#include "support/test_support.hpp"

namespace orvo::files {
namespace {

using test::show;

TEST(InstallDir, OneSeparatorStandsBetweenFolderAndRest) {
  for (const auto& row : test::readTestData("files/install_dir.tsv", 3)) {
    SCOPED_TRACE("data line " + std::to_string(row.line));
    EXPECT_EQ(show(ExpandInstallDir(row.fields[0], row.fields[1])), show(row.fields[2]));
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
