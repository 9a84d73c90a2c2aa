#pragma once

#include <string>
#include <vector>

// orvo's verbs on settings files and the log.
namespace orvo::cli {

// Each returns the exit status: 0 done, 1 the file could not be used, 2 usage.
int commandIni(const std::vector<std::string>& args);
int commandLog(const std::vector<std::string>& args);

}  // namespace orvo::cli
