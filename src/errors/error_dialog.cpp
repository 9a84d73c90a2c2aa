#include "orvogeneric/error_dialog.hpp"

#include <algorithm>
#include <array>

#include "orvogeneric/user_interface.hpp"
#include "platform/process.hpp"
#include "resources/catalogue.hpp"
#include "runtime/errors.hpp"
#include "runtime/strings.hpp"

namespace orvo {

namespace {

// The printed page's margin and the gap between its blocks: ten "millimetres" of 56.893 twips.
// A millimetre is 56.69 twips; the printed reports always used this factor, so it stays.
constexpr double kPageMargin = 10 * 56.893;
constexpr double kGrowthCap = 8000;

}  // namespace

ErrorDialogCaptions errorDialogCaptions() {
  return {resources::LibraryString(201), resources::LibraryString(202),
          resources::LibraryString(203), resources::LibraryString(204),
          resources::LibraryString(205), resources::LibraryString(206)};
}

ErrorDialogLayout layoutErrorDialog(const ErrorDialogDesign& design, double detailsTextHeight,
                                    const std::optional<TwipsRect>& activeWindow,
                                    const TwipsRect& screen) {
  ErrorDialogLayout layout;
  layout.form.width = design.formWidth;
  layout.form.height = design.formHeight;
  layout.detailsHeight = std::max(design.detailsHeight, detailsTextHeight);
  layout.buttonTop = design.buttonTop;
  const double growth = std::min(detailsTextHeight - design.detailsHeight, kGrowthCap);
  if (growth > 0) {
    layout.detailsHeight = design.detailsHeight + growth;
    layout.form.height += growth;
    layout.buttonTop += growth;
  }
  const TwipsRect& over = activeWindow ? *activeWindow : screen;
  // The screen's own origin is not added: the forms were centred on the screen's size alone.
  const double originLeft = activeWindow ? over.left : 0;
  const double originTop = activeWindow ? over.top : 0;
  layout.form.left = originLeft + (over.width - layout.form.width) / 2;
  layout.form.top = originTop + (over.height - layout.form.height) / 2;
  return layout;
}

String errorReportClipboardText(const ErrorReportShown& report) {
  return report.receivedAt + u"\r\n" + report.details;
}

std::vector<PrintedLine> errorReportPage(const ErrorReportShown& report,
                                         const LineHeight& lineHeight) {
  std::vector<PrintedLine> page;
  double y = kPageMargin;
  const auto print = [&](String text, bool bold, int points) {
    page.push_back({std::move(text), bold, points, kPageMargin, y});
    y += lineHeight(bold, points);
  };
  print(u"ORVO Error Report", true, 18);
  y += kPageMargin;
  print(u"Date and time", true, 12);
  print(u"Error occurred at " + report.receivedAt, false, 12);
  y += kPageMargin;
  print(u"Details", true, 12);
  std::u16string_view rest = report.details;
  for (;;) {
    const auto cut = rest.find(u"\r\n");
    print(String(rest.substr(0, cut)), false, 12);
    if (cut == std::u16string_view::npos) break;
    rest.remove_prefix(cut + 2);
  }
  return page;
}

String errorDialogFailureText(std::u16string_view where, const Error& error) {
  return String(where) + u": (" + runtime::DecimalText(error.number()) + u")" + error.description();
}

Error printerError() { return Error(482, String(runtime::standardErrorText(482))); }

void startSystemInformation() {
  // There is no registry naming the system's information tool here: the programs that play
  // that part on Linux desktops are tried in turn.
  static constexpr std::array<std::u16string_view, 2> kTools = {u"hardinfo2", u"hardinfo"};
  for (const auto tool : kTools) {
    const std::int32_t pid = platform::startProcess(tool);
    if (pid != 0) {
      platform::reapWhenEnded(pid);
      return;
    }
  }
  userInterface()->messageBox(u"System Information Is Unavailable At This Time", u"", vbOKOnly);
}

}  // namespace orvo
