#include "platform/process.hpp"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "orvogeneric/types.hpp"
#include "platform/file.hpp"
#include "support/test_support.hpp"

namespace orvo::platform {
namespace {

// Names unique to this run, so that parallel test runs never meet.
String unique(std::u16string_view text) {
  return String(text) + u"." + fromUtf8(std::to_string(::getpid()));
}

const String kLong(300, u'x');

struct NamePair {
  String first;
  String second;
};

TEST(NamedMutexTest, DistinctNamesNeverShareALock) {
  const NamePair cases[] = {
      {u"\xD800", u"\xFFFD"},
      {u"\xDFFF", u"\xFFFD"},
      {u"\xD800", u"\xDFFF"},
      {u"a b", u"a%20b"},
      {u"a%0020b", u"a b"},
      {u"Global\\g", u"g"},
      {u"local\\l", u"l"},
      {u"GLOBAL\\G", u"Global\\G"},
      {u"Session\\1\\s", u"s"},
      {kLong + u"1", kLong + u"2"},
      {String(197, u'y'), String(198, u'y')},
      {String(198, u'y'), String(199, u'y')},
      {kLong, kLong.substr(0, 198) + u"/" + kLong.substr(198)},
  };
  for (const auto& c : cases) {
    const String a = unique(c.first);
    const String b = unique(c.second);
    std::uint32_t error = 0;
    const std::int32_t held = createNamedMutex(a, error);
    ASSERT_NE(held, 0) << test::show(a) << " error " << error;
    EXPECT_FALSE(namedMutexHeld(b, error)) << test::show(a) << " / " << test::show(b);
    const std::int32_t other = createNamedMutex(b, error);
    EXPECT_NE(other, 0) << test::show(a) << " / " << test::show(b) << " error " << error;
    if (other != 0) ::close(other);
    ::close(held);
  }
}

TEST(NamedMutexTest, OneNameInEveryNamespaceSpelling) {
  const NamePair cases[] = {
      {u"Local\\same", u"same"},
      {u"same", u"Local\\same"},
      {u"Global\\machine", u"Global\\machine"},
      {u"Global\\" + kLong, u"Global\\" + kLong},
      {u"Local\\" + kLong, kLong},
      {u"\xD800", u"\xD800"},
  };
  for (const auto& c : cases) {
    // The prefix comes before the run's own suffix, as a caller writes it.
    const String a = unique(c.first);
    const String b = unique(c.second);
    std::uint32_t error = 0;
    const std::int32_t held = createNamedMutex(a, error);
    ASSERT_NE(held, 0) << test::show(a) << " error " << error;
    EXPECT_TRUE(namedMutexHeld(b, error)) << test::show(a) << " / " << test::show(b);
    const std::int32_t second = createNamedMutex(b, error);
    EXPECT_EQ(second, 0) << test::show(a) << " / " << test::show(b);
    EXPECT_EQ(error, kErrorAlreadyExists) << test::show(b);
    if (second != 0) ::close(second);
    ::close(held);
    EXPECT_FALSE(namedMutexHeld(b, error)) << test::show(b) << " released";
  }
}

TEST(NamedMutexTest, MachineWideNamesOpenForEveryUser) {
  const struct {
    String name;
    mode_t mode;
  } cases[] = {
      {u"Global\\perm", 0666},
      {u"Global\\" + kLong, 0666},
      {u"Local\\perm", 0600},
      {u"perm", 0600},
  };
  const mode_t saved = ::umask(077);
  for (const auto& c : cases) {
    std::uint32_t error = 0;
    const std::int32_t handle = createNamedMutex(unique(c.name), error);
    ASSERT_NE(handle, 0) << test::show(c.name) << " error " << error;
    struct stat st {};
    ASSERT_EQ(::fstat(handle, &st), 0);
    EXPECT_EQ(st.st_mode & 0777, c.mode) << test::show(c.name);
    ::close(handle);
  }
  ::umask(saved);
}

}  // namespace
}  // namespace orvo::platform
