#pragma once

#include <string>
#include <vector>

// orvo's verbs on the system's shared objects.
namespace orvo::cli {

// orvo mutex NAME: whether a process holds the named mutex now. Exit 0 answered, 2 usage.
int commandMutex(const std::vector<std::string>& args);

}  // namespace orvo::cli
