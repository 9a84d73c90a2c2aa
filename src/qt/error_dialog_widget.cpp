#include "error_dialog_widget.hpp"

#include <QApplication>
#include <QClipboard>
#include <QFontMetricsF>
#include <QLabel>
#include <QPainter>
#include <QPrintDialog>
#include <QPrinter>
#include <QPushButton>
#include <QScreen>
#include <cmath>

#include "orvogeneric/user_interface.hpp"
#include "qt_text.hpp"

namespace orvo::qt {

namespace {

// Twips per pixel of the screen the dialog opens on, as the forms measured with Screen.
double twipsPerPixel(const QScreen* screen) {
  const double dpi = screen != nullptr ? screen->logicalDotsPerInchY() : 96.0;
  return 1440.0 / (dpi > 0 ? dpi : 96.0);
}

int pixels(double twips, double perPixel) {
  return static_cast<int>(std::lround(twips / perPixel));
}

TwipsRect twipsOf(const QRect& r, double perPixel) {
  return {r.x() * perPixel, r.y() * perPixel, r.width() * perPixel, r.height() * perPixel};
}

}  // namespace

ErrorDialogWidget::ErrorDialogWidget(const ErrorReportShown& report, QWidget* activeWindow)
    : QDialog(activeWindow), report_(report) {
  const auto captions = errorDialogCaptions();
  setWindowTitle(toQ(captions.title));
  setModal(true);
  QScreen* screen =
      activeWindow != nullptr ? activeWindow->screen() : QGuiApplication::primaryScreen();
  const double tpp = twipsPerPixel(screen);

  // Details on the left, System Info beside them (it stays where it was designed when the
  // details grow), OK, Copy and Print in a row below that moves down with the details.
  constexpr double kMargin = 240;
  constexpr double kButtonWidth = 1335;
  constexpr double kButtonHeight = 375;
  const double detailsWidth = kDesign.formWidth - 3 * kMargin - kButtonWidth;
  details_ = new QLabel(toQ(report.details), this);
  details_->setWordWrap(true);
  details_->setAlignment(Qt::AlignLeft | Qt::AlignTop);
  details_->setTextInteractionFlags(Qt::TextSelectableByMouse);
  details_->setTextFormat(Qt::PlainText);
  const int detailsWidthPx = pixels(detailsWidth, tpp);
  const double textHeight = details_->heightForWidth(detailsWidthPx) * tpp;

  const std::optional<TwipsRect> over =
      activeWindow != nullptr
          ? std::optional<TwipsRect>(twipsOf(activeWindow->frameGeometry(), tpp))
          : std::nullopt;
  const QRect screenRect = screen != nullptr ? screen->geometry() : QRect(0, 0, 1024, 768);
  const auto layout = layoutErrorDialog(kDesign, textHeight, over, twipsOf(screenRect, tpp));

  details_->setGeometry(pixels(kMargin, tpp), pixels(kMargin, tpp), detailsWidthPx,
                        pixels(layout.detailsHeight, tpp));
  const auto button = [&](const String& caption, double left, double top) {
    auto* b = new QPushButton(toQ(caption), this);
    b->setGeometry(pixels(left, tpp), pixels(top, tpp), pixels(kButtonWidth, tpp),
                   pixels(kButtonHeight, tpp));
    return b;
  };
  QPushButton* ok = button(captions.ok, kMargin, layout.buttonTop);
  QPushButton* copy = button(captions.copy, 2 * kMargin + kButtonWidth, layout.buttonTop);
  QPushButton* print = button(captions.print, 3 * kMargin + 2 * kButtonWidth, layout.buttonTop);
  QPushButton* sysInfo =
      button(captions.sysInfo, kDesign.formWidth - kMargin - kButtonWidth, kMargin);
  // Email carries its caption and nothing else: it stays hidden rather than do nothing.
  button(captions.email, kDesign.formWidth - kMargin - kButtonWidth, 2 * kMargin + kButtonHeight)
      ->hide();
  ok->setDefault(true);
  connect(ok, &QPushButton::clicked, this, &QDialog::accept);
  connect(copy, &QPushButton::clicked, this, [this] { copyReport(); });
  connect(print, &QPushButton::clicked, this, [this] { printReport(); });
  connect(sysInfo, &QPushButton::clicked, this, [] { startSystemInformation(); });

  setFixedSize(pixels(layout.form.width, tpp), pixels(layout.form.height, tpp));
  setGeometry(pixels(layout.form.left, tpp), pixels(layout.form.top, tpp), width(), height());
}

void ErrorDialogWidget::copyReport() {
  QGuiApplication::clipboard()->clear();
  QGuiApplication::clipboard()->setText(toQ(errorReportClipboardText(report_)));
}

void ErrorDialogWidget::printReport() {
  try {
    QPrinter printer(QPrinter::HighResolution);
    QPrintDialog choose(&printer, this);
    // Cancelling the printer's choice prints nothing and says nothing.
    if (choose.exec() != QDialog::Accepted) return;
    try {
      printPage(printer);
    } catch (const Error& e) {
      userInterface()->messageBox(errorDialogFailureText(u"PrintError", e), u"", vbExclamation);
    }
  } catch (const Error& e) {
    userInterface()->messageBox(errorDialogFailureText(u"cmdPrint_Click", e), u"", vbExclamation);
  }
}

void ErrorDialogWidget::printPage(QPrinter& printer) {
  // The page is measured from the printable area, as a printer's device context is; a printer
  // without hardware margins (a PDF file) starts at the paper's corner.
  printer.setPageMargins(printer.pageLayout().minimumMargins(), printer.pageLayout().units());
  QPainter painter;
  if (!painter.begin(&printer)) throw printerError();
  const double dpiX = printer.logicalDpiX();
  const double dpiY = printer.logicalDpiY();
  const auto fontOf = [](bool bold, int points) {
    QFont font(toQ(String(kErrorReportFont)));
    font.setPointSize(points);
    font.setBold(bold);
    return font;
  };
  const auto lineHeight = [&](bool bold, int points) {
    return QFontMetricsF(fontOf(bold, points), &printer).height() * 1440.0 / dpiY;
  };
  for (const auto& line : errorReportPage(report_, lineHeight)) {
    const QFont font = fontOf(line.bold, line.pointSize);
    painter.setFont(font);
    const double ascent = QFontMetricsF(font, &printer).ascent();
    painter.drawText(QPointF(line.left * dpiX / 1440.0, line.top * dpiY / 1440.0 + ascent),
                     toQ(line.text));
  }
  if (!painter.end()) throw printerError();
}

}  // namespace orvo::qt
