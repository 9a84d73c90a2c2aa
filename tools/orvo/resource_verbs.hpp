#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// orvo's verbs on satellite libraries (per-language resource DLLs).
namespace orvo::cli {

struct StringsOptions {
  std::string file;
  std::vector<std::uint16_t> ids;  // empty: every string
  std::optional<std::uint16_t> language;
  bool json = false;
};

// The arguments after "strings"; an error text when they do not name a file and ids.
struct StringsParse {
  std::optional<StringsOptions> options;
  std::string error;
  bool help = false;
};
StringsParse parseStringsArguments(const std::vector<std::string>& args);

// The exit status: 0 done, 1 the file is not a readable satellite or an id has no string, 2 usage.
int commandStrings(const std::vector<std::string>& args);

}  // namespace orvo::cli
