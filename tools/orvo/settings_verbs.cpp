#include "settings_verbs.hpp"

#include <cstdio>

#include "arguments.hpp"
#include "orvogeneric/classes.hpp"
#include "orvogeneric/error.hpp"
#include "orvogeneric/profile.hpp"
#include "orvogeneric/system_errors.hpp"
#include "orvogeneric/text_conversion.hpp"
#include "progress.hpp"
#include "verb_support.hpp"

namespace orvo::cli {

namespace {

constexpr const char* kIniHelp =
    "usage: orvo ini get FILE SECTION KEY [DEFAULT]   the value (DEFAULT if it is missing)\n"
    "       orvo ini set [--strict] FILE SECTION KEY VALUE   write one value (the file is\n"
    "                                                 created)\n"
    "       orvo ini delete FILE SECTION [KEY]        remove a key, or a whole section\n"
    "       orvo ini list FILE [SECTION]              the sections, or a section's KEY=VALUE\n"
    "Values are read and written as the INI class does: one pair of enclosing quotes is\n"
    "stripped on reading, a value with edge blanks is written in quotes, ANSI files in the\n"
    "system code page, UTF-16 files as UTF-16. A write changes only the line it concerns.\n"
    "Characters an ANSI file cannot hold are stored as Windows stores them ('?' or a near\n"
    "character) and counted on standard error; with --strict they are an error and nothing\n"
    "is written. On a terminal, the time a call has taken shows on standard error once it has\n"
    "taken a second (ORVO_PROGRESS_DELAY seconds).\n"
    "Exit status: 0 done (get: the value, even empty, or DEFAULT for a missing key); 1 the\n"
    "file does not exist (get, list), the key is missing and no DEFAULT was given (get), no\n"
    "such section (list), the file could not be written (set, delete), or --strict and a\n"
    "character lost (set); 2 usage.\n";

constexpr const char* kLogHelp =
    "usage: orvo log [--app DIR NAME] MESSAGE\n"
    "Appends MESSAGE, time-stamped, to the application's log DIR/NAME.log (default: orvo's own\n"
    "directory and name). The log is written only if the file exists: create it empty to turn\n"
    "logging on. Only the line is written, not the library's own trace.\n"
    "Exit status: 0 written, 1 no log file (or it could not be written), 2 usage.\n";

String text(const std::string& s) { return fromSystemBytes(s); }

int usage(const char* help) {
  std::fputs(help, stderr);
  return 2;
}

int writeFailure(const std::string& file, std::uint32_t error) {
  const char* why = error == kErrorPathNotFound      ? "its directory does not exist"
                    : error == kErrorAccessDenied    ? "access denied"
                    : error == kErrorNotEnoughMemory ? "the file is too large"
                                                     : "the platform refused the write";
  std::fprintf(stderr, "orvo ini: %s cannot be written: %s (Windows error %u)\n", file.c_str(), why,
               error);
  return 1;
}

// Characters of the texts that a write into the file cannot keep. Settings files are written
// in the system's ANSI code page unless they are UTF-16 LE (a UTF-8 file included, as the
// platform does).
std::int64_t unrepresentable(const String& file, std::initializer_list<String> texts) {
  FileSubs files;
  if (files.FileExists(file) == VBool::True) {
    const enumFileEncoding e = files.TextFileEncoding(file);
    if (e == encUTF16_LE || e == encUTF16_LE_NB) return 0;
  }
  const std::int32_t page = SystemUtilities().GetWindowsCodePage();
  std::int64_t lost = 0;
  for (const String& t : texts) lost += CountUnrepresentable(t, page);
  return lost;
}

std::string lostText(std::int64_t lost) {
  return std::to_string(lost) + (lost == 1 ? " character" : " characters") +
         " that the file's code page (" + std::to_string(SystemUtilities().GetWindowsCodePage()) +
         ") cannot hold";
}

}  // namespace

int commandIni(const std::vector<std::string>& all) {
  // Values may start with "-": options come before the action or right after it, before the
  // file.
  const Arguments head = splitArguments(all, {}, OptionPlacement::BeforeOperands);
  if (head.help) return std::fputs(kIniHelp, stdout) < 0 ? 3 : done(0);
  if (!head.error.empty()) return usageError("ini", head.error, kIniHelp);
  if (head.operands.empty()) return usage(kIniHelp);
  const Arguments parsed =
      splitArguments(std::vector<std::string>(head.operands.begin() + 1, head.operands.end()),
                     {{"--strict", false}}, OptionPlacement::BeforeOperands);
  if (parsed.help) return std::fputs(kIniHelp, stdout) < 0 ? 3 : done(0);
  if (!parsed.error.empty()) return usageError("ini", parsed.error, kIniHelp);
  std::vector<std::string> args = parsed.operands;
  args.insert(args.begin(), head.operands[0]);
  const bool strict = parsed.has("--strict");
  if (strict && args[0] != "set") return usageError("ini", "--strict is for set", kIniHelp);
  if (args.size() < 2) return usage(kIniHelp);
  const std::string& verb = args[0];
  const std::string& file = args[1];
  // A settings file is read whole by each call, which tells nothing of how far it has got: a
  // long read shows the time it has taken.
  Progress shown("ini", file, 0);
  const auto missingFile = [&] {
    shown.stop();
    std::fprintf(stderr, "orvo ini: %s does not exist\n", file.c_str());
    return 1;
  };
  if (verb == "list" && args.size() <= 3) {
    if (FileSubs().FileExists(text(file)) != VBool::True) return missingFile();
    if (args.size() == 2) {
      std::string out;
      for (const String& name : ProfileSectionNames(text(file))) out += toUtf8(name) + "\n";
      shown.finish();
      shown.stop();
      put(out);
      return done(0);
    }
    const auto entries = ProfileSection(text(file), text(args[2]));
    shown.finish();
    shown.stop();
    if (!entries) {
      std::fprintf(stderr, "orvo ini: %s has no section [%s]\n", file.c_str(), args[2].c_str());
      return 1;
    }
    std::string out;
    for (const auto& [key, value] : *entries) out += toUtf8(key) + "=" + toUtf8(value) + "\n";
    put(out);
    return done(0);
  }
  if (args.size() < 3) return usage(kIniHelp);
  const String section = text(args[2]);
  try {
    if (verb == "get" && (args.size() == 4 || args.size() == 5)) {
      if (FileSubs().FileExists(text(file)) != VBool::True) return missingFile();
      const bool hasDefault = args.size() == 5;
      // A script must tell a missing key from an empty value: the read's default cannot.
      if (!hasDefault && !ProfileValue(text(file), section, text(args[3]))) {
        shown.stop();
        std::fprintf(stderr, "orvo ini: %s has no key %s in [%s]\n", file.c_str(), args[3].c_str(),
                     args[2].c_str());
        return 1;
      }
      INI ini;
      const String value = ini.GetStringFromINI(text(file), section, text(args[3]),
                                                hasDefault ? text(args[4]) : String());
      shown.finish();
      shown.stop();
      put(toUtf8(value) + "\n");
      return done(0);
    }
    if (verb == "set" && args.size() == 5) {
      const std::int64_t lost =
          unrepresentable(text(file), {section, text(args[3]), text(args[4])});
      if (lost > 0 && strict) {
        shown.stop();
        std::fprintf(stderr, "orvo ini: %s: %s (--strict): nothing was written\n", file.c_str(),
                     lostText(lost).c_str());
        return 1;
      }
      INI ini;
      const bool written =
          ini.PutStringToINI(text(file), section, text(args[3]), text(args[4])) == VBool::True;
      if (written) shown.finish();
      shown.stop();
      if (written) {
        // Stored as the platform stores them; said, so that the loss is not silent.
        if (lost > 0) {
          std::fprintf(stderr, "orvo ini: %s: %s, written as '?' or a near character\n",
                       file.c_str(), lostText(lost).c_str());
        }
        return done(0);
      }
      // The reason of the one attempt that failed; asking again could succeed.
      return writeFailure(file, lastSystemError());
    }
    if (verb == "delete" && (args.size() == 3 || args.size() == 4)) {
      const String key = args.size() == 4 ? text(args[3]) : String();
      std::uint32_t error = 0;
      const bool written =
          ProfileWrite(text(file), section, args.size() == 4 ? &key : nullptr, nullptr, &error);
      if (written) shown.finish();
      shown.stop();
      if (written) return done(0);
      return writeFailure(file, error);
    }
  } catch (const Error& e) {
    shown.stop();
    std::fprintf(stderr, "orvo ini: %s\n", toUtf8(e.description()).c_str());
    return 1;
  }
  shown.stop();
  return usage(kIniHelp);
}

int commandLog(const std::vector<std::string>& all) {
  // --app DIR NAME: the option takes DIR, NAME is the first operand; a message may start
  // with "-".
  const Arguments parsed = splitArguments(all, {{"--app", true}}, OptionPlacement::BeforeOperands);
  if (parsed.help) return std::fputs(kLogHelp, stdout) < 0 ? 3 : done(0);
  if (!parsed.error.empty()) return usageError("log", parsed.error, kLogHelp);
  const std::vector<std::string>& args = parsed.operands;
  const std::string* appDir = parsed.value("--app");
  const std::size_t next = appDir != nullptr ? 1 : 0;
  if (args.size() != next + 1) return usage(kLogHelp);
  INI ini;
  // The line asked for and nothing else: the library's own trace (the information block an
  // application's start writes, the encoding verdicts) belongs to a running application.
  ini.SuppressORVOGenericLogging(VBool::True);
  if (appDir != nullptr) ini.InitialiseAppProperties(text(*appDir), text(args[0]));
  FileSubs files;
  const String log = files.LogFile();
  if (files.FileExists(log) != VBool::True) {
    std::fprintf(stderr,
                 "orvo log: %s does not exist, so logging is off (create it to turn "
                 "logging on)\n",
                 toUtf8(log).c_str());
    return 1;
  }
  files.AddToLog(text(args[next]));
  if (const std::uint32_t error = lastSystemError(); error != 0) {
    std::fprintf(stderr, "orvo log: %s was not written (Windows error %u)\n", toUtf8(log).c_str(),
                 error);
    return 1;
  }
  return done(0);
}

}  // namespace orvo::cli
