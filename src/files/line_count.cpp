#include "orvogeneric/line_count.hpp"

#include "files/textfiles.hpp"
#include "orvogeneric/types.hpp"

namespace orvo {

std::int64_t CountFileLines(const std::filesystem::path& file,
                            const std::function<void(std::int64_t)>& progress) {
  return files::fileLineCount64(fromSystemBytes(file.string()), progress);
}

}  // namespace orvo
