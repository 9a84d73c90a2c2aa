#include "frame/traps.hpp"

#include <gtest/gtest.h>
#include <unistd.h>

#include <memory>
#include <string>
#include <vector>

#include "frame/state.hpp"
#include "frame/trace.hpp"
#include "orvogeneric/classes.hpp"
#include "orvogeneric/user_interface.hpp"
#include "support/test_support.hpp"

namespace orvo {
namespace {

using test::show;
using test::TraceCapture;

class FrameTest : public ::testing::Test {
 protected:
  void SetUp() override { frame::StaticGlobals::instance().resetForTesting(); }
  void TearDown() override { frame::StaticGlobals::instance().resetForTesting(); }
};

int innermost() {
  return frame::trap(u"Innermost",
                     []() -> int { runtime::raise(runtime::errSubscriptOutOfRange); });
}
int middle() {
  return frame::trap(u"Middle", [] { return innermost(); });
}
int outer() {
  return frame::trap(u"Outer", [] { return middle(); });
}

TEST_F(FrameTest, ErrorThreeProceduresDeepKeepsNumberAndCollectsTheChain) {
  TraceCapture trace;
  const Error e = test::errorOf([] { outer(); });
  EXPECT_EQ(e.number(), 9);
  EXPECT_EQ(show(e.description()), show(u"Subscript out of range\r\nError handled by Innermost\r\n"
                                        u"Error handled by Middle\r\nError handled by Outer"));
  EXPECT_TRUE(e.source().empty());
  ASSERT_EQ(trace.messages().size(), 3U);
  EXPECT_EQ(show(trace.messages()[0]),
            show(u"Unexpected error (Innermost)\r\n9: Subscript out of range\r\n"
                 u"Error handled by Innermost"));
  EXPECT_EQ(show(trace.messages()[1]),
            show(u"Unexpected error (Middle)\r\n9: Subscript out of range\r\n"
                 u"Error handled by Innermost\r\nError handled by Middle"));
  EXPECT_EQ(trace.messages()[2].rfind(u"Unexpected error (Outer)\r\n9: ", 0), 0U);
}

TEST_F(FrameTest, LibraryErrorsAndForeignExceptionsSurfaceAsNumberedErrors) {
  struct Case {
    const char* name;
    std::function<void()> body;
    std::int32_t number;
    std::u16string_view description;
  };
  const std::vector<Case> cases = {
      {"library error", [] { frame::RaiseLibraryError(u"Cannot take the log of zero."); },
       -2147220991, u"Cannot take the log of zero.\r\nError handled by P"},
      {"out of memory", [] { throw std::bad_alloc(); }, 7, u"Out of memory\r\nError handled by P"},
      {"standard exception", [] { throw std::out_of_range("x"); }, 51,
       u"Internal error\r\nError handled by P"},
      {"negative number", [] { throw Error(-5, u"custom", u"src"); }, -5,
       u"custom\r\nError handled by P"},
  };
  for (const auto& c : cases) {
    const Error e = test::errorOf([&] { frame::trap(u"P", c.body); });
    EXPECT_EQ(e.number(), c.number) << c.name;
    EXPECT_EQ(show(e.description()), show(c.description)) << c.name;
    EXPECT_TRUE(e.source().empty()) << c.name << ": a re-raised error carries no source";
  }
}

TEST_F(FrameTest, MessageBoxFormShowsTheReportAndReturns) {
  const test::ScopedRecordingUserInterface ui;
  TraceCapture trace;
  const int result =
      frame::trapAndShow(u"KeyPress", 42, []() -> int { runtime::raise(runtime::errOverflow); });
  EXPECT_EQ(result, 42);
  ASSERT_EQ(ui->boxes.size(), 1U);
  EXPECT_EQ(show(ui->boxes[0].text),
            show(u"Unexpected error (KeyPress)\r\n6: Overflow\r\nError handled by KeyPress"));
  EXPECT_TRUE(ui->boxes[0].caption.empty());
  EXPECT_EQ(ui->boxes[0].style & 0xF0, vbCritical);
  EXPECT_EQ(trace.messages().size(), 1U);
}

TEST_F(FrameTest, ContextTrapExplainsUntranslatedFailuresOnly) {
  TraceCapture trace;
  const auto run = [](auto body) {
    return test::errorOf([&] {
      frame::contextTrap(u"sParentAppPath",
                         u"Unexpected error retrieving the parent application path", body);
    });
  };
  const Error untranslated = run([] { runtime::raise(runtime::errFileNotFound); });
  EXPECT_EQ(untranslated.number(), 53);
  EXPECT_EQ(show(untranslated.description()),
            show(u"Unexpected error retrieving the parent application path\r\n53: File not "
                 u"found\r\nsParentAppPath"));
  const Error library = run([] { frame::RaiseLibraryError(u"Already explained"); });
  EXPECT_EQ(show(library.description()), show(u"Already explained\r\nsParentAppPath"));
  EXPECT_TRUE(trace.messages().empty()) << "the context trap logs nothing";
}

TEST_F(FrameTest, TracePrefixIsModuleAndThreadInExactly25Characters) {
  TraceCapture trace;
  frame::LibraryTrace(u"hello");
  ASSERT_EQ(trace.prefixes().size(), 1U);
  const String& prefix = trace.prefixes()[0];
  EXPECT_EQ(prefix.size(), 25U);
  const auto blank = prefix.find(u' ');
  ASSERT_NE(blank, String::npos);
  EXPECT_EQ(prefix.substr(0, blank), u"orvo_tests");
  const String tid = fromUtf8(std::to_string(gettid()));
  EXPECT_EQ(prefix.substr(blank + 1, tid.size()), tid);
  EXPECT_EQ(trace.messages()[0], u"hello");
}

TEST_F(FrameTest, SuppressionLastsUntilAnINIObjectIsCreatedOrItIsLifted) {
  TraceCapture trace;
  INI ini;
  ini.SuppressORVOGenericLogging();  // the default suppresses
  frame::LibraryTrace(u"dropped 1");
  ini.SuppressORVOGenericLogging(VBool::False);
  frame::LibraryTrace(u"kept 1");
  ini.SuppressORVOGenericLogging(VBool::True);
  frame::StaticGlobals::instance().setEol(u"\n");
  frame::LibraryTrace(u"dropped 2");
  INI another;  // creation re-enables tracing and restores CR LF, deliberately
  frame::LibraryTrace(u"kept 2");
  EXPECT_EQ(trace.messages(), (std::vector<String>{u"kept 1", u"kept 2"}));
  EXPECT_EQ(frame::StaticGlobals::instance().eol(), u"\r\n");
}

}  // namespace
}  // namespace orvo
