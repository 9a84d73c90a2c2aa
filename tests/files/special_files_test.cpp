#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>

#include "files/files_fixture.hpp"
#include "files/log.hpp"
#include "files/textfiles.hpp"
#include "frame/parent_app.hpp"
#include "frame/state.hpp"
#include "orvogeneric/classes.hpp"
#include "orvogeneric/error.hpp"
#include "orvogeneric/system_errors.hpp"
#include "platform/last_error.hpp"
#include "resources/satellite_loader.hpp"
#include "support/time_limit.hpp"

namespace orvo::test {
namespace {

// The error number a call raised, 0 when it returned.
std::int64_t raised(const std::function<void()>& call) {
  try {
    call();
  } catch (const Error& e) {
    return e.number();
  }
  return 0;
}

// Names that are not files (a FIFO nobody writes, a device without end, a directory) answer at
// once with the member's own failure, and leave no lock behind that would stop the next call.
class SpecialFiles : public FilesTest {
 protected:
  void SetUp() override {
    FilesTest::SetUp();
    ASSERT_EQ(::mkfifo((dir_ / "fifo").c_str(), 0600), 0);
    std::filesystem::create_directory(dir_ / "folder");
  }
  void TearDown() override {
    frame::StaticGlobals::instance().resetForTesting();
    FilesTest::TearDown();
  }
};

TEST_F(SpecialFiles, MembersAnswerAtOnce) {
  struct Case {
    const char* what;
    std::function<std::int64_t(const String&)> call;
    std::int64_t fifo, device, folder;  // what the member answers for each kind of name
  };
  INI ini;
  const Case cases[] = {
      // A folder does not exist as a file for these members: nothing to count or read.
      {"FileLineCount", [](const String& p) { return raised([&] { files::FileLineCount(p); }); },
       45602, 45602, 0},
      {"ReadTextFileToStringB",
       [](const String& p) { return raised([&] { files::ReadTextFileToStringB(p); }); }, 70, 70,
       53},
      {"ReadFileToByteArray",
       [](const String& p) { return raised([&] { files::ReadFileToByteArray(p); }); }, 75, 75, 53},
      {"GetStringFromINI (the default's length)",
       [&](const String& p) {
         return static_cast<std::int64_t>(ini.GetStringFromINI(p, u"S", u"K", u"dflt").size());
       },
       4, 4, 4},
      {"PutStringToINI",
       [&](const String& p) {
         return static_cast<std::int64_t>(ini.PutStringToINI(p, u"S", u"K", u"v"));
       },
       0, 0, 0},
      {"loadSatellite",
       [](const String& p) {
         return static_cast<std::int64_t>(resources::loadSatellite(p) != nullptr);
       },
       0, 0, 0},
  };
  for (const auto& c : cases) {
    const std::pair<String, std::int64_t> names[] = {
        {path("fifo"), c.fifo}, {u"/dev/zero", c.device}, {path("folder"), c.folder}};
    for (const auto& [name, expected] : names) {
      const auto answer = answerWithin(5000, [&] { return c.call(name); });
      ASSERT_TRUE(answer.has_value()) << c.what << " on " << toUtf8(name) << " did not return";
      EXPECT_EQ(*answer, expected) << c.what << " on " << toUtf8(name);
    }
  }
}

TEST_F(SpecialFiles, AFailedSettingsWriteReleasesTheDirectory) {
  INI ini;
  const auto answer = answerWithin(5000, [&] {
    ini.PutStringToINI(path("fifo"), u"S", u"K", u"v");
    return static_cast<std::int64_t>(ini.PutStringToINI(path("other.ini"), u"S", u"K", u"v"));
  });
  ASSERT_TRUE(answer.has_value());
  EXPECT_EQ(*answer, static_cast<std::int64_t>(VBool::True));
}

TEST_F(SpecialFiles, ALogThatIsAFifoIsNotWritten) {
  ASSERT_EQ(::mkfifo((dir_ / "Model.log").c_str(), 0600), 0);
  const auto answer = answerWithin(5000, [&] {
    frame::InitialiseParentAppProperties(fromUtf8(dir_.string()), u"Model");
    files::AddToLogB_File(u"message", u"", 0, VBool::False);
    return static_cast<std::int64_t>(platform::lastError());
  });
  ASSERT_TRUE(answer.has_value()) << "the log write did not return";
  EXPECT_EQ(*answer, static_cast<std::int64_t>(kErrorAccessDenied))
      << "a FIFO is refused as the open refuses it";
}

// A file whose size says nothing of its content (the kernel's files report 0) is read to its end,
// as any file is, rather than to the size taken before the read.
TEST_F(SpecialFiles, FilesAreReadToTheirEndWhateverTheirSizeSaid) {
  std::ifstream in("/proc/version", std::ios::binary);
  const std::string content{std::istreambuf_iterator<char>(in), {}};
  ASSERT_FALSE(content.empty());
  EXPECT_EQ(toUtf8(files::ReadTextFileToStringB(u"/proc/version")), content);
  const Variant bytes = files::ReadFileToByteArray(u"/proc/version");
  ASSERT_NE(bytes.array(), nullptr);
  const auto span = bytes.array()->bytes();
  EXPECT_EQ(std::string(span.begin(), span.end()), content);
}

}  // namespace
}  // namespace orvo::test
