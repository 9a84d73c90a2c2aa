#pragma once

#include <string>
#include <vector>

// What can be called, from the registry: "orvo members" lists signatures, "orvo help" explains
// a class or a member with the documentation lines the interface description carries.
namespace orvo::cli {

// Each returns the process's exit status: 0 done, 1 no such class or member, 2 usage.
int commandMembers(const std::vector<std::string>& args);
int commandHelp(const std::vector<std::string>& args);

}  // namespace orvo::cli
