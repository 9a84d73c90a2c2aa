// orvo: the library's members from the shell. "orvo call" makes one call, "orvo batch" many in
// one process so that process-wide state carries from call to call.
//
// Exit status: 0 done, 1 the call raised an error (or an unknown class was named), 2 the
// command line is wrong, 3 the output could not be written.

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "batch_input.hpp"
#include "cli.hpp"
#include "file_verbs.hpp"
#include "member_verbs.hpp"
#include "orvogeneric/automation.hpp"
#include "orvogeneric/event_loop.hpp"
#include "orvogeneric/tool_checks.hpp"
#include "orvogeneric/version.hpp"
#include "resource_verbs.hpp"
#include "settings_verbs.hpp"
#include "system_verbs.hpp"

namespace {

using namespace orvo;

constexpr const char* kUsage =
    "usage:\n"
    "  orvo call Class.Member [ARG...] [Name:=ARG...]   one call, one JSON line\n"
    "  orvo batch                                       JSON lines on stdin, one call each\n"
    "  orvo members [Class]                             what can be called\n"
    "  orvo help Class[.Member]                         what a class or member does\n"
    "  orvo encoding FILE...                            detected encoding and code page\n"
    "  orvo lines FILE...                               line counts\n"
    "  orvo convert --to CP [--from CP] [--bom|--no-bom] IN OUT   re-encode a text file\n"
    "  orvo ini get|set|delete|list FILE ...            settings files, one value at a time\n"
    "  orvo log [--app DIR NAME] MESSAGE                a line into the application's log\n"
    "  orvo mutex NAME                                  whether a named mutex is held now\n"
    "  orvo strings [--json] [--language L] DLL [ID...] a satellite library's string tables\n"
    "  orvo error [--procedure P] [--log FILE] MESSAGE  the error dialog, for a script\n"
    "  orvo --version                                   the tool's and the library's version\n"
    "Each verb takes --help.\n"
    "ARG is read by the member's declared type: a String takes the text as typed, the others\n"
    "JSON (a bare word that is not JSON is a string).\n"
    "A batch line: {\"call\": \"Class.Member\", \"args\": [...], \"named\": {\"Param\": ...}}\n"
    "              {\"object\": H, \"call\": \"Member\", ...}   a member of a returned object\n"
    "              {\"call\": \"Class.Property\", \"let\": value}\n"
    "Exit status: 0 done, 1 the call raised an error, 2 usage, 3 the output could not be "
    "written.\n";

constexpr int kExitOutputFailed = 3;

// Writes the whole text; false (errno set) when the output refused it.
bool put(const std::string& text) {
  return std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
}

// Buffered output only fails when it is flushed: a full disk or a closed pipe is reported here
// rather than lost at exit.
int finish(int status) {
  if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
    std::fprintf(stderr, "orvo: cannot write the output: %s\n", std::strerror(errno));
    return kExitOutputFailed;
  }
  return status;
}

constexpr const char* kCallHelp =
    "usage: orvo call Class.Member [ARG...] [Name:=ARG...]\n"
    "Calls one member of a global class (orvo members lists them) and prints the answer as one\n"
    "JSON line: {\"result\": ...} with \"byref\" for in/out arguments, or {\"error\": "
    "{\"number\",\n"
    "\"description\", \"source\"}} (with \"parameter\" and \"expected\" when an argument does not\n"
    "fit its declared type). ARG is read by that type: a String parameter takes the text as\n"
    "typed; the others take JSON, and a bare word that is not JSON is a string.\n"
    "Exit status: 0 answered, 1 the member raised an error (or no such class or member),\n"
    "2 usage, 3 the answer could not be written.\n";

constexpr const char* kBatchHelp =
    "usage: orvo batch < REQUESTS\n"
    "Reads one JSON request a line from standard input and answers each with one JSON line, in\n"
    "one process, so that state (objects, settings, the application's identity) carries over:\n"
    "  {\"call\": \"Class.Member\", \"args\": [...], \"named\": {\"Param\": ...}}\n"
    "  {\"object\": H, \"call\": \"Member\", ...}   a member of an object an answer returned\n"
    "  {\"call\": \"Class.Property\", \"let\": value}\n"
    "Exit status: 0 at the end of the input (errors are answers), 2 usage, 3 the answers could\n"
    "not be written.\n";

bool asksHelp(int argc, char** argv) {
  return argc == 3 && (std::strcmp(argv[2], "--help") == 0 || std::strcmp(argv[2], "-h") == 0);
}

int commandCall(int argc, char** argv) {
  if (asksHelp(argc, argv)) {
    put(kCallHelp);
    return finish(0);
  }
  // Options come before Class.Member; after it every word is an argument, "-1" included.
  std::vector<char*> words(argv, argv + argc);
  if (words.size() > 2 && std::strcmp(words[2], "--") == 0) {
    words.erase(words.begin() + 2);
  } else if (words.size() > 2 && words[2][0] == '-') {
    std::fprintf(stderr, "orvo call: unknown option %.40s\n%s", words[2], kCallHelp);
    return 2;
  }
  cli::ObjectTable objects;
  const cli::CallAnswer answer =
      cli::callLine(static_cast<int>(words.size()), words.data(), objects);
  put(answer.line);  // the answer as it stands: a copy would hold a long text twice
  put("\n");
  return finish(answer.ok ? 0 : 1);
}

int commandBatch() {
  cli::ObjectTable objects;
  // Events (a timer's ticks) are lines of their own, written as they are raised: between the
  // answers, while the batch waits for its next request.
  const auto writeEvents = [&objects] {
    bool ok = true;
    for (const std::string& event : objects.takeEvents()) ok = ok && put(event) && put("\n");
    return ok && std::fflush(stdout) == 0;
  };
  bool writable = true;
  cli::BatchInput input(0, static_cast<int>(ownLoopWaitHandle()));
  std::string line;  // one buffer for every line, grown in place for a long one
  while (writable && input.next(line, [&] {
    dispatchDueTimers();
    writable = writeEvents();
  })) {
    std::string_view text(line);
    if (!text.empty() && text.back() == '\r') text.remove_suffix(1);
    std::string answer = cli::batchLine(text, objects);
    writable = put(answer) && put("\n") && writeEvents();
  }
  return finish(0);
}

}  // namespace

int main(int argc, char** argv) {
  // Before anything opens a file: with a standard descriptor closed, a lock or settings file
  // would take its number and receive the answers. Standard output carries the answers and
  // standard input batch requests, so the programs a call starts must not share them.
  ensureStandardDescriptors();
  setChildStreams(ChildStreams::Shielded);
  if (argc < 2 || std::strcmp(argv[1], "--help") == 0 || std::strcmp(argv[1], "-h") == 0) {
    std::fputs(kUsage, argc < 2 ? stderr : stdout);
    return argc < 2 ? 2 : finish(0);
  }
  const std::string verb = argv[1];
  if (verb == "--version") {
    // The headers the tool was built with and the library it runs on: the same unless a
    // shared library was swapped under it.
    const std::string line = std::string("orvo ") + ORVO_VERSION_STRING + " (ORVOGeneric " +
                             std::string(libraryVersion()) + ")\n";
    put(line);
    return finish(0);
  }
  if (verb == "call") return commandCall(argc, argv);
  if (verb == "batch") {
    if (asksHelp(argc, argv)) {
      put(kBatchHelp);
      return finish(0);
    }
    if (argc > 2) {
      std::fprintf(stderr, "orvo batch: %s %.40s\n%s",
                   argv[2][0] == '-' ? "unknown option" : "no operands, not even", argv[2],
                   kBatchHelp);
      return 2;
    }
    return commandBatch();
  }
  const std::vector<std::string> rest(argv + 2, argv + argc);
  if (verb == "members") return cli::commandMembers(rest);
  if (verb == "help") return cli::commandHelp(rest);
  if (verb == "encoding") return cli::commandEncoding(rest);
  if (verb == "lines") return cli::commandLines(rest);
  if (verb == "convert") return cli::commandConvert(rest);
  if (verb == "ini") return cli::commandIni(rest);
  if (verb == "log") return cli::commandLog(rest);
  if (verb == "mutex") return cli::commandMutex(rest);
  if (verb == "error") return cli::commandError(rest);
  if (verb == "strings") return cli::commandStrings(rest);
  std::fprintf(stderr, "orvo: unknown command '%s'\n%s", verb.c_str(), kUsage);
  return 2;
}
