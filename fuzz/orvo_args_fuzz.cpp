// orvo's command lines: any bytes split at NULs into arguments, through the parser of
// "convert" and "strings", through "ini", "log" and "strings" (with their file names moved into a
// scratch directory)
// and through "call" (which reads each argument as JSON, a bare word or Name:=value). Either a
// usable result or a clear refusal; never a crash.
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "arguments.hpp"
#include "cli.hpp"
#include "file_verbs.hpp"
#include "fuzz_input.hpp"
#include "resource_verbs.hpp"
#include "settings_verbs.hpp"

namespace {

// The verbs' answers are not looked at; the scratch directory keeps their files contained.
const std::string& scratch() {
  static const std::string dir = [] {
    (void)std::freopen("/dev/null", "w", stdout);
    const auto d =
        std::filesystem::temp_directory_path() / ("orvo_args_fuzz_" + std::to_string(::getpid()));
    std::filesystem::create_directories(d);
    return d.string();
  }();
  return dir;
}

std::string contained(const std::string& name) {
  std::string safe;
  for (const char c : name) safe += (c == '/' || c == '\\') ? '_' : c;
  return scratch() + "/f" + safe.substr(0, 100);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::vector<std::string> args;
  std::string current;
  for (std::size_t i = 0; i < size; ++i) {
    if (data[i] == 0) {
      args.push_back(current);
      current.clear();
    } else {
      current += static_cast<char>(data[i]);
    }
  }
  args.push_back(current);
  // Every word is an option, an option's value or an operand, once; after "--", all operands.
  const auto split = orvo::cli::splitArguments(args, {{"--v", true}, {"--f", false}});
  if (split.operands.size() + split.options.size() > args.size()) __builtin_trap();
  if (args.front() == "--" &&
      (split.help || !split.error.empty() ||
       split.operands != std::vector<std::string>(args.begin() + 1, args.end()))) {
    __builtin_trap();
  }
  const auto parse = orvo::cli::parseConvertArguments(args);
  if (parse.options && (parse.options->in.empty() && parse.options->out.empty())) {
    // Two file names were counted, so at least one was given.
    if (args.size() < 2) __builtin_trap();
  }
  if (!parse.help && !parse.options && parse.error.empty()) __builtin_trap();
  const auto strings = orvo::cli::parseStringsArguments(args);
  if (!strings.help && !strings.options && strings.error.empty()) __builtin_trap();
  if (strings.options) {
    // Every id came from an argument of its own, beside the file name.
    if (strings.options->file.empty() || strings.options->ids.size() >= args.size()) {
      __builtin_trap();
    }
    // The same request on a file in the scratch directory, which is never a PE image.
    const auto& o = *strings.options;
    std::vector<std::string> again;
    if (o.json) again.emplace_back("--json");
    if (o.language) again.insert(again.end(), {"--language", std::to_string(*o.language)});
    again.push_back(contained(o.file));
    for (const std::uint16_t id : o.ids) again.push_back(std::to_string(id));
    if (orvo::cli::commandStrings(again) != 1) __builtin_trap();
  }
  {
    std::vector<std::string> ini = args;
    if (ini.size() >= 2) ini[1] = contained(ini[1]);
    const int status = orvo::cli::commandIni(ini);
    if (status < 0 || status > 3) __builtin_trap();
    std::vector<std::string> log = {"--app", scratch(), "Fuzz"};
    log.insert(log.end(), args.begin(), args.end());
    if (orvo::cli::commandLog(log) > 3) __builtin_trap();
  }
  if (orvo::fuzz::touchesFiles(std::string_view(reinterpret_cast<const char*>(data), size))) {
    return 0;
  }
  std::vector<const char*> argv = {"orvo", "call"};
  for (const auto& a : args) argv.push_back(a.c_str());
  orvo::cli::ObjectTable objects;
  const auto answer = orvo::cli::callLine(static_cast<int>(argv.size()), argv.data(), objects);
  if (answer.line.empty() || answer.line.find('\n') != std::string::npos) __builtin_trap();
  return 0;
}
