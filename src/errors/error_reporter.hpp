#pragma once

#include "orvogeneric/error.hpp"
#include "orvogeneric/types.hpp"

// Error reports: a caught error or a plain message turned into a short report, appended to the
// error log when one is chosen, and shown to the user. Private to the library.
namespace orvo::errors {

// The process-wide error log; empty means nothing is logged.
void StartLoggingErrors(const String& FilePath);
String ErrorLogFilePath();

class ErrorReporter {
 public:
  void StartLoggingErrors(const String& FilePath) { errors::StartLoggingErrors(FilePath); }
  [[nodiscard]] String ErrorLogFilePath() const { return errors::ErrorLogFilePath(); }
  void ReportVBError(const Error& ErrorObject, const String& Procedure, const String& ExtraInfo);
  void ReportError(const String& Procedure, const String& Message);
};

// The report of a caught error, and of a plain message.
String errorReportText(const Error& error, const String& procedure, const String& extraInfo);
String messageReportText(const String& procedure, const String& message);

// The error dialog's entry: the log entry is appended (when a log is chosen), and the details
// the dialog shows, with "Details logged to: " when the entry was written, go to the user
// interface. Returns those details.
String showErrorReport(const String& report);

}  // namespace orvo::errors
