#include "platform/replacement.hpp"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "files/files_fixture.hpp"
#include "platform/file.hpp"
#include "support/time_limit.hpp"

namespace orvo::platform {
namespace {

namespace fs = std::filesystem;

constexpr uid_t kNobody = 65534;

class ReplacementTest : public test::FilesTestWithUmask {
 protected:
  // Writes the text as the new version of the file; the Windows error number, 0 on success.
  static std::uint32_t replace(const fs::path& file, const std::string& text, bool commit = true) {
    Replacement r;
    std::uint32_t error = 0;
    if (!r.begin(NativePath(fromUtf8(file.string())), error)) return error;
    if (!r.write({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}, error)) {
      return error;
    }
    return commit && !r.commit(error) ? error : 0;
  }
  static mode_t mode(const fs::path& p) {
    struct stat st {};
    ::stat(p.c_str(), &st);
    return st.st_mode & 07777;
  }
  static ino_t inode(const fs::path& p) {
    struct stat st {};
    ::stat(p.c_str(), &st);
    return st.st_ino;
  }
  // Nothing but the named entries is left in the directory: no temporary file.
  [[nodiscard]] std::size_t entries() const {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(dir_), {}));
  }
};

TEST_F(ReplacementTest, NewAndExistingFiles) {
  // A new file takes 0666 less the umask.
  EXPECT_EQ(replace(dir_ / "new.ini", "fresh"), 0U);
  EXPECT_EQ(read("new.ini"), "fresh");
  EXPECT_EQ(mode(dir_ / "new.ini"), 0644U);
  // An existing one keeps its permission bits and is replaced, not rewritten.
  write("old.ini", "old content that is longer");
  fs::permissions(dir_ / "old.ini", fs::perms(0640));
  const ino_t before = inode(dir_ / "old.ini");
  EXPECT_EQ(replace(dir_ / "old.ini", "new"), 0U);
  EXPECT_EQ(read("old.ini"), "new");
  EXPECT_EQ(mode(dir_ / "old.ini"), 0640U);
  EXPECT_NE(inode(dir_ / "old.ini"), before);
  // A link is written through and stays a link.
  fs::create_symlink("old.ini", dir_ / "link.ini");
  EXPECT_EQ(replace(dir_ / "link.ini", "through"), 0U);
  EXPECT_TRUE(fs::is_symlink(dir_ / "link.ini"));
  EXPECT_EQ(read("old.ini"), "through");
  EXPECT_EQ(entries(), 3U);
}

TEST_F(ReplacementTest, RefusalsLeaveEverythingAsItWas) {
  write("readonly.ini", "kept");
  fs::permissions(dir_ / "readonly.ini", fs::perms(0444));
  fs::create_directory(dir_ / "folder.ini");
  ::mkfifo((dir_ / "fifo.ini").c_str(), 0600);
  write("uncommitted.ini", "kept");
  struct Case {
    const char* name;
    std::uint32_t error;
  };
  // The read-only attribute is refused to every caller, as the platform refuses it.
  const Case cases[] = {{"readonly.ini", kErrorAccessDenied},
                        {"folder.ini", kErrorAccessDenied},
                        {"fifo.ini", kErrorAccessDenied},
                        {"missing/x.ini", kErrorPathNotFound}};
  for (const auto& c : cases) {
    EXPECT_EQ(replace(dir_ / c.name, "new"), c.error) << c.name;
  }
  EXPECT_EQ(replace(dir_ / "uncommitted.ini", "new", false), 0U);
  EXPECT_EQ(read("readonly.ini"), "kept");
  EXPECT_EQ(read("uncommitted.ini"), "kept");
  EXPECT_EQ(entries(), 4U);
}

TEST_F(ReplacementTest, StaleTemporaryFilesAreRemovedButNotDirectoriesOrOtherFiles) {
  write(".~orvoabcdefghij", "left by a killed writer");
  fs::create_symlink("victim", dir_ / ".~orvo0123456789");
  fs::create_directory(dir_ / ".~orvozzzzzzzzzz");
  write(".~orvoshort", "not one of ours");
  write("victim", "kept");
  removeStaleReplacements(NativePath(fromUtf8((dir_ / "s.ini").string())));
  EXPECT_FALSE(fs::exists(dir_ / ".~orvoabcdefghij"));
  EXPECT_FALSE(fs::is_symlink(dir_ / ".~orvo0123456789"));
  EXPECT_TRUE(fs::is_directory(dir_ / ".~orvozzzzzzzzzz"));
  EXPECT_TRUE(fs::exists(dir_ / ".~orvoshort"));
  EXPECT_EQ(read("victim"), "kept");
}

// Another user's view: a file that user may write in a directory it may not is written in
// place; a file it may not write is refused even where the directory would let it replace it;
// a file of another owner that this process may write keeps its owner.
TEST_F(ReplacementTest, OwnersAndPermissionsOfOtherUsers) {
  if (::geteuid() != 0) GTEST_SKIP() << "needs root to act as another user";
  fs::permissions(dir_, fs::perms(0755));
  write("theirs.ini", "old");
  ASSERT_EQ(::chown((dir_ / "theirs.ini").c_str(), kNobody, kNobody), 0);
  fs::create_directory(dir_ / "open");
  fs::permissions(dir_ / "open", fs::perms(0777));
  std::ofstream(dir_ / "open" / "root.ini") << "root's";
  const ino_t before = inode(dir_ / "theirs.ini");
  const auto asNobody = [&](const fs::path& file) {
    return test::answerWithin(5000, [&]() -> std::int64_t {
      if (::setgid(kNobody) != 0 || ::setuid(kNobody) != 0) return -1;
      return replace(file, "new");
    });
  };
  EXPECT_EQ(asNobody(dir_ / "theirs.ini"), 0);
  EXPECT_EQ(read("theirs.ini"), "new");
  EXPECT_EQ(inode(dir_ / "theirs.ini"), before);
  EXPECT_EQ(asNobody(dir_ / "open" / "root.ini"), static_cast<std::int64_t>(kErrorAccessDenied));
  EXPECT_EQ(read("open/root.ini"), "root's");
  // This process (root) replaces the other user's file and hands it back to its owner.
  EXPECT_EQ(replace(dir_ / "theirs.ini", "again"), 0U);
  struct stat st {};
  ::stat((dir_ / "theirs.ini").c_str(), &st);
  EXPECT_EQ(st.st_uid, kNobody);
  EXPECT_EQ(st.st_gid, kNobody);
}

}  // namespace
}  // namespace orvo::platform
