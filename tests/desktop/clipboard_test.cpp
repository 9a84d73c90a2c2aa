#include "desktop/clipboard.hpp"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "files/files_fixture.hpp"
#include "orvogeneric/desktop.hpp"
#include "support/test_support.hpp"

namespace orvo::clipboard {
namespace {

// A clipboard in memory, as a desktop holds it; it can refuse to be opened.
class Clipboard final : public Desktop {
 public:
  std::optional<String> text;
  std::vector<String> written;
  bool refuses = false;
  std::optional<String> clipboardText() override { return text; }
  bool setClipboardText(std::u16string_view t) override {
    if (refuses) return false;
    written.emplace_back(t);
    text = String(t);
    return true;
  }
};

class ClipboardTest : public test::FilesTest {
 protected:
  void SetUp() override {
    test::FilesTest::SetUp();
    previous_ = setDesktop(clipboard_);
  }
  void TearDown() override {
    setDesktop(previous_);
    test::FilesTest::TearDown();
  }
  std::shared_ptr<Clipboard> clipboard_ = std::make_shared<Clipboard>();
  std::shared_ptr<Desktop> previous_;
};

TEST_F(ClipboardTest, TextGoesOnTheClipboardAfterItIsEmptied) {
  ClipboardSetText(u"one\r\ntwo");
  EXPECT_EQ(clipboard_->written, (std::vector<String>{u"", u"one\r\ntwo"}));
  EXPECT_EQ(ClipboardGetText(), u"one\r\ntwo");
  clipboard_->text.reset();
  EXPECT_EQ(ClipboardGetText(), u"") << "no text on the clipboard";
  clipboard_->refuses = true;
  EXPECT_EQ(test::errorOf([] { ClipboardSetText(u"x"); }).number(), 521);
}

// The clipboard's lines against real files and folders: "F" is an existing file, "D" an existing
// folder, "M" a missing file in an existing folder, "N" a path in no existing folder.
TEST_F(ClipboardTest, APathOfEachKindIsFoundAmongTheLines) {
  write("file.txt", "x");
  std::filesystem::create_directories(dir_ / "sub");
  const String file = path("file.txt");
  const String folder = path("sub");
  const String folderWithSeparator = folder + u"/";
  const String missing = path("sub/missing.txt");
  const String nowhere = path("none/none/x.txt");
  const String base = path("");  // the scratch folder, with its separator
  struct Case {
    const char* name;
    String clipboard;
    // GETPATH_PREFERFILEPATH, PATHANY, FILE, PATHNOFILE, PATHBADFILE
    std::vector<String> answers;
  };
  const std::vector<Case> cases = {
      {"a file", file, {file, base, file, u"", u""}},
      {"a folder",
       folder,
       {folderWithSeparator, folderWithSeparator, u"", folderWithSeparator, u""}},
      {"a missing file",
       missing,
       {folderWithSeparator, folderWithSeparator, u"", u"", folderWithSeparator}},
      {"nothing that exists", nowhere, {u"", u"", u"", u"", u""}},
      {"quoted, after a line of nothing",
       u"junk\r\n\"" + file + u"\"",
       {file, base, file, u"", u""}},
      {"the first of each kind wins",
       missing + u"\n" + folder + u"\r" + file,
       {file, folderWithSeparator, file, folderWithSeparator, folderWithSeparator}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    clipboard_->text = c.clipboard;
    for (std::int32_t search = 1; search <= 5; ++search) {
      EXPECT_EQ(GetPathFromClipboard(static_cast<enumGetPathFromClipboardSearch>(search)),
                c.answers[static_cast<std::size_t>(search - 1)])
          << "search " << search;
    }
  }
}

TEST_F(ClipboardTest, AnUnknownSearchIsAnErrorOnlyWhenThereIsTextToSearch) {
  clipboard_->text.reset();
  EXPECT_EQ(GetPathFromClipboard(static_cast<enumGetPathFromClipboardSearch>(9)), u"");
  clipboard_->text = u"anything";
  const Error e =
      test::errorOf([] { GetPathFromClipboard(static_cast<enumGetPathFromClipboardSearch>(9)); });
  EXPECT_EQ(e.description().substr(0, 70),
            u"Unrecognised value for nSearch: 9 is not a member of enumGetPathFromCl");
}

}  // namespace
}  // namespace orvo::clipboard
