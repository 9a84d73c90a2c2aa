#include "errors/error_reporter.hpp"

#include "files/textio.hpp"
#include "frame/state.hpp"
#include "orvogeneric/user_interface.hpp"
#include "platform/file.hpp"
#include "platform/locale.hpp"
#include "runtime/dates.hpp"
#include "runtime/format.hpp"
#include "runtime/strings.hpp"

namespace orvo::errors {

namespace {

// Appends one block to the error log as ANSI text; false when it could not be written.
bool appendLogEntry(const String& path, const String& report, const String& when) {
  const String entry = u"\r\n" + String(60, u'-') + u"\r\nAN ERROR HAS OCCURRED\r\nDate/time: " +
                       when + u"\r\n" + report + u"\r\n";
  std::string bytes;
  files::encodeText(entry, CP_ACP, bytes);
  platform::File file;
  // One write to a file opened for appending: several processes sharing a log keep whole blocks.
  return file.openForAppend(path, true) &&
         file.writeAll(
             std::span(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()));
}

void showUnexpected(std::u16string_view procedure, const Error& e) {
  // Deliberately no blank between ")" and the description.
  userInterface()->messageBox(u"Unexpected error in " + String(procedure) + u": (" +
                                  runtime::DecimalText(e.number()) + u")" + e.description(),
                              u"", vbExclamation | vbOKOnly);
}

}  // namespace

void StartLoggingErrors(const String& FilePath) {
  frame::StaticGlobals::instance().setErrorLogPath(FilePath);
}

String ErrorLogFilePath() { return frame::StaticGlobals::instance().errorLogPath(); }

String errorReportText(const Error& error, const String& procedure, const String& extraInfo) {
  String report;
  if (!extraInfo.empty()) report += extraInfo + u"\r\n";
  report += u"VB error number: " + runtime::DecimalText(error.number());
  // Errors in the object-error range also show their offset from its base.
  const std::int64_t offset = static_cast<std::int64_t>(error.number()) + 2147221504LL;
  if (offset >= 0 && offset <= 65535) report += u" (" + runtime::DecimalText(offset) + u")";
  report += u", " + error.description() + u"\r\nError source: " + error.source() +
            u"\r\nProcedure: " + procedure;
  return report;
}

String messageReportText(const String& procedure, const String& message) {
  return message + u"\r\nProcedure: " + procedure;
}

String showErrorReport(const String& report) {
  ErrorReportShown shown{report, runtime::Format(Variant(runtime::Now()), u"General Date",
                                                 *platform::userRegionalSettings())};
  const String path = ErrorLogFilePath();
  if (!path.empty() && appendLogEntry(path, report, shown.receivedAt)) {
    // Shown in lower case whatever the stored path's case, as the dialog always did.
    shown.details += u"\r\nDetails logged to: " + runtime::LCase(path);
  }
  userInterface()->showErrorReport(shown);
  return shown.details;
}

void ErrorReporter::ReportVBError(const Error& ErrorObject, const String& Procedure,
                                  const String& ExtraInfo) {
  try {
    showErrorReport(errorReportText(ErrorObject, Procedure, ExtraInfo));
  } catch (const Error& e) {
    showUnexpected(u"ReportVBError", e);
  }
}

void ErrorReporter::ReportError(const String& Procedure, const String& Message) {
  try {
    showErrorReport(messageReportText(Procedure, Message));
  } catch (const Error& e) {
    showUnexpected(u"ReportError", e);
  }
}

}  // namespace orvo::errors
