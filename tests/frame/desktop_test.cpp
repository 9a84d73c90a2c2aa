#include "orvogeneric/desktop.hpp"

#include <gtest/gtest.h>

#include "system/processes.hpp"

namespace orvo {
namespace {

TEST(DesktopSeam, WithoutADesktopNothingIsThere) {
  const auto previous = setDesktop(nullptr);
  const auto none = desktop();
  EXPECT_TRUE(none->topLevelWindows().empty());
  EXPECT_EQ(none->foregroundWindow(), 0);
  EXPECT_FALSE(none->isWindowVisible(1));
  EXPECT_EQ(none->activateWindow(1), 0) << "the trace shows a failed step";
  EXPECT_FALSE(none->primaryWorkArea().has_value());
  EXPECT_FALSE(none->clipboardText().has_value());
  EXPECT_FALSE(none->setClipboardText(u"x"));
  EXPECT_EQ(none->twipsPerPixel().horizontal, 15.0);
  EXPECT_FALSE(none->isKeyDown(0x10));
  setDesktop(previous);
}

class ShiftHeld final : public Desktop {
 public:
  bool isKeyDown(std::int32_t key) override { return key == 0x10; }
};

TEST(DesktopSeam, TheKeyboardIsAskedThroughTheInstalledDesktop) {
  const auto previous = setDesktop(std::make_shared<ShiftHeld>());
  EXPECT_EQ(system::IsKeyDown(0x10), VBool::True);
  EXPECT_EQ(system::IsKeyDown(0x11), VBool::False);
  setDesktop(nullptr);
  EXPECT_EQ(system::IsKeyDown(0x10), VBool::False);
  setDesktop(previous);
}

}  // namespace
}  // namespace orvo
