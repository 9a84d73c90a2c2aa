#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "frame/trace.hpp"
#include "orvogeneric/automation.hpp"
#include "orvogeneric/classes.hpp"
#include "orvogeneric/desktop.hpp"
#include "orvogeneric/rect_record.hpp"

namespace orvo {
namespace {

struct Window {
  String title;
  String className;
  WindowHandle owner = 0;
  bool visible = true;
  bool iconic = false;
  bool zoomed = false;
  std::int64_t process = 1;
};

// A desktop of windows in memory, topmost first, that records what was asked of it.
class Screen final : public Desktop {
 public:
  std::vector<std::pair<WindowHandle, Window>> windows;
  WindowHandle active = 0;
  std::optional<RECT> monitor;
  std::optional<RECT> primary;
  RECT screens{0, 0, 1920, 1080};
  TwipsPerPixel twips;
  std::vector<std::string> calls;

  const Window* find(WindowHandle w) const {
    for (const auto& [h, window] : windows) {
      if (h == w) return &window;
    }
    return nullptr;
  }
  std::vector<WindowHandle> topLevelWindows() override {
    std::vector<WindowHandle> out;
    for (const auto& entry : windows) out.push_back(entry.first);
    return out;
  }
  bool isWindowVisible(WindowHandle w) override { return find(w) != nullptr && find(w)->visible; }
  String windowTitle(WindowHandle w) override { return find(w) ? find(w)->title : String(); }
  String windowClassName(WindowHandle w) override {
    return find(w) ? find(w)->className : String();
  }
  WindowHandle windowOwner(WindowHandle w) override { return find(w) ? find(w)->owner : 0; }
  WindowHandle foregroundWindow() override { return active; }
  std::int64_t windowOwnerId(WindowHandle w) override { return find(w) ? find(w)->process : 0; }
  std::int32_t activateWindow(WindowHandle w) override {
    calls.push_back("activate " + std::to_string(w));
    active = w;
    return 1;
  }
  std::int32_t showWindow(WindowHandle w, ShowCommand c) override {
    calls.push_back("show " + std::to_string(w) + " " + std::to_string(static_cast<int>(c)));
    return 24;
  }
  std::int32_t raiseWindow(WindowHandle w) override {
    calls.push_back("raise " + std::to_string(w));
    return 1;
  }
  bool isIconic(WindowHandle w) override { return find(w) != nullptr && find(w)->iconic; }
  bool isZoomed(WindowHandle w) override { return find(w) != nullptr && find(w)->zoomed; }
  RECT virtualScreen() override { return screens; }
  std::optional<RECT> monitorWorkArea(WindowHandle) override { return monitor; }
  std::optional<RECT> primaryWorkArea() override { return primary; }
  TwipsPerPixel twipsPerPixel() override { return twips; }
};

class WindowUtilities : public ::testing::Test {
 protected:
  void SetUp() override {
    previous_ = setDesktop(screen_);
    previousSink_ = frame::setTraceSink([this](std::u16string_view, std::u16string_view message) {
      traced_.push_back(toUtf8(message));
    });
    screen_->windows = {
        {10, {u"Hidden tool", u"", 0, false}},
        {11, {u"", u"Untitled"}},
        {12, {u"Find - dialog", u"", 13}},
        {13, {u"Untitled - Notepad", u"Notepad"}},
        {14, {u"NOTEPAD", u"Notepad", 0, true, false, false, 2}},
    };
  }
  void TearDown() override {
    frame::setTraceSink(previousSink_);
    setDesktop(previous_);
  }
  std::shared_ptr<Screen> screen_ = std::make_shared<Screen>();
  std::shared_ptr<Desktop> previous_;
  frame::TraceSink previousSink_;
  std::vector<std::string> traced_;
  VisualUtilities visual_;
};

TEST_F(WindowUtilities, FindWindowTakesTheFirstVisibleTitledOwnerlessMatch) {
  struct Case {
    const char* name;
    String partial;
    std::int32_t method;
    std::int32_t found;
    String fullTitle;  // after the call; it starts as "keep"
  };
  const std::vector<Case> cases = {
      {"empty start: the first candidate", u"", FW_STARTSWITH, 13, u"Untitled - Notepad"},
      {"start, any case", u"untitled", FW_STARTSWITH, 13, u"Untitled - Notepad"},
      {"contained", u"PAD", FW_CONTAINS, 13, u"Untitled - Notepad"},
      {"whole title, any case", u"notepad", FW_FULL, 14, u"NOTEPAD"},
      {"an owned window is no candidate", u"Find", FW_STARTSWITH, 0, u"keep"},
      {"a hidden window is no candidate", u"Hidden", FW_STARTSWITH, 0, u"keep"},
      {"no VB6 main window of that title", u"App", FW_FULLVB6APPTITLE, 0, u""},
      {"an unknown method matches nothing", u"", 7, 0, u"keep"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    String full = u"keep";
    EXPECT_EQ(visual_.FindWindow(c.partial, static_cast<enumFindWindow>(c.method), &full), c.found);
    EXPECT_EQ(full, c.fullTitle);
  }
  traced_.clear();
  visual_.FindWindow(u"notepad", FW_FULL);
  EXPECT_EQ(traced_, (std::vector<std::string>{
                         "FindWindow: searching for 'notepad' as the full Window title",
                         "FindWindow title 'NOTEPAD', hWnd = 14"}));
}

TEST_F(WindowUtilities, BringingToTheFrontLogsEveryStep) {
  struct Case {
    const char* name;
    WindowHandle active;
    WindowHandle target;
    std::vector<std::string> calls;
    std::vector<std::string> middle;  // the trace between the foreground tests
  };
  const std::vector<Case> cases = {
      {"already in front",
       13,
       13,
       {"raise 13"},
       {"BringWindowToFront: hWnd is same as GetForegroundWindow; doing nothing more"}},
      {"another program's window in front",
       14,
       13,
       {"activate 13", "show 13 5", "raise 13"},
       {"BringWindowToFront: ThreadID1 = 2", "BringWindowToFront: ThreadID2 = 1",
        "BringWindowToFront: AttachThreadInput (True), nRet = 1",
        "BringWindowToFront: SetForegroundWindow, nRet = 1",
        "BringWindowToFront: ShowWindow(hWnd, SW_SHOW), nRet = 24"}},
      {"the same program's window in front",
       11,
       13,
       {"activate 13", "show 13 5", "raise 13"},
       {"BringWindowToFront: ThreadID1 = 1", "BringWindowToFront: ThreadID2 = 1",
        "BringWindowToFront: ShowWindow(hWnd, SW_SHOW), nRet = 24"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    screen_->active = c.active;
    screen_->calls.clear();
    traced_.clear();
    visual_.BringWindowToFront(c.target);
    EXPECT_EQ(screen_->calls, c.calls);
    std::vector<std::string> want = {
        "BringWindowToFront: start of routine-----------------------------------------",
        "BringWindowToFront: Testing GetForegroundWindow(), hWnd = " + std::to_string(c.active)};
    want.insert(want.end(), c.middle.begin(), c.middle.end());
    want.push_back("BringWindowToFront: BringWindowToTop, nRet = 1");
    want.push_back("BringWindowToFront: Testing GetForegroundWindow(), hWnd = " +
                   std::to_string(screen_->active));
    want.push_back("BringWindowToFront: end  of routine-----------------------------------------");
    EXPECT_EQ(traced_, want);
  }
}

TEST_F(WindowUtilities, OnlyAMinimisedWindowIsRestored) {
  screen_->windows[3].second.iconic = true;
  screen_->windows[4].second.zoomed = true;
  const std::map<WindowHandle, std::vector<std::string>> expected = {
      {13,
       {"RestoreWindow: Window is iconic",
        "RestoreWindow: ShowWindow(hWnd, SW_RESTORE), nRet = 24"}},
      {14, {"RestoreWindow: Window is maximised"}},
      {11, {"RestoreWindow: Window is normal"}},
      {0, {}},
  };
  for (const auto& [window, lines] : expected) {
    traced_.clear();
    screen_->calls.clear();
    visual_.RestoreWindow(window);
    EXPECT_EQ(traced_, lines) << window;
    EXPECT_EQ(screen_->calls.size(), window == 13 ? 1U : 0U) << window;
  }
}

TEST_F(WindowUtilities, TheWorkAreaIsInTwipsInsideTheScreens) {
  struct Case {
    const char* name;
    std::optional<RECT> monitor;
    std::optional<RECT> primary;
    WindowHandle window;
    TwipsPerPixel twips;
    RECT want;
    std::vector<std::string> problems;
  };
  const std::vector<Case> cases = {
      {"the monitor of a window",
       RECT{0, 0, 1920, 1040},
       RECT{1, 1, 2, 2},
       13,
       {15, 15},
       RECT{0, 0, 28800, 15600},
       {}},
      {"the primary for no window",
       RECT{1, 1, 2, 2},
       RECT{0, 0, 1920, 1040},
       0,
       {15, 15},
       RECT{0, 0, 28800, 15600},
       {"GetWorkAreaTwips: PROBLEM - apiMonitorFromWindow failed"}},
      {"clamped to the screens, 120 dpi",
       RECT{-10, 20, 3000, 1100},
       {},
       13,
       {12, 12},
       RECT{0, 240, 23040, 12960},
       {}},
      {"halves to even", RECT{1, 3, 5, 7}, {}, 13, {0.5, 2.5}, RECT{0, 8, 2, 18}, {}},
      {"nothing known",
       {},
       {},
       13,
       {15, 15},
       RECT{0, 0, 0, 0},
       {"GetWorkAreaTwips: PROBLEM - apiMonitorFromWindow failed",
        "GetWorkAreaTwips: PROBLEM - SystemParametersInfo failed"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    screen_->monitor = c.monitor;
    screen_->primary = c.primary;
    screen_->twips = c.twips;
    traced_.clear();
    RECT got{9, 9, 9, 9};
    visual_.GetWorkArea(got, c.window);
    EXPECT_EQ(got, c.want);
    EXPECT_EQ(traced_, c.problems);
  }
}

TEST_F(WindowUtilities, TheTopLevelWindowFollowsOwnersAndSurvivesALoop) {
  screen_->windows.push_back({20, {u"a", u"", 21}});
  screen_->windows.push_back({21, {u"b", u"", 20}});
  EXPECT_EQ(visual_.GetTopLevelWindow(12), 13);
  EXPECT_EQ(visual_.GetTopLevelWindow(13), 13);
  const std::int32_t inLoop = visual_.GetTopLevelWindow(20);
  EXPECT_TRUE(inLoop == 20 || inLoop == 21);
}

TEST_F(WindowUtilities, ARectTravelsByReferenceThroughLateBinding) {
  screen_->primary = RECT{0, 0, 100, 50};
  std::vector<Variant> args = {Variant(std::shared_ptr<Object>(std::make_shared<RectRecord>()))};
  const auto* cls = automation::findClass("VisualUtilities");
  ASSERT_NE(cls, nullptr);
  const auto* member =
      automation::findMember(*cls, "GetWorkAreaTwips", automation::MemberKind::Method);
  ASSERT_NE(member, nullptr);
  VisualUtilities target;
  member->invoke(target, args);
  const auto* record = dynamic_cast<const RectRecord*>(args[0].object()->get());
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(record->value, (RECT{0, 0, 1500, 750}));
}

}  // namespace
}  // namespace orvo
