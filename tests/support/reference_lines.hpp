#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// The lines of a text as the line readers must give them: CR LF, CR and LF each end a line, and
// a terminator at the very end does not start another. The yardstick the tests and the fuzz
// target hold the big-file reader to.
namespace orvo::test {

inline std::vector<std::u16string> referenceLines(std::u16string_view text) {
  std::vector<std::u16string> lines;
  std::u16string current;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == u'\r' || text[i] == u'\n') {
      lines.push_back(current);
      current.clear();
      if (text[i] == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n') ++i;
    } else {
      current += text[i];
    }
  }
  if (!current.empty()) lines.push_back(current);
  return lines;
}

}  // namespace orvo::test
