#include "system_verbs.hpp"

#include <cstdio>

#include "arguments.hpp"
#include "orvogeneric/classes.hpp"
#include "orvogeneric/error_reports.hpp"
#include "qt_module.hpp"
#include "verb_support.hpp"

namespace orvo::cli {

namespace {

constexpr const char* kMutexHelp =
    "usage: orvo mutex NAME\n"
    "Prints true when some process holds the named mutex now (an application's single-instance\n"
    "guard, named as ORVOMutexName names them), else false. A holder that ended, however it\n"
    "ended, holds nothing.\n"
    "Exit status: 0 held, 1 free (so that `if orvo mutex NAME` reads as a question), 2 usage.\n";
constexpr const char* kErrorHelp =
    "usage: orvo error [--procedure PROC] [--log FILE] MESSAGE\n"
    "Shows MESSAGE in the library's error dialog, as a host's report of an error: the message,\n"
    "then \"Procedure: PROC\" (default orvo). With --log the report is first appended to FILE\n"
    "(created when missing) and the dialog says where. The dialog is modal: orvo waits until it\n"
    "is closed. Without a desktop the report is written to standard error.\n"
    "Exit status: 0 shown and closed, 2 usage.\n";

}  // namespace

int commandMutex(const std::vector<std::string>& args) {
  const Arguments parsed = splitArguments(args, {}, OptionPlacement::BeforeOperands);
  if (parsed.help) return std::fputs(kMutexHelp, stdout) < 0 ? 3 : done(0);
  if (!parsed.error.empty()) return usageError("mutex", parsed.error, kMutexHelp);
  if (parsed.operands.size() != 1) return usageError("mutex", "one NAME is needed", kMutexHelp);
  SystemUtilities system;
  const bool held = system.MutexAlreadyExists(fromSystemBytes(parsed.operands[0])) == VBool::True;
  put(held ? "true\n" : "false\n");
  return done(held ? 0 : 1);
}

int commandError(const std::vector<std::string>& args) {
  const Arguments parsed = splitArguments(args, {{"--procedure", true}, {"--log", true}},
                                          OptionPlacement::BeforeOperands);
  if (parsed.help) return std::fputs(kErrorHelp, stdout) < 0 ? 3 : done(0);
  if (!parsed.error.empty()) return usageError("error", parsed.error, kErrorHelp);
  if (parsed.operands.size() != 1) return usageError("error", "one MESSAGE is needed", kErrorHelp);
  const std::string* procedure = parsed.value("--procedure");
  const String procedureText = fromSystemBytes(procedure != nullptr ? *procedure : "orvo");
  const String message = fromSystemBytes(parsed.operands[0]);
  const std::string* log = parsed.value("--log");
  const String logPath = log != nullptr ? fromSystemBytes(*log) : String();
  if (reportInQtDialog(procedureText, message, log != nullptr ? &logPath : nullptr)) return done(0);
  if (log != nullptr) StartLoggingErrors(logPath);
  ReportError(procedureText, message);
  return done(0);
}

}  // namespace orvo::cli
