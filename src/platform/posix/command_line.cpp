#include "platform/posix/command_line.hpp"

#include "orvogeneric/types.hpp"

namespace orvo::platform {

std::vector<std::string> splitCommandLine(std::u16string_view commandLine) {
  std::vector<std::string> args;
  std::u16string current;
  bool inArgument = false;
  bool quoted = false;
  std::size_t i = 0;
  const auto flush = [&] {
    if (inArgument) args.push_back(toUtf8(current));
    current.clear();
    inArgument = false;
  };
  while (i < commandLine.size()) {
    const char16_t c = commandLine[i];
    if ((c == u' ' || c == u'\t') && !quoted) {
      flush();
      ++i;
      continue;
    }
    inArgument = true;
    if (c == u'\\') {
      std::size_t run = 0;
      while (i < commandLine.size() && commandLine[i] == u'\\') {
        ++run;
        ++i;
      }
      if (i < commandLine.size() && commandLine[i] == u'"') {
        current.append(run / 2, u'\\');
        if (run % 2 == 1) {
          current += u'"';
          ++i;
        }
      } else {
        current.append(run, u'\\');
      }
      continue;
    }
    if (c == u'"') {
      if (quoted && i + 1 < commandLine.size() && commandLine[i + 1] == u'"') {
        current += u'"';
        i += 2;
        continue;
      }
      quoted = !quoted;
      ++i;
      continue;
    }
    current += c;
    ++i;
  }
  flush();
  return args;
}

}  // namespace orvo::platform
