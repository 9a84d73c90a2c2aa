#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "orvogeneric/system_errors.hpp"
#include "orvogeneric/types.hpp"
#include "platform/file_id.hpp"
#include "platform/native_handle.hpp"
#include "platform/native_path.hpp"

// Files as the library's file procedures see them, in the platform's terms: Windows error
// numbers, attributes, dispositions and sharing. Paths may use "\" or "/".
namespace orvo::platform {

// Windows file attributes of a path: 16 directory, 1 read-only, 128 normal; nullopt when the
// path cannot be examined (missing, or a directory on the way cannot be searched).
inline constexpr std::int32_t kAttributeReadOnly = 1;
inline constexpr std::int32_t kAttributeDirectory = 16;
inline constexpr std::int32_t kAttributeNormal = 128;
std::optional<std::int32_t> fileAttributes(std::u16string_view path);

// Size in bytes of the file at the path; nullopt when it cannot be examined.
std::optional<std::int64_t> fileSize(std::u16string_view path);

// The Windows error numbers the file procedures report and test for are public.
using orvo::kErrorAccessDenied;
using orvo::kErrorAlreadyExists;
using orvo::kErrorDiskFull;
using orvo::kErrorFileExists;
using orvo::kErrorFileNotFound;
using orvo::kErrorGenFailure;
using orvo::kErrorNotEnoughMemory;
using orvo::kErrorPathNotFound;
using orvo::kErrorSharingViolation;

// The platform's text for a Windows error number, as FormatMessage gives it ("" when none).
String systemErrorText(std::uint32_t error);

enum class Disposition : std::uint32_t {
  CreateNew = 1,
  CreateAlways = 2,
  OpenExisting = 3,
  OpenAlways = 4,
  TruncateExisting = 5,
};

enum class Access : std::uint32_t { Read = 1, Write = 2, ReadWrite = 3 };

// What other openers may do while the file is open. POSIX has no mandatory sharing modes: there
// the mode documents the intent and is not enforced.
enum class Share : std::uint32_t { None = 0, Read = 1, Write = 2, ReadWrite = 3 };

struct OpenOptions {
  Access access = Access::Read;
  Disposition disposition = Disposition::OpenExisting;
  Share share = Share::Read;
  bool sequential = false;  // a hint that the file is read from start to end
};

enum class SeekOrigin { Begin, Current, End };

// An open file.
class File {
 public:
  File() = default;
  File(const File&) = delete;
  File& operator=(const File&) = delete;
  File(File&& other) noexcept;
  File& operator=(File&& other) noexcept;
  ~File();

  // Opens with read and/or write access; on failure lastError() says why (2, 3, 5, 80, ...).
  // existed tells whether the file was there before (the platform's 183 on success).
  bool open(std::u16string_view path, const OpenOptions& options, bool* existed = nullptr);
  // Opens for appending: every write goes to the end of the file as it is then, in one step,
  // so that lines written by several processes never overwrite or cut into each other.
  bool openForAppend(std::u16string_view path, bool create);
  [[nodiscard]] bool isOpen() const noexcept { return handle_ != kInvalidHandle; }
  // Bytes read, 0 at the end, -1 on failure.
  std::int64_t read(std::span<std::uint8_t> buffer);
  // Everything from the current position to the end of the file, however its size changed
  // since it was taken (a file that shrank gives what is there, one that reports size 0 what
  // it holds). False on a read failure.
  bool readToEnd(std::vector<std::uint8_t>& out);
  bool writeAll(std::span<const std::uint8_t> bytes);
  bool seek(std::int64_t offset, SeekOrigin origin);
  [[nodiscard]] std::int64_t position() const;
  [[nodiscard]] std::optional<std::int64_t> size() const;
  bool flush();
  void close();
  [[nodiscard]] std::uint32_t lastError() const noexcept { return lastError_; }

 private:
  [[nodiscard]] int fd() const noexcept { return static_cast<int>(handle_); }
  // Records why a call failed, for lastError() and for the thread's last error.
  void fail(std::uint32_t error) noexcept;
  NativeHandle handle_ = kInvalidHandle;
  std::uint32_t lastError_ = 0;
};

// Reads up to count bytes from the start of the file; nullopt when it cannot be opened or read.
std::optional<std::string> readFilePrefix(std::u16string_view path, std::size_t count);

// Deletes a file; false when it could not be. A read-only file is refused, as the platform
// refuses it, even where the directory would allow the unlink.
bool deleteFile(std::u16string_view path);

// The platform's directory test: true for an existing directory (a link to one included).
bool isDirectory(std::u16string_view path);

// Copies a file's bytes, permissions and modification time, as CopyFile does. With
// failIfExists an existing target is refused (80); a read-only or directory target is refused
// with 5 whatever the flag; a partly written target is removed. error receives the Windows
// error number on failure.
bool copyFile(std::u16string_view from, std::u16string_view to, bool failIfExists,
              std::uint32_t* error = nullptr);

// The canonical absolute form of an existing path (links resolved); nullopt when it does not
// exist.
std::optional<String> canonicalPath(std::u16string_view path);

std::optional<FileId> fileId(std::u16string_view path);

// One entry of a directory listing; "." and ".." are never listed.
struct DirectoryEntry {
  String name;
  bool directory = false;
};

// The entries of a directory whose names match a Windows wildcard pattern ("*.*", "*.txt",
// "a?c"), in the order the platform's directory enumeration gives them: names compared
// case-insensitively, code unit by code unit, as the Windows file system keeps its
// directories. nullopt when the directory cannot be listed.
std::optional<std::vector<DirectoryEntry>> listDirectory(std::u16string_view directory,
                                                         std::u16string_view pattern);

// The Windows wildcard test of FindFirstFile for one name: "*" and "?" as the platform's
// directory search interprets them (a "*" before a dot stops at the name's last dot, a "?" or
// "." before the end also matches nothing, "*.*" is "*"), case-insensitive.
bool matchesWildcard(std::u16string_view name, std::u16string_view pattern);

}  // namespace orvo::platform
