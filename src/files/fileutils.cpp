#include "files/fileutils.hpp"

#include "files/encoding.hpp"
#include "files/textfiles.hpp"
#include "frame/traps.hpp"
#include "platform/file.hpp"
#include "platform/locale.hpp"
#include "runtime/format.hpp"
#include "runtime/strings.hpp"
#include "text/paths.hpp"

namespace orvo::files {

std::int32_t GetAttributes(const String& Path, VBool /*DisplayMsg*/) {
  return platform::fileAttributes(runtime::Trim(Path)).value_or(-1);
}

VBool FileExists(const String& FileName, VBool ShowMsg) {
  // -1 for a missing path has every bit set, the directory bit among them.
  return toVBool((GetAttributes(FileName, ShowMsg) & platform::kAttributeDirectory) == 0);
}

VBool DirExists(const String& DirPath) {
  return toVBool(platform::isDirectory(runtime::Trim(DirPath)));
}

VBool PathExists(const String& TestPath, String& ExistingDirPath) {
  ExistingDirPath.clear();
  if (isTrue(FileExists(TestPath))) {
    String drive;
    String dir;
    text::SplitPath(TestPath, &drive, &dir);
    ExistingDirPath = drive + dir;
  } else if (const String withSeparator = text::PathWithBackslash(TestPath);
             isTrue(DirExists(withSeparator))) {
    ExistingDirPath = withSeparator;
  } else {
    // Only the immediate parent is tried: a file about to be created there passes.
    String drive;
    String dir;
    text::SplitPath(TestPath, &drive, &dir);
    if (isTrue(DirExists(drive + dir))) ExistingDirPath = drive + dir;
  }
  return toVBool(!ExistingDirPath.empty());
}

String PathWithoutBackslash(const String& TestPath, VBool AlwaysRemove) {
  return frame::trap(u"PathWithoutBackslash", [&]() -> String {
    if (TestPath.empty()) return TestPath;
    const char16_t last = TestPath.back();
    if (last != u'\\' && last != u'/') return TestPath;
    // The POSIX root is a root like "C:\": removing its separator would leave no path at all.
    if (TestPath == u"/") return TestPath;
    const bool driveRoot = TestPath.size() >= 2 && TestPath[TestPath.size() - 2] == u':';
    if (driveRoot && !nonZero(AlwaysRemove)) return TestPath;
    return TestPath.substr(0, TestPath.size() - 1);
  });
}

VBool FileReadOnly(const String& File) {
  return frame::trap(u"FileReadOnly", [&]() -> VBool {
    const std::int32_t attributes = GetAttributes(File);
    if (!isTrue(FileExists(File))) {
      if (attributes == -1) {
        frame::RaiseLibraryError(
            u"Error (FileReadOnly): No attributes can be found. The file does not exist\r\n" +
            File);
      }
      frame::RaiseLibraryError(u"Error (FileReadOnly): This is a folder, not a file.\r\n" + File);
    }
    return toVBool((attributes & platform::kAttributeReadOnly) != 0);
  });
}

String FileShortName(const String& LongFileName) {
  return frame::trap(u"FileShortName", [&]() -> String {
    // The short form of a path here is its canonical absolute form.
    const auto canonical = platform::canonicalPath(LongFileName);
    // The platform fills nothing when the answer does not fit its 256-character buffer.
    constexpr std::size_t kBuffer = 256;
    if (!canonical || canonical->size() >= kBuffer) return String();
    return runtime::UCase(*canonical);
  });
}

void SafeKill(const String& File) {
  // Failure is the expected case (most callers delete a file that may not be there) and is
  // not reported; a cached encoding would be wrong for whatever is written there next.
  try {
    platform::deleteFile(File);
    ClearTextFileEncoding(Variant(File));
  } catch (...) {  // NOLINT(bugprone-empty-catch)
  }
}

VBool bFileCopy(const String& FileFrom, const String& FileTo, VBool Overwrite) {
  try {
    if (!nonZero(Overwrite) && isTrue(FileExists(FileTo))) return VBool::False;
    return toVBool(platform::copyFile(FileFrom, FileTo, !nonZero(Overwrite)));
  } catch (...) {
    return VBool::False;
  }
}

String FileBackup(const String& FileName, const String& NamePostfix, const String& ExtPrefix) {
  return frame::trap(u"FileBackup", [&]() -> String {
    if (!isTrue(FileExists(FileName))) return String();
    String drive;
    String dir;
    String name;
    text::SplitPath(FileName, &drive, &dir, &name);
    // The file's own extension is dropped: the backup's extension is the counter.
    const auto regional = platform::userRegionalSettings();
    String candidate = FileName;
    for (std::int32_t n = -1; isTrue(FileExists(candidate)) && n < 999;) {
      ++n;
      candidate = drive;
      candidate.append(dir).append(name).append(NamePostfix).append(u".").append(ExtPrefix);
      candidate += runtime::Format(Variant(n), u"000", *regional);
    }
    return isTrue(bFileCopy(FileName, candidate, VBool::False)) ? candidate : String();
  });
}

VBool IsEqualFile(const String& Path1, const String& Path2) {
  return frame::trap(u"IsEqualFile", [&] {
    return toVBool(ReadTextFileToStringB(Path1) == ReadTextFileToStringB(Path2));
  });
}

}  // namespace orvo::files
