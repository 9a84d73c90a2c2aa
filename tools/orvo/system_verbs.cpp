#include "system_verbs.hpp"

#include <cstdio>

#include "arguments.hpp"
#include "orvogeneric/classes.hpp"
#include "verb_support.hpp"

namespace orvo::cli {

namespace {

constexpr const char* kMutexHelp =
    "usage: orvo mutex NAME\n"
    "Prints true when some process holds the named mutex now (an application's single-instance\n"
    "guard, named as ORVOMutexName names them), else false. A holder that ended, however it\n"
    "ended, holds nothing.\n"
    "Exit status: 0 held, 1 free (so that `if orvo mutex NAME` reads as a question), 2 usage.\n";

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

}  // namespace orvo::cli
