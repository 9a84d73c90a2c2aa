#include "files/textfiles.hpp"

#include <algorithm>
#include <mutex>

#include "files/HugeTextFile.hpp"
#include "files/encoding.hpp"
#include "files/fileutils.hpp"
#include "files/textio.hpp"
#include "frame/state.hpp"
#include "frame/trace.hpp"
#include "frame/traps.hpp"
#include "platform/change_monitor.hpp"
#include "platform/file.hpp"
#include "platform/last_error.hpp"
#include "platform/locale.hpp"
#include "platform/replacement.hpp"
#include "platform/whole_file.hpp"
#include "runtime/convert.hpp"
#include "runtime/errors.hpp"
#include "runtime/strings.hpp"

namespace orvo::files {

namespace {

constexpr platform::OpenOptions kReadSequential{
    platform::Access::Read, platform::Disposition::OpenExisting, platform::Share::Read, true};
constexpr platform::OpenOptions kWriteNew{
    platform::Access::Write, platform::Disposition::CreateAlways, platform::Share::Read, false};

constexpr std::int64_t kTwoGigabytes = 2147483647;

void replaceNulls(String& text) { std::replace(text.begin(), text.end(), u'\0', u' '); }

}  // namespace

void LongsToCurrency(std::int32_t LongLow, std::int32_t LongHigh, Currency& value) {
  // The base is 4294967295 (built as 2147483647 + 2147483647 + 1), not 2^32: lengths of 4 GB
  // and more come out one byte short per 4 GB, as they always have.
  const double low = LongLow < 0 ? LongLow + 4294967296.0 : static_cast<double>(LongLow);
  value = Currency::fromDouble(static_cast<double>(LongHigh) * 4294967295.0 + low);
}

Currency LOFSafe(const String& FileName, VBool* HugeFile, std::int32_t FileHandle) {
  return frame::trap(u"LOFSafe", [&] {
    if (HugeFile != nullptr) *HugeFile = VBool::False;
    if (!isTrue(FileExists(FileName))) return Currency{};
    std::int64_t length = 0;
    if (FileHandle < 0) {
      const auto size = platform::fileSize(FileName);
      if (!size) return Currency{};
      length = *size;
    } else if (FileHandle == 0) {
      return Currency{};
    } else {
      // Another open file's handle is not a length this library can look up on POSIX: the
      // named file is measured instead.
      length = platform::fileSize(FileName).value_or(0);
    }
    Currency value;
    LongsToCurrency(static_cast<std::int32_t>(static_cast<std::uint32_t>(length & 0xFFFFFFFF)),
                    static_cast<std::int32_t>(length >> 32), value);
    if (HugeFile != nullptr) *HugeFile = toVBool(value.scaled > kTwoGigabytes * Currency::scale);
    return value;
  });
}

String ReadTextFileToStringB(const String& FileName, std::int32_t* CodePage, VBool ReplaceNull,
                             Variant* ByteArray) {
  return frame::trap(u"ReadTextFileToStringB", [&]() -> String {
    if (ByteArray != nullptr) *ByteArray = Variant(SafeArray(VarType::Byte));
    if (!isTrue(FileExists(FileName))) runtime::raise(runtime::errFileNotFound);
    const Currency length = LOFSafe(FileName);
    if (length.scaled > kTwoGigabytes * Currency::scale) {
      throw Error(kErrorFileTooLarge,
                  u"File is too large (>2GB)\r\nFileName = '" + FileName + u"'");
    }
    // Detection, then the bytes after the BOM.
    const enumFileEncoding encoding = TextFileEncoding(FileName, kDefaultSampleBytes);
    const std::int32_t codePage = CodePageCheck(CodePage != nullptr ? *CodePage : 0, encoding);
    if (CodePage != nullptr) *CodePage = codePage;
    platform::File file;
    if (!file.open(FileName, kReadSequential)) {
      runtime::raise(file.lastError() == platform::kErrorAccessDenied ? runtime::errPermissionDenied
                                                                      : runtime::errPathFileAccess);
    }
    std::vector<std::uint8_t> bytes;
    if (!file.seek(DefaultBOMSize(encoding), platform::SeekOrigin::Begin) ||
        !file.readToEnd(bytes)) {
      runtime::raise(runtime::errPathFileAccess);
    }
    String text;
    try {
      decodeBytes(bytes, codePage, text);
    } catch (const std::bad_alloc&) {
      throw Error(kErrorFileTooLargeToRead,
                  u"File is too large to read\r\nFileName = '" + FileName + u"'");
    }
    if (nonZero(ReplaceNull)) replaceNulls(text);
    if (ByteArray != nullptr) *ByteArray = Variant(SafeArray(1, std::move(bytes)));
    return text;
  });
}

String ReadTextFileToString(const String& FileName) {
  std::int32_t codePage = 0;
  return ReadTextFileToStringB(FileName, &codePage, VBool::True);
}

std::int64_t fileLineCount64(const String& FilePath,
                             const std::function<void(std::int64_t)>& progress) {
  HugeTextFile reader;
  if (progress) reader.setReadProgress(progress);
  std::int32_t codePage = 0;
  // The count does not depend on the buffer's size. Most of a count's time is the kernel copying
  // the file into the buffer, and that copy is fastest into a buffer that stays in the
  // processor's cache: 64 KiB was the quickest of the sizes measured (against 256 KiB and 1 MiB).
  reader.FileOpen(FilePath, HugeTextFile::Read, 0, -1, 1 << 16, &codePage);
  reader.LineSkip(INT64_MAX);
  const std::int64_t count = reader.LineCount();
  reader.FileClose(true);
  return count;
}

std::int32_t FileLineCount(const String& FilePath, VBool* FileExists) {
  return frame::trap(u"FileLineCount", [&]() -> std::int32_t {
    const bool exists = isTrue(files::FileExists(FilePath));
    if (FileExists != nullptr) *FileExists = toVBool(exists);
    if (!exists) return 0;
    const std::int64_t count = fileLineCount64(FilePath);
    if (count > INT32_MAX) runtime::raise(runtime::errOverflow);
    return static_cast<std::int32_t>(count);
  });
}

void ReadTextFileToArrayB(const String& FileName, SafeArray& FileLines,
                          std::int32_t* NumLinesReturned, std::int32_t* StartLine,
                          std::int32_t* EndLine, std::int32_t* CodePage, VBool IgnoreBlankLines,
                          VBool ReplaceNull) {
  frame::trap(u"ReadTextFileToArrayB", [&] {
    if (!isTrue(FileExists(FileName))) {
      throw Error(runtime::errFileNotFound, u"File not found\r\n'" + FileName + u"'");
    }
    std::int32_t start = StartLine != nullptr ? *StartLine : 0;
    std::int32_t end = EndLine != nullptr ? *EndLine : 0;
    if (start < 1) start = 1;
    if (StartLine != nullptr) *StartLine = start;
    if (end < 1) {
      end = FileLineCount(FileName);
      if (EndLine != nullptr) *EndLine = end;
      if (end < 1 || end < start) return;
    }
    const std::int64_t wanted = static_cast<std::int64_t>(end) - start + 1;
    if (wanted < 1) return;
    PackedStrings lines;
    // The range asked for may run far past the file's end: no more than a million up front.
    lines.reserve(static_cast<std::size_t>(std::min<std::int64_t>(wanted, 1 << 20)));
    HugeTextFile reader;
    std::int32_t codePage = CodePage != nullptr ? *CodePage : 0;
    // A megabyte rather than the original 32 KiB: the same lines, a 32nd of the reads.
    reader.FileOpen(FileName, HugeTextFile::Read, 0, -1, 1 << 20, &codePage);
    reader.LineSkip(static_cast<std::int64_t>(start) - 1);
    String line;
    while (!reader.EndOfFile() && static_cast<std::int64_t>(lines.size()) < wanted) {
      if (!reader.LineRead(line)) break;
      if (nonZero(ReplaceNull)) replaceNulls(line);
      if (nonZero(IgnoreBlankLines) && line.empty()) continue;
      lines.push_back(line);
    }
    const std::int64_t reached = reader.LineCount();  // skipped lines included
    reader.FileClose(true);
    if (NumLinesReturned != nullptr) *NumLinesReturned = static_cast<std::int32_t>(lines.size());
    if (EndLine != nullptr) *EndLine = static_cast<std::int32_t>(reached);
    if (CodePage != nullptr) *CodePage = codePage;
    lines.shrink_to_fit();
    FileLines = SafeArray(0, std::move(lines));
  });
}

void ReadTextFileToArray(const String& FileName, SafeArray& FileLines, std::int32_t& NumLinesRead) {
  std::int32_t start = 0;
  std::int32_t end = 0;
  std::int32_t codePage = 0;
  ReadTextFileToArrayB(FileName, FileLines, &NumLinesRead, &start, &end, &codePage, VBool::False,
                       VBool::True);
}

void TextToLines(String& text, SafeArray& Lines, std::int32_t* NumLines, VBool IgnoreBlankLines) {
  frame::trap(u"TextToLines", [&] {
    text = runtime::Replace(text, u"\r\n", u"\n");
    text = runtime::Replace(text, u"\n\r", u"\n");
    text = runtime::Replace(text, u"\r", u"\n");
    if (nonZero(IgnoreBlankLines)) {
      std::size_t before = 0;
      do {
        before = text.size();
        text = runtime::Replace(text, u"\n\n", u"\n");
      } while (text.size() != before);
      if (!text.empty() && text.front() == u'\n') text.erase(0, 1);
      if (!text.empty() && text.back() == u'\n') text.pop_back();
    }
    std::vector<String> lines;
    if (!text.empty()) lines = runtime::Split(text, u"\n");
    if (NumLines != nullptr) *NumLines = static_cast<std::int32_t>(lines.size());
    Lines = SafeArray(0, lines);
  });
}

namespace {

bool writeBytes(platform::File& file, std::string_view bytes) {
  return file.writeAll(
      std::span(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()));
}

}  // namespace

bool OpenForInputB(const String& path, platform::File& file, enumFileEncoding& encoding) {
  if (!isTrue(FileExists(path))) return false;
  encoding = TextFileEncoding(path, kDefaultSampleBytes);
  if (!file.open(path, kReadSequential)) return false;
  return file.seek(DefaultBOMSize(encoding), platform::SeekOrigin::Begin);
}

bool OpenForOutputB(const String& path, platform::File& file, enumFileEncoding encoding) {
  SafeKill(path);
  if (!file.open(path, kWriteNew)) return false;
  return writeBytes(file, bomBytes(encoding));
}

bool OpenForAppendB(const String& path, platform::File& file, enumFileEncoding& encoding,
                    bool create) {
  if (!isTrue(FileExists(path))) {
    if (!create) {
      frame::LibraryTrace(u"OpenForAppendB: file does not exist: " + path);
      return false;
    }
    if (encoding < encBIN || encoding > encUTF32_BE) encoding = encANSI;
    return OpenForOutputB(path, file, encoding);
  }
  encoding = TextFileEncoding(path, kDefaultSampleBytes);
  const auto length = platform::fileSize(path);
  if (!length || *length > kTwoGigabytes) return false;
  if (!file.openForAppend(path, false)) return false;
  return *length > 0 || writeBytes(file, bomBytes(encoding));
}

Variant ReadFileToByteArray(const String& FilePath, enumFileEncoding* FileEncoding) {
  return frame::trap(u"ReadFileToByteArray", [&]() -> Variant {
    if (!isTrue(FileExists(FilePath))) runtime::raise(runtime::errFileNotFound);
    if (LOFSafe(FilePath).scaled > kTwoGigabytes * Currency::scale) {
      throw Error(kErrorFileTooLarge,
                  u"File is too large (>2GB)\r\nFileName = '" + FilePath + u"'");
    }
    platform::File file;
    enumFileEncoding encoding = encANSI;
    if (!OpenForInputB(FilePath, file, encoding)) runtime::raise(runtime::errPathFileAccess);
    if (FileEncoding != nullptr) *FileEncoding = encoding;
    std::vector<std::uint8_t> bytes;
    if (!file.readToEnd(bytes)) runtime::raise(runtime::errPathFileAccess);
    if (bytes.empty()) return Variant(SafeArray(VarType::Byte, 0, {}));
    return Variant(SafeArray(1, std::move(bytes)));
  });
}

void WriteStringToTextFileB(const String& CharString, const String& File, std::int32_t CodePage,
                            VBool PutByte) {
  frame::trap(u"WriteStringToTextFileB", [&] {
    // The platform's way was to delete the file and write a new one, so a failed write lost
    // it. The new file is written beside it and renamed over it instead: the same new file
    // (a link at the name replaced, new permissions), and the old one whole on failure.
    std::string bytes;
    if (!nonZero(PutByte)) {
      // Text output: the system's ANSI code page, nothing added.
      encodeText(CharString, CP_ACP, bytes);
    } else {
      const enumFileEncoding encoding = EncodingFromCodePage(CodePage);
      bytes = bomBytes(encoding);
      encodeText(CharString, CodePageCheck(CodePage, encoding), bytes);
    }
    // Whatever was cached of the old file's encoding is wrong for the new one.
    ClearTextFileEncoding(Variant(File));
    platform::Replacement out({.followLinks = false, .keepAttributes = false});
    std::uint32_t error = 0;
    if (!out.begin(platform::NativePath(File), error)) {
      if (!nonZero(PutByte)) runtime::raise(runtime::errPathNotFound);
      frame::LibraryTrace(u"WriteStringToTextFileB failed on OpenForOutputB, file '" + File + u"'");
      return;
    }
    const bool written =
        out.write({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()}, error) &&
        out.commit(error);
    if (!written) runtime::raise(runtime::errPathFileAccess);
  });
}

void WriteStringToTextFile(const String& CharString, const String& File) {
  WriteStringToTextFileB(CharString, File, 0, VBool::True);
}

namespace {
String joinLines(const SafeArray& lines) {
  String text;
  if (!lines.dimensioned() || lines.size() == 0) return text;
  const String eol = frame::StaticGlobals::instance().eol();
  const auto rs = platform::userRegionalSettings();
  for (std::int64_t i = lines.lowerBound(); i <= lines.upperBound(); ++i) {
    if (i > lines.lowerBound()) text += eol;
    text += runtime::CStr(lines.get(static_cast<std::int32_t>(i)), *rs);
  }
  return text;
}
}  // namespace

void WriteStringArrayToTextFileB(const SafeArray& FileLines, const String& File,
                                 std::int32_t CodePage, VBool PutByte) {
  WriteStringToTextFileB(joinLines(FileLines), File, CodePage, PutByte);
}

void WriteStringArrayToTextFile(const SafeArray& FileLines, const String& File) {
  WriteStringToTextFileB(joinLines(FileLines), File, 0, VBool::True);
}

namespace {

// The file last written by PrintToExistingFile. Opening the file for every line, as the
// original did, costs more than the line. Held open, the file is watched for what an open
// would have told: whether the name still leads to it and whether it may still be written.
// While the watch is quiet a line costs one look at the process's change notifications and the
// write; a file that cannot be watched is asked for its stamp (one stat) at every line.
struct HeldFile {
  std::mutex mutex;
  String path;
  platform::FileId id{};
  platform::File file;
  std::shared_ptr<const platform::FileWatch> watch;
  std::uint64_t seenChanges = 0;
};

HeldFile& heldFile() {
  static HeldFile held;
  return held;
}

}  // namespace

bool PrintToExistingFile(const String& sString, const String& FilePath, std::int32_t CodePage,
                         VBool PutByte, VBool AppendNewLine) {
  return PrintToExistingFile([&] { return sString; }, FilePath, CodePage, PutByte, AppendNewLine);
}

bool PrintToExistingFile(const std::function<String()>& makeText, const String& FilePath,
                         std::int32_t CodePage, VBool PutByte, VBool AppendNewLine) {
  return frame::trap(u"PrintB", [&] {
    HeldFile& held = heldFile();
    platform::collectChanges();
    bool trusted = false;
    {
      const std::lock_guard lock(held.mutex);
      trusted = held.file.isOpen() && held.watch != nullptr && held.path == FilePath &&
                held.watch->changes() == held.seenChanges;
    }
    std::optional<platform::FileId> id;
    std::shared_ptr<const platform::FileWatch> watch;
    std::uint64_t seen = 0;
    if (!trusted) {
      const platform::NativePath path(FilePath);
      // Watched before the look, so that a change after the look is counted.
      watch = platform::watchFile(path, platform::WatchFor::NameAndAttributes);
      seen = watch != nullptr ? watch->changes() : 0;
      const auto version = platform::fileVersion(path);
      if (!version || version->readOnly) {
        const std::lock_guard lock(held.mutex);
        if (held.path == FilePath) held.file.close();
        if (version) {
          platform::setLastError(platform::kErrorAccessDenied);
        } else {
          // No regular file by that name: the open says why (missing, a folder, a FIFO) in
          // the same words as every other open.
          platform::File reason;
          if (reason.openForAppend(FilePath, false)) platform::setLastError(0);
        }
        return false;
      }
      id = version->id;
    }
    // The bytes are made before the file is taken: finding the log's encoding traces, and the
    // trace is a line of this same log.
    const String sString = makeText();
    const bool byteMode = nonZero(PutByte);
    enumFileEncoding encoding = encANSI;
    std::string body;
    if (!byteMode) {
      encodeText(sString + u"\r\n", CP_ACP, body);
    } else {
      const auto remembered = rememberedEncoding(FilePath);
      encoding = remembered ? *remembered : TextFileEncoding(FilePath, kDefaultSampleBytes);
      String text = sString;
      if (nonZero(AppendNewLine)) text += frame::StaticGlobals::instance().eol();
      encodeText(text, CodePageCheck(CodePage, encoding), body);
    }
    bool tooLarge = false;
    {
      const std::lock_guard lock(held.mutex);
      if (!held.file.isOpen() || held.path != FilePath || (id && held.id != *id)) {
        held.file.close();
        held.watch.reset();
        if (!held.file.openForAppend(FilePath, false)) return false;
        held.path = FilePath;
        if (id) {
          held.id = *id;
        } else if (const auto now = platform::fileId(FilePath)) {
          held.id = *now;
        }
      }
      // A watch taken before this call's look at the name stands for the file held now.
      if (!trusted) {
        held.watch = std::move(watch);
        held.seenChanges = seen;
      }
      std::string bytes;
      if (byteMode) {
        // Only the size of the held file is asked: asking for its times would make the system
        // stamp the next write with a fine-grained time, an inode update at every line.
        const std::int64_t size = held.file.size().value_or(0);
        tooLarge = size > kTwoGigabytes;
        if (size == 0) bytes = bomBytes(encoding);
      }
      bytes += body;
      if (!tooLarge && !writeBytes(held.file, bytes)) runtime::raise(runtime::errPathFileAccess);
    }
    if (tooLarge) frame::LibraryTrace(u"PrintB failed on OpenForAppendB, file '" + FilePath + u"'");
    return true;
  });
}

void PrintB(const String& sString, const String& FilePath, std::int32_t CodePage, VBool PutByte,
            VBool AppendNewLine) {
  frame::trap(u"PrintB", [&] {
    platform::File file;
    if (!nonZero(PutByte)) {
      // A text line: created if absent, always terminated with CR LF, in the ANSI code page.
      if (!file.openForAppend(FilePath, true)) runtime::raise(runtime::errPathNotFound);
      std::string bytes;
      encodeText(sString + u"\r\n", CP_ACP, bytes);
      if (!writeBytes(file, bytes)) runtime::raise(runtime::errPathFileAccess);
      return;
    }
    enumFileEncoding encoding = encANSI;
    if (!OpenForAppendB(FilePath, file, encoding, false)) {
      frame::LibraryTrace(u"PrintB failed on OpenForAppendB, file '" + FilePath + u"'");
      return;
    }
    String text = sString;
    if (nonZero(AppendNewLine)) text += frame::StaticGlobals::instance().eol();
    std::string bytes;
    encodeText(text, CodePageCheck(CodePage, encoding), bytes);
    if (!writeBytes(file, bytes)) runtime::raise(runtime::errPathFileAccess);
  });
}

}  // namespace orvo::files
