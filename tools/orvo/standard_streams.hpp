#pragma once

#include <string>

// "-" as standard input or output for the verbs that work on files. The library reads and
// writes files by name (regular files only, never blocking on a pipe), so standard input is
// first copied whole into a private temporary file, and an output meant for standard output is
// written to one and then copied out: memory stays a buffer whatever the size.
namespace orvo::cli {

class ScratchFile {
 public:
  ScratchFile() = default;
  ScratchFile(const ScratchFile&) = delete;
  ScratchFile& operator=(const ScratchFile&) = delete;
  ~ScratchFile();

  // A new empty file, created exclusively and readable by this user only, in $TMPDIR (or
  // /tmp); false with errno set when it cannot be made.
  bool create();
  // Copies all of standard input into the file; false with errno set on a read or write error.
  bool fillFromStandardInput();
  // Copies the whole file to standard output; false with errno set when the output refuses it.
  bool copyToStandardOutput() const;
  [[nodiscard]] const std::string& path() const noexcept { return path_; }

 private:
  std::string path_;
  int fd_ = -1;
};

}  // namespace orvo::cli
