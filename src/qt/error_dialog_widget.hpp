#pragma once

#include <QDialog>

#include "orvogeneric/error_dialog.hpp"

class QLabel;
class QPrinter;
class QPushButton;

namespace orvo::qt {

// The error dialog as a Qt form: placed and sized by the library's layout rules in twips,
// converted with the screen's resolution.
class ErrorDialogWidget final : public QDialog {
 public:
  ErrorDialogWidget(const ErrorReportShown& report, QWidget* activeWindow);

  // The form as designed, in twips.
  static constexpr ErrorDialogDesign kDesign{7200, 2295, 1680, 1200};

 private:
  void copyReport();
  void printReport();
  void printPage(QPrinter& printer);

  ErrorReportShown report_;
  QLabel* details_ = nullptr;
};

}  // namespace orvo::qt
