#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace orvo::platform {

// A command line split as the platform's programs split theirs: blanks separate arguments,
// double quotes group, 2n backslashes before a quote give n backslashes and a quote that
// groups, 2n+1 give n and a literal quote, "" inside a quoted part is a literal quote, and
// backslashes elsewhere are literal. The arguments come out in UTF-8, as POSIX programs take
// them.
std::vector<std::string> splitCommandLine(std::u16string_view commandLine);

}  // namespace orvo::platform
