// orvo's command lines: any bytes split at NULs into arguments, through the parser of
// "convert" and through "call" (which reads each argument as JSON, a bare word or Name:=value).
// Either a usable result or a clear refusal; never a crash.
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "cli.hpp"
#include "file_verbs.hpp"
#include "fuzz_input.hpp"

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
  const auto parse = orvo::cli::parseConvertArguments(args);
  if (parse.options && (parse.options->in.empty() && parse.options->out.empty())) {
    // Two file names were counted, so at least one was given.
    if (args.size() < 2) __builtin_trap();
  }
  if (!parse.help && !parse.options && parse.error.empty()) __builtin_trap();
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
