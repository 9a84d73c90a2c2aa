#pragma once

#include <cstdint>
#include <string_view>

#include "orvogeneric/types.hpp"

namespace orvo::text {

// The platform's display compaction of a path (PathCompactPathExW): the result, with its
// terminating null, fits into cchMax characters. Middle parts give way to "..." while the last
// separator and the file name are kept as long as they fit; then the file name itself is cut.
// "\", "/" and ":" separate components. The text is handled in UTF-16 code units, so a cut may
// split a surrogate pair, as the platform's does.
String PathCompactPathEx(std::u16string_view path, std::uint32_t cchMax);

}  // namespace orvo::text
