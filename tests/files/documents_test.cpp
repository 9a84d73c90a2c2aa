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
  const String pdf = write("report.PDF", "x");
  const String txt = write("report.txt", "x");
  const String noAssociation =
      u"There is no application associated with the given file name extension.";
  const String viewerHint = u"\r\nYou need to install an Adobe Acrobat document viewer.";
  struct Case {
    int opener;  // exit status of the stand-in; -1 for no opener at all
    String document;
    String error;
  };
  const Case cases[] = {
      {-1, pdf, noAssociation + viewerHint},
      {-1, txt, noAssociation},
      {3, txt, noAssociation},
      {4, pdf, noAssociation + viewerHint},
      {2, txt, u"The specified file was not found."},
      {1, txt, u"An unrecognised error occurred."},
      {0, path("missing.txt"), u"The specified file was not found."},
      {0, path("nowhere/missing.txt"), u"The specified path was not found."},
  };
  for (const auto& c : cases) {
    std::filesystem::remove(dir_ / "bin" / "xdg-open");
    if (c.opener >= 0) installOpener(c.opener);
    for (const VBool passed : {VBool::False, VBool::True}) {
      const Outcome out = open(c.document, passed);
      EXPECT_EQ(out.success, passed) << c.opener;
      EXPECT_EQ(out.error, c.error) << c.opener << " " << test::show(c.document);
    }
  }
}

TEST(ShellErrorText, EveryCodeHasItsText) {
  EXPECT_EQ(shellErrorText(0, u"a"), u"The operating system is out of memory or resources.");
  EXPECT_EQ(shellErrorText(11, u"a"),
            u"The .exe file is invalid (non-Microsoft Win32 .exe or error in .exe image).");
  EXPECT_EQ(shellErrorText(30, u"a"),
            u"The Dynamic Data Exchange (DDE) transaction could not be completed because other "
            u"DDE transactions were being processed.");
  EXPECT_EQ(shellErrorText(32, u"a"), u"The specified dynamic-link library (DLL) was not found.");
  EXPECT_EQ(shellErrorText(31, u"C:\\x.pdf.txt"),
            u"There is no application associated with the given file name extension.");
  EXPECT_EQ(shellErrorText(9, u"a"), u"An unrecognised error occurred.");
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
