#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "files/files_fixture.hpp"
#include "files/fileutils.hpp"
#include "orvogeneric/user_interface.hpp"
#include "support/test_support.hpp"

namespace orvo::files {
namespace {

using test::TraceCapture;

// PATH points at a scratch folder holding a stand-in for the desktop's opener, which records
// its arguments and exits with the status it is given.
class OpenDocumentTest : public test::FilesTest {
 protected:
  void SetUp() override {
    FilesTest::SetUp();
    std::filesystem::create_directory(dir_ / "bin");
    path_.emplace("PATH", (dir_ / "bin").c_str());
  }
  void TearDown() override {
    path_.reset();
    FilesTest::TearDown();
  }
  void installOpener(int status) {
    const auto opener = dir_ / "bin" / "xdg-open";
    write("bin/xdg-open", "#!/bin/sh\nprintf '%s|' \"$@\" > '" + (dir_ / "args").string() +
                              "'\nexit " + std::to_string(status) + "\n");
    std::filesystem::permissions(opener, std::filesystem::perms::owner_all);
  }
  struct Outcome {
    VBool success;
    String error;
  };
  Outcome open(const String& document, VBool passed = VBool::False) {
    Outcome out{passed, u"untouched"};
    OpenDocument(document, 0, out.success, out.error);
    return out;
  }
  std::optional<test::ScopedEnvironment> path_;
};

TEST_F(OpenDocumentTest, TheOpenerGetsTheDocumentAsOneArgument) {
  installOpener(0);
  const String document = write("my report's copy.txt", "x");
  const Outcome out = open(document);
  EXPECT_EQ(out.success, VBool::True);
  EXPECT_EQ(out.error, u"untouched");
  EXPECT_EQ(read("args"), (dir_ / "my report's copy.txt").string() + "|");
}

TEST_F(OpenDocumentTest, FailuresSetTheErrorTextAndLeaveSuccessAlone) {
  write("report.PDF", "x");
  write("report.txt", "x");
  for (const auto& row : test::readTestData("files/open_document.tsv", 3)) {
    SCOPED_TRACE("data line " + std::to_string(row.line));
    const auto opener = test::integerOf(row.fields[0]);
    std::filesystem::remove(dir_ / "bin" / "xdg-open");
    if (opener >= 0) installOpener(static_cast<int>(opener));
    for (const VBool passed : {VBool::False, VBool::True}) {
      const Outcome out = open(inScratch(row.fields[1]), passed);
      EXPECT_EQ(out.success, passed);
      EXPECT_EQ(out.error, row.fields[2]);
    }
  }
}

TEST(ShellErrorText, EveryCodeHasItsText) {
  for (const auto& row : test::readTestData("files/shell_errors.tsv", 3)) {
    SCOPED_TRACE("data line " + std::to_string(row.line));
    EXPECT_EQ(shellErrorText(test::integerOf(row.fields[0]), row.fields[1]), row.fields[2]);
  }
}

class RecordingCompletion final : public UserInterface {
 public:
  explicit RecordingCompletion(std::int32_t answer) : answer_(answer) {}
  MsgBoxResult messageBox(std::u16string_view, std::u16string_view, std::int32_t) override {
    return vbOK;
  }
  void beep() override {}
  std::int32_t autoCompleteFilePaths(std::int32_t hwnd, std::int32_t flags) override {
    calls.emplace_back(hwnd, flags);
    return answer_;
  }
  std::vector<std::pair<std::int32_t, std::int32_t>> calls;

 private:
  std::int32_t answer_;
};

TEST(AutocompleteFilePaths, GoesToTheUserInterfaceAndTracesAFailure) {
  for (const std::int32_t answer : {0, 1, -2147467259}) {
    auto ui = std::make_shared<RecordingCompletion>(answer);
    const auto previous = setUserInterface(ui);
    TraceCapture trace;
    AutocompleteFilePaths(4242);
    setUserInterface(previous);
    EXPECT_EQ(ui->calls, (std::vector<std::pair<std::int32_t, std::int32_t>>{{4242, 1}}));
    if (answer < 0) {
      EXPECT_EQ(trace.messages(),
                (std::vector<String>{u"SHAutoComplete(4242, 1) failed. Return code -2147467259"}));
    } else {
      EXPECT_TRUE(trace.messages().empty()) << answer;
    }
  }
  TraceCapture trace;
  AutocompleteFilePaths(1);  // no desktop: nothing happens, nothing is reported
  EXPECT_TRUE(trace.messages().empty());
}

}  // namespace
}  // namespace orvo::files
