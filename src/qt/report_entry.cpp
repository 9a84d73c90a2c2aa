#include <xcb/xcb.h>

#include <QApplication>
#include <cstdlib>

#include "orvogeneric/error_reports.hpp"
#include "orvogeneric/qt.hpp"

namespace {

// Qt ends the process when its display cannot be opened; asking first lets the caller fall back
// to its console report instead.
bool displayReachable() {
  xcb_connection_t* connection = xcb_connect(nullptr, nullptr);
  const bool ok = xcb_connection_has_error(connection) == 0;
  xcb_disconnect(connection);
  return ok;
}

}  // namespace

extern "C" int orvo_qt_report_error(const char16_t* procedure, const char16_t* message,
                                    const char16_t* logPath) {
  if (!displayReachable()) return 1;
  int argc = 1;
  char name[] = "orvo";
  char* argv[] = {name, nullptr};
  QApplication app(argc, argv);
  orvo::qt::installDialogs();
  if (logPath != nullptr) orvo::StartLoggingErrors(logPath);
  orvo::ReportError(procedure, message);
  return 0;
}
