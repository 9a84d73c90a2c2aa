#pragma once

#include <string>
#include <vector>

// orvo's verbs on the system's shared objects, and the error dialog.
namespace orvo::cli {

// orvo mutex NAME: whether a process holds the named mutex now. Exit 0 answered, 2 usage.
int commandMutex(const std::vector<std::string>& args);

// orvo error [--procedure P] [--log FILE] MESSAGE: the error dialog, modal; exit 0 once it is
// closed, 2 usage.
int commandError(const std::vector<std::string>& args);

}  // namespace orvo::cli
