#pragma once

#include "orvogeneric/error.hpp"
#include "orvogeneric/export.hpp"
#include "orvogeneric/types.hpp"

// Error reports for hosts: a caught error, or a plain message, made into the short report the
// applications' users know, appended to the error log when one is chosen, and shown in the
// error dialog of the installed user interface (without a desktop: a critical message box on
// standard error). Modal; they never raise.
namespace orvo {

// Chooses the process-wide error log (no check that it can be written); "" logs nothing.
ORVO_API void StartLoggingErrors(const String& FilePath);
ORVO_API String ErrorLogFilePath();
// "VB error number: N (D), description", "Error source: S", "Procedure: P", after ExtraInfo's
// line when there is one.
ORVO_API void ReportVBError(const Error& ErrorObject, const String& Procedure,
                            const String& ExtraInfo = String());
// The message, then "Procedure: P".
ORVO_API void ReportError(const String& Procedure, const String& Message);

}  // namespace orvo
