#pragma once

#include <string>
#include <string_view>

#include "json_bridge.hpp"

// What orvo does with one call, shared by the tool and its fuzz target so that both run the
// same code.
namespace orvo::cli {

// One `orvo batch` line in, one answer line out (without the line end): the call's result or
// its error, never an exception.
std::string batchLine(std::string_view line, ObjectTable& objects);

// `orvo call Class.Member ARG...`: the answer line, and whether the call succeeded.
struct CallAnswer {
  std::string line;
  bool ok;
};
CallAnswer callLine(int argc, const char* const* argv, ObjectTable& objects);

}  // namespace orvo::cli
