#include "platform/debug_output.hpp"

#include <syslog.h>

#include "orvogeneric/types.hpp"

namespace orvo::platform {

void debugOutput(std::u16string_view line) {
  // The line already carries its own name field; the log's identity stays the program's.
  std::string text = toUtf8(line);
  while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
  ::syslog(LOG_USER | LOG_DEBUG, "%s", text.c_str());
}

}  // namespace orvo::platform
