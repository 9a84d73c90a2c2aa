#include "text/path_compact.hpp"

namespace orvo::text {

namespace {

constexpr std::u16string_view kEllipsis = u"...";

bool isComponentEnd(char16_t c) { return c == u'\\' || c == u'/' || c == u':'; }

// Start of the file name: just after the last separator that is followed by something other
// than another separator. A trailing separator therefore does not start an (empty) name, and
// a path without such a separator is all name.
std::size_t fileNameStart(std::u16string_view path) {
  std::size_t start = 0;
  for (std::size_t i = 0; i + 1 < path.size(); ++i) {
    if (isComponentEnd(path[i]) && path[i + 1] != u'\\' && path[i + 1] != u'/') start = i + 1;
  }
  return start;
}

String dots(std::uint32_t cchMax) { return String(cchMax - 1, u'.'); }

}  // namespace

String PathCompactPathEx(std::u16string_view path, std::uint32_t cchMax) {
  // Sizes below count the terminating null as the platform does, which is why a path is only
  // returned whole when it is at least two characters shorter than cchMax.
  if (cchMax < 2) return {};
  const std::size_t length = path.size() + 1;
  if (length < cchMax) return String(path);

  std::size_t file = fileNameStart(path);
  std::size_t fileLength = length - file;

  if (fileLength == length) {
    // No separator: the name's head and "...".
    if (cchMax <= 4) return dots(cchMax);
    String out(path.substr(0, cchMax - 4));
    out += kEllipsis;
    return out;
  }

  // From here the kept tail starts with the separator in front of the name.
  --file;
  ++fileLength;

  if (fileLength + 3 > cchMax) {
    // Not even "..." + separator + name fits: "...", the separator, the name's head, "...".
    if (cchMax <= 4) return dots(cchMax);
    String out(kEllipsis);
    out += path[file++];
    std::uint32_t room = cchMax - 4;
    if (room <= 4) return out + dots(room);
    room -= 4;
    out += path.substr(file, room);
    out += kEllipsis;
    return out;
  }

  // The path's head, cut wherever it has to be (even inside a component), "..." and the tail.
  const std::size_t head = cchMax - fileLength - 3;
  String out(path.substr(0, head));
  out += kEllipsis;
  out += path.substr(file);
  return out;
}

}  // namespace orvo::text
