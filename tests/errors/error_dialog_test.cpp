#include "orvogeneric/error_dialog.hpp"

#include <gtest/gtest.h>

#include "support/test_support.hpp"

namespace orvo {
namespace {

constexpr ErrorDialogDesign kDesign{6000, 3000, 2400, 900};

TEST(ErrorDialogLayout, GrowthIsCappedAndTheFormIsCentred) {
  const TwipsRect screen{0, 0, 28800, 16200};
  const TwipsRect active{3000, 1500, 12000, 9000};
  struct Case {
    double textHeight;
    std::optional<TwipsRect> over;
    ErrorDialogLayout want;
  };
  const Case cases[] = {
      // One line needs less than the design: nothing moves; centred on the screen alone.
      {200, std::nullopt, {{11400, 6600, 6000, 3000}, 900, 2400}},
      {900, std::nullopt, {{11400, 6600, 6000, 3000}, 900, 2400}},
      {1500, std::nullopt, {{11400, 6300, 6000, 3600}, 1500, 3000}},
      // Several hundred lines: exactly 8000 twips more, and not a twip beyond.
      {8900, std::nullopt, {{11400, 2600, 6000, 11000}, 8900, 10400}},
      {60000, std::nullopt, {{11400, 2600, 6000, 11000}, 8900, 10400}},
      // Over an active window its position counts as well as its size.
      {900, active, {{6000, 4500, 6000, 3000}, 900, 2400}},
      {60000, active, {{6000, 500, 6000, 11000}, 8900, 10400}},
  };
  for (const auto& c : cases) {
    const auto got = layoutErrorDialog(kDesign, c.textHeight, c.over, screen);
    EXPECT_EQ(got.form, c.want.form) << c.textHeight << (c.over ? " over a window" : "");
    EXPECT_EQ(got.detailsHeight, c.want.detailsHeight) << c.textHeight;
    EXPECT_EQ(got.buttonTop, c.want.buttonTop) << c.textHeight;
  }
  // The screen's origin is not part of the centring.
  EXPECT_EQ(layoutErrorDialog(kDesign, 900, std::nullopt, {500, 500, 28800, 16200}).form.left,
            11400);
}

TEST(ErrorDialogPage, LinesMoveDownByTheirFontsHeightAndTheGaps) {
  const ErrorReportShown report{u"Disk full\r\nProcedure: Init\r\n\r\nlast",
                                u"24/11/2026 10:00:00"};
  // Heights a printer could report: distinct per font so that a wrong font shows.
  const auto height = [](bool bold, int points) { return points * 20.0 + (bold ? 7 : 0); };
  constexpr double m = 568.93;
  const std::vector<PrintedLine> want = {
      {u"ORVO Error Report", true, 18, m, m},
      {u"Date and time", true, 12, m, m + 367 + m},
      {u"Error occurred at 24/11/2026 10:00:00", false, 12, m, m + 367 + m + 247},
      {u"Details", true, 12, m, m + 367 + m + 247 + 240 + m},
      {u"Disk full", false, 12, m, m + 367 + m + 247 + 240 + m + 247},
      {u"Procedure: Init", false, 12, m, m + 367 + m + 247 + 240 + m + 247 + 240},
      {u"", false, 12, m, m + 367 + m + 247 + 240 + m + 247 + 480},
      {u"last", false, 12, m, m + 367 + m + 247 + 240 + m + 247 + 720},
  };
  const auto page = errorReportPage(report, height);
  ASSERT_EQ(page.size(), want.size());
  for (std::size_t i = 0; i < want.size(); ++i) {
    EXPECT_EQ(test::show(page[i].text), test::show(want[i].text)) << "line " << i;
    EXPECT_EQ(page[i].bold, want[i].bold) << "line " << i;
    EXPECT_EQ(page[i].pointSize, want[i].pointSize) << "line " << i;
    EXPECT_DOUBLE_EQ(page[i].left, want[i].left) << "line " << i;
    EXPECT_NEAR(page[i].top, want[i].top, 1e-9) << "line " << i;
  }
}

TEST(ErrorDialogText, CaptionsAndTheCopiedText) {
  const auto captions = errorDialogCaptions();
  EXPECT_EQ(captions.title, u"Error");
  EXPECT_EQ(captions.ok, u"OK");
  EXPECT_EQ(captions.sysInfo, u"&System Info...");
  EXPECT_EQ(captions.copy, u"&Copy");
  EXPECT_EQ(captions.print, u"&Print...");
  EXPECT_EQ(captions.email, u"&Email");
  EXPECT_EQ(errorReportClipboardText({u"a\r\nb", u"1/2/2026 3:04:05 PM"}),
            u"1/2/2026 3:04:05 PM\r\na\r\nb");
}

}  // namespace
}  // namespace orvo
