#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "orvogeneric/error.hpp"
#include "orvogeneric/export.hpp"
#include "orvogeneric/types.hpp"

// What the error dialog shows, where it stands and what it prints, decided here so that every
// toolkit's dialog (the library's Qt module, a host's own) behaves the same. Lengths are in
// twips, as the applications' forms measure them.
namespace orvo {

// One report as the dialog receives it.
struct ErrorReportShown {
  // The report, then "Details logged to: " and the log's path in lower case when it was logged.
  String details;
  // The moment the dialog received it, in the user's general date format.
  String receivedAt;
};

// The form's title and its buttons' captions, from the library's message catalogue (never a
// host's satellite); "&" marks the access key.
struct ErrorDialogCaptions {
  String title;
  String ok;
  String sysInfo;
  String copy;
  String print;
  String email;
};
ORVO_API ErrorDialogCaptions errorDialogCaptions();

struct TwipsRect {
  double left = 0;
  double top = 0;
  double width = 0;
  double height = 0;
  constexpr bool operator==(const TwipsRect&) const = default;
};

// The form as designed: its size, the top of its button row and the height of the details.
struct ErrorDialogDesign {
  double formWidth = 0;
  double formHeight = 0;
  double buttonTop = 0;
  double detailsHeight = 0;
};

struct ErrorDialogLayout {
  TwipsRect form;
  double detailsHeight = 0;
  double buttonTop = 0;
};

// The details grow downward to hold their text, by at most 8000 twips; the form and the button
// row move down by the same amount. The form is centred over the active window when there is
// one, else on the screen.
ORVO_API ErrorDialogLayout layoutErrorDialog(const ErrorDialogDesign& design,
                                             double detailsTextHeight,
                                             const std::optional<TwipsRect>& activeWindow,
                                             const TwipsRect& screen);

// What Copy puts on the clipboard: the moment received, then the details.
ORVO_API String errorReportClipboardText(const ErrorReportShown& report);

// One line of the printed report, at its place on the page (left and top of the text).
struct PrintedLine {
  String text;
  bool bold = false;
  int pointSize = 12;
  double left = 0;
  double top = 0;
  constexpr bool operator==(const PrintedLine&) const = default;
};
// The printed report is set in this font; each line moves the next down by the height of its
// font, which only the printer knows (twips for a bold or regular font of that many points).
inline constexpr char16_t kErrorReportFont[] = u"Arial";
using LineHeight = std::function<double(bool bold, int pointSize)>;
ORVO_API std::vector<PrintedLine> errorReportPage(const ErrorReportShown& report,
                                                  const LineHeight& lineHeight);

// A failure inside one of the dialog's actions, as its message box says it: "PrintError: (482)"
// then the description, with no blank after the bracket, as the dialog always had it.
ORVO_API String errorDialogFailureText(std::u16string_view where, const Error& error);
// What a print that the printer refused raises (482).
ORVO_API Error printerError();

// The System Info button: starts the system's information tool, or says in a message box that
// there is none.
ORVO_API void startSystemInformation();

}  // namespace orvo
