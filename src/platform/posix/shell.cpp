#include "platform/shell.hpp"

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <string>

#include "platform/file.hpp"
#include "platform/posix/child_streams.hpp"
#include "platform/process.hpp"

namespace orvo::platform {

namespace {

constexpr std::int32_t kOpened = 42;  // any value above 32 is success
constexpr std::int32_t kFileNotFound = 2;
constexpr std::int32_t kPathNotFound = 3;
constexpr std::int32_t kOutOfMemory = 8;
constexpr std::int32_t kNoAssociation = 31;
constexpr std::int32_t kGeneralFailure = 1;  // a code the shell's table does not name

// An address ("https://...", "mailto:...") is opened by its handler, not looked up as a file;
// a single letter before the colon is a drive.
bool isAddress(std::u16string_view document) {
  const auto colon = document.find(u':');
  if (colon == std::u16string_view::npos || colon < 2) return false;
  for (std::size_t i = 0; i < colon; ++i) {
    const char16_t c = document[i];
    const bool letter = (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z');
    const bool other = (c >= u'0' && c <= u'9') || c == u'+' || c == u'-' || c == u'.';
    if (!letter && !(other && i > 0)) return false;
  }
  return true;
}

// xdg-open's exit status in the shell's terms: 2 the file does not exist, 3 no tool could be
// found to open it and 4 the opener failed (what a desktop's opener reports when no program is
// associated with the type).
std::int32_t fromOpenerStatus(int status) {
  if (!WIFEXITED(status)) return kGeneralFailure;
  switch (WEXITSTATUS(status)) {
    case 0:
      return kOpened;
    case 2:
      return kFileNotFound;
    case 3:
    case 4:
      return kNoAssociation;
    default:
      return kGeneralFailure;
  }
}

}  // namespace

std::int32_t openDocument(std::u16string_view document) {
  std::string target = toUtf8(document);
  if (!isAddress(document)) {
    target = NativePath(document).native();
    struct stat st {};
    if (document.empty() || ::stat(target.c_str(), &st) != 0) {
      const auto slash = target.find_last_of('/');
      struct stat parent {};
      const bool parentMissing = slash != std::string::npos && slash > 0 &&
                                 ::stat(target.substr(0, slash).c_str(), &parent) != 0;
      return parentMissing ? kPathNotFound : kFileNotFound;
    }
  }
  pid_t pid = 0;
  const int spawned = spawnChild({"xdg-open", target}, pid);
  if (spawned != 0) {
    // Without the desktop's opener nothing on this system is associated with any document.
    return spawned == ENOMEM ? kOutOfMemory : kNoAssociation;
  }
  // The shell returns once the program is started. xdg-open returns at once when it hands the
  // document to a desktop, but runs a terminal program in the foreground: an opener still
  // running after a short while has found its program, and is left to finish on its own.
  int status = 0;
  switch (waitBriefly(pid, std::chrono::seconds(3), status)) {
    case ChildWait::Ended:
      return fromOpenerStatus(status);
    case ChildWait::Failed:
      return kGeneralFailure;
    case ChildWait::StillRunning:
      break;
  }
  return kOpened;
}

}  // namespace orvo::platform
