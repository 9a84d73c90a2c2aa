#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// A verb's arguments split into options and operands as the shell tools split them: "--help"
// (or "-h") asks for help, "--" ends the options, "-" is an operand, and any other word that
// starts with "-" is an option, which must be one the verb knows.
namespace orvo::cli {

struct KnownOption {
  std::string_view name;
  bool takesValue = false;
};

enum class OptionPlacement {
  Anywhere,       // file names: options may follow them (a file named "-x" comes after "--")
  BeforeOperands  // values: from the first operand on, "-5" or "-x" is a value, not an option
};

struct Arguments {
  bool help = false;
  std::vector<std::pair<std::string, std::string>> options;  // name, value ("" for a flag)
  std::vector<std::string> operands;
  std::string error;  // a usage error: an unknown option, a value missing

  [[nodiscard]] bool has(std::string_view name) const;
  // The last value given for the option, or nullptr.
  [[nodiscard]] const std::string* value(std::string_view name) const;
};

Arguments splitArguments(const std::vector<std::string>& args,
                         std::initializer_list<KnownOption> known,
                         OptionPlacement placement = OptionPlacement::Anywhere);

// A usage error as every verb reports it: "orvo VERB: WHAT", the verb's help, exit status 2.
int usageError(std::string_view verb, const std::string& what, const char* help);

}  // namespace orvo::cli
