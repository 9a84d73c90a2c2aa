#include <vector>

#include "files/fileutils.hpp"
#include "frame/traps.hpp"
#include "platform/file.hpp"
#include "runtime/strings.hpp"
#include "text/paths.hpp"

namespace orvo::files {

namespace {

// Depth first: a directory's own files come before those of its subdirectories.
class RecursiveFileLister {
 public:
  RecursiveFileLister(bool recurse, String filter)
      : recurse_(recurse), filter_(std::move(filter)) {}

  void list(const String& directory) {
    // A link back to a directory already being listed would otherwise be followed until the
    // path no longer fits.
    const auto id = platform::fileId(directory);
    if (id) {
      for (const auto& open : ancestors_) {
        if (open == *id) return;
      }
      ancestors_.push_back(*id);
    }
    const String prefix = text::PathWithBackslash(directory);
    std::vector<String> subdirectories;
    if (const auto entries = platform::listDirectory(directory, u"*.*")) {
      for (const auto& entry : *entries) {
        if (entry.directory) subdirectories.push_back(prefix + entry.name);
      }
    }
    if (const auto entries = platform::listDirectory(directory, filter_)) {
      for (const auto& entry : *entries) {
        if (!entry.directory) files_.push_back(prefix + entry.name);
      }
    }
    if (recurse_) {
      for (const auto& subdirectory : subdirectories) list(subdirectory);
    }
    if (id) ancestors_.pop_back();
  }

  std::vector<String> take() { return std::move(files_); }

 private:
  bool recurse_;
  String filter_;
  std::vector<String> files_;
  std::vector<platform::FileId> ancestors_;
};

}  // namespace

void ListFiles(const String& StartDir, SafeArray& Files, std::int32_t& NumFiles, VBool Recurse,
               const String& FileFilter) {
  frame::trap(u"ListFiles", [&] {
    if (!isTrue(DirExists(StartDir)))
      frame::RaiseLibraryError(u"Starting directory does not exist");
    RecursiveFileLister lister(nonZero(Recurse), FileFilter);
    lister.list(runtime::Trim(StartDir));
    std::vector<String> found = lister.take();
    NumFiles = static_cast<std::int32_t>(found.size());
    Files = found.empty() ? SafeArray(0, std::vector<String>{}) : SafeArray(1, found);
  });
}

}  // namespace orvo::files
