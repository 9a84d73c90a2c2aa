#include "system_verbs.hpp"

#include <cstdio>

#include "orvogeneric/classes.hpp"
#include "verb_support.hpp"

namespace orvo::cli {

namespace {

constexpr const char* kMutexHelp =
    "usage: orvo mutex NAME\n"
    "Prints true when some process holds the named mutex now (an application's single-instance\n"
    "guard, named as ORVOMutexName names them), else false. A holder that ended, however it\n"
    "ended, holds nothing.\n";

}  // namespace

int commandMutex(const std::vector<std::string>& args) {
  if (wantsHelp(args)) return std::fputs(kMutexHelp, stdout) < 0 ? 3 : done(0);
  if (args.size() != 1) {
    std::fputs(kMutexHelp, stderr);
    return 2;
  }
  SystemUtilities system;
  put(system.MutexAlreadyExists(fromSystemBytes(args[0])) == VBool::True ? "true\n" : "false\n");
  return done(0);
}

}  // namespace orvo::cli
