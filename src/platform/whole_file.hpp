#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/file_id.hpp"
#include "platform/native_handle.hpp"
#include "platform/native_path.hpp"

// Files read and replaced whole, for small files that several processes share (settings):
// a version stamp to know that a file has not changed since it was parsed, an advisory lock
// that serialises writers, and replacement by rename so that no reader ever sees half a file.
namespace orvo::platform {

// One version of a file's content as the file system stamps it. Two reads with equal stamps
// saw the same bytes, except when the file was rewritten within one tick of the file system's
// clock by a program that kept its identity and size; see stampIsConclusive.
struct FileVersion {
  FileId id;
  std::int64_t size = 0;
  std::int64_t modifiedNs = 0;
  std::int64_t changedNs = 0;
  bool readOnly = false;  // the owner's write bit clear: the read-only attribute
  bool operator==(const FileVersion&) const = default;
};

// The stamp of the file a path names (links followed); nullopt when there is none.
std::optional<FileVersion> fileVersion(const NativePath& path);

// The clock that file stamps are taken from, in nanoseconds.
std::int64_t stampClockNs();

// Whether equal stamps prove equal content for a file whose bytes were read (or compared) at
// readAtNs. A change within the same tick of the file system's coarse clock as the read can
// keep every part of the stamp; once a read lies a whole tick after the file's last change,
// any later change must move its times on.
bool stampIsConclusive(const FileVersion& version, std::int64_t readAtNs);

// The whole file, with the stamp of what was read; error is a Windows error number
// (2 missing, 3 no such directory, 5 denied) when nullopt.
std::optional<std::string> readWholeFile(const NativePath& path, FileVersion* version,
                                         std::uint32_t& error);

// The path a write goes to: through symbolic links to the file they name, which need not exist.
NativePath writeTarget(const NativePath& path);

// An exclusive advisory lock held by the writers of one file while they read, change and
// replace it. It lives on the directory, because the file itself is replaced (a lock on it
// would stay with the old inode) and may not exist yet.
class WriterLock {
 public:
  WriterLock() = default;
  WriterLock(const WriterLock&) = delete;
  WriterLock& operator=(const WriterLock&) = delete;
  ~WriterLock();
  // Waits for the lock. False, with a Windows error number, when the directory is missing (3)
  // or cannot be opened (5). A file system that cannot lock gives true without a lock.
  bool acquire(const NativePath& file, std::uint32_t& error);

 private:
  NativeHandle handle_ = kInvalidHandle;
};

// Replaces the file's content as one step, as a Replacement (replacement.hpp) does: a file the
// caller may not write is refused with 5 and left alone. Call with the WriterLock held: the
// temporary files that killed writers left beside the file are removed first. Returns the new
// stamp, or nullopt with a Windows error number; the old file is then as it was.
std::optional<FileVersion> replaceWholeFile(const NativePath& path, std::string_view bytes,
                                            std::uint32_t& error);

}  // namespace orvo::platform
