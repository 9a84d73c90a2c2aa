#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// orvo's verbs on text files: encoding, lines, convert.
namespace orvo::cli {

struct ConvertOptions {
  std::int32_t to = 0;
  std::optional<std::int32_t> from;
  std::optional<bool> bom;  // unset: a Unicode target gets one, as new files do
  bool strict = false;      // a character the target cannot hold is an error, nothing written
  std::string in;
  std::string out;
};

// The arguments after "convert"; an error text when they do not make a conversion.
struct ConvertParse {
  std::optional<ConvertOptions> options;
  std::string error;
  bool help = false;
};
ConvertParse parseConvertArguments(const std::vector<std::string>& args);

// Each returns the process's exit status: 0 done, 1 a file could not be used, 2 usage.
int commandEncoding(const std::vector<std::string>& args);
int commandLines(const std::vector<std::string>& args);
int commandConvert(const std::vector<std::string>& args);

}  // namespace orvo::cli
