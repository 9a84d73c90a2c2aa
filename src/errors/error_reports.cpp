#include "orvogeneric/error_reports.hpp"

#include "errors/error_reporter.hpp"

namespace orvo {

void StartLoggingErrors(const String& FilePath) { errors::StartLoggingErrors(FilePath); }

String ErrorLogFilePath() { return errors::ErrorLogFilePath(); }

void ReportVBError(const Error& ErrorObject, const String& Procedure, const String& ExtraInfo) {
  errors::ErrorReporter().ReportVBError(ErrorObject, Procedure, ExtraInfo);
}

void ReportError(const String& Procedure, const String& Message) {
  errors::ErrorReporter().ReportError(Procedure, Message);
}

}  // namespace orvo
