#include "files/encoding.hpp"
#include "files/fileutils.hpp"
#include "files/log.hpp"
#include "files/textfiles.hpp"
#include "files/textio.hpp"
#include "frame/state.hpp"
#include "orvogeneric/classes.hpp"

namespace orvo {

// Every new FileSubs object puts the BOM setting and the line terminator back to their
// defaults, whatever an earlier caller set: callers rely on it and it is kept.
void FileSubs::Class_Initialize() {
  frame::StaticGlobals& globals = frame::StaticGlobals::instance();
  globals.setWriteUnicodeBOM(true);
  globals.setEol(u"\r\n");
}

String FileSubs::EOL() { return frame::StaticGlobals::instance().eol(); }
void FileSubs::EOL(const String& value) { frame::StaticGlobals::instance().setEol(value); }
VBool FileSubs::WriteUnicodeBOM() {
  return toVBool(frame::StaticGlobals::instance().writeUnicodeBOM());
}
void FileSubs::WriteUnicodeBOM(VBool value) {
  frame::StaticGlobals::instance().setWriteUnicodeBOM(nonZero(value));
}

enumFileEncoding FileSubs::TextFileEncoding(const String& FileName, std::int32_t NumBytes) {
  return files::TextFileEncoding(FileName, NumBytes);
}
VBool FileSubs::FileIsUTF8(const String& FilePath, enumFileEncoding* FileEncoding) {
  return files::FileIsUTF8(FilePath, FileEncoding);
}
VBool FileSubs::FileIsUTF16LE(const String& FilePath, enumFileEncoding* FileEncoding) {
  return files::FileIsUTF16LE(FilePath, FileEncoding);
}
VBool FileSubs::FileIsUnicode(const String& FilePath, enumFileEncoding* FileEncoding) {
  return files::FileIsUnicode(FilePath, FileEncoding);
}
Variant FileSubs::DefaultBOM(enumFileEncoding FileEncoding) {
  return Variant(files::DefaultBOM(FileEncoding));
}
std::int32_t FileSubs::DefaultBOMSize(enumFileEncoding FileEncoding) {
  return files::DefaultBOMSize(FileEncoding);
}
enumCodePages FileSubs::CodePageFromEncoding(enumFileEncoding Encoding) {
  return files::CodePageFromEncoding(Encoding);
}
enumFileEncoding FileSubs::EncodingFromCodePage(enumCodePages CodePage) {
  return files::EncodingFromCodePage(CodePage);
}
std::int32_t FileSubs::CodePageCheck(std::int32_t CodePageSupplied, enumFileEncoding FileEncoding) {
  return files::CodePageCheck(CodePageSupplied, FileEncoding);
}
void FileSubs::SetTextFileEncoding(const Variant& FilePath, enumFileEncoding FileEncoding) {
  files::SetTextFileEncoding(FilePath, FileEncoding);
}
void FileSubs::ClearTextFileEncoding(const Variant& FilePath) {
  files::ClearTextFileEncoding(FilePath);
}
String FileSubs::FromBytesToVBString(SafeArray& bytes, std::int32_t CodePage) {
  return files::FromBytesToVBString(bytes, CodePage);
}
Variant FileSubs::FromVBStringToBytes(const String& str, std::int32_t CodePage) {
  return Variant(files::FromVBStringToBytes(str, CodePage));
}
String FileSubs::ReadTextFileToStringB(const String& FileName, std::int32_t* CodePage,
                                       VBool ReplaceNull, Variant* ByteArray) {
  return files::ReadTextFileToStringB(FileName, CodePage, ReplaceNull, ByteArray);
}
String FileSubs::ReadTextFileToString(const String& FileName) {
  return files::ReadTextFileToString(FileName);
}
void FileSubs::ReadTextFileToArrayB(const String& FileName, SafeArray& FileLines,
                                    std::int32_t* NumLinesReturned, std::int32_t* StartLine,
                                    std::int32_t* EndLine, std::int32_t* CodePage,
                                    VBool IgnoreBlankLines, VBool ReplaceNull) {
  files::ReadTextFileToArrayB(FileName, FileLines, NumLinesReturned, StartLine, EndLine, CodePage,
                              IgnoreBlankLines, ReplaceNull);
}
void FileSubs::ReadTextFileToArray(const String& FileName, SafeArray& FileLines,
                                   std::int32_t& NumLinesRead) {
  files::ReadTextFileToArray(FileName, FileLines, NumLinesRead);
}
void FileSubs::TextToLines(String& text, SafeArray& Lines, std::int32_t* NumLines,
                           VBool IgnoreBlankLines) {
  files::TextToLines(text, Lines, NumLines, IgnoreBlankLines);
}
std::int32_t FileSubs::FileLineCount(const String& FilePath, VBool* FileExists) {
  return files::FileLineCount(FilePath, FileExists);
}
Currency FileSubs::LOFSafe(const String& FileName, VBool* HugeFile, std::int32_t FileHandle) {
  return files::LOFSafe(FileName, HugeFile, FileHandle);
}
void FileSubs::LongsToCurrency(std::int32_t LongLow, std::int32_t LongHigh, Currency& value) {
  files::LongsToCurrency(LongLow, LongHigh, value);
}

Variant FileSubs::ReadFileToByteArray(const String& FilePath, enumFileEncoding* FileEncoding) {
  return files::ReadFileToByteArray(FilePath, FileEncoding);
}
void FileSubs::WriteStringToTextFileB(const String& CharString, const String& File,
                                      std::int32_t CodePage, VBool PutByte) {
  files::WriteStringToTextFileB(CharString, File, CodePage, PutByte);
}
void FileSubs::WriteStringToTextFile(const String& CharString, const String& File) {
  files::WriteStringToTextFile(CharString, File);
}
void FileSubs::WriteStringArrayToTextFileB(SafeArray& FileLines, const String& File,
                                           std::int32_t CodePage, VBool PutByte) {
  files::WriteStringArrayToTextFileB(FileLines, File, CodePage, PutByte);
}
void FileSubs::WriteStringArrayToTextFile(SafeArray& FileLines, const String& File) {
  files::WriteStringArrayToTextFile(FileLines, File);
}
void FileSubs::PrintB(const String& sString, const String& FilePath, std::int32_t CodePage,
                      VBool PutByte, VBool AppendNewLine) {
  files::PrintB(sString, FilePath, CodePage, PutByte, AppendNewLine);
}

std::int32_t FileSubs::GetAttributes(const String& Path, VBool DisplayMsg) {
  return files::GetAttributes(Path, DisplayMsg);
}
VBool FileSubs::FileExists(const String& FileName, VBool ShowMsg) {
  return files::FileExists(FileName, ShowMsg);
}
VBool FileSubs::DirExists(const String& DirPath) { return files::DirExists(DirPath); }
VBool FileSubs::PathExists(const String& TestPath, String& ExistingDirPath) {
  return files::PathExists(TestPath, ExistingDirPath);
}
String FileSubs::PathWithoutBackslash(const String& TestPath, VBool AlwaysRemove) {
  return files::PathWithoutBackslash(TestPath, AlwaysRemove);
}
VBool FileSubs::FileReadOnly(const String& File) { return files::FileReadOnly(File); }
String FileSubs::FileShortName(const String& LongFileName) {
  return files::FileShortName(LongFileName);
}
void FileSubs::SafeKill(const String& File) { files::SafeKill(File); }
VBool FileSubs::bFileCopy(const String& FileFrom, const String& FileTo, VBool Overwrite) {
  return files::bFileCopy(FileFrom, FileTo, Overwrite);
}
String FileSubs::FileBackup(const String& FileName, const String& NamePostfix,
                            const String& ExtPrefix) {
  return files::FileBackup(FileName, NamePostfix, ExtPrefix);
}
String FileSubs::TempDir() { return files::TempDir(); }
String FileSubs::WinDir() { return files::WinDir(); }
void FileSubs::OpenDocument(const String& Document, std::int32_t hwnd, VBool& Success,
                            String& Error) {
  files::OpenDocument(Document, hwnd, Success, Error);
}
String FileSubs::ExpandInstallDir(const String& Path, const String& InstallDir) {
  return files::ExpandInstallDir(Path, InstallDir);
}
String FileSubs::gsINSTALL_DIR() { return String(files::gsINSTALL_DIR); }
VBool FileSubs::IsEqualFile(const String& Path1, const String& Path2) {
  return files::IsEqualFile(Path1, Path2);
}
void FileSubs::ListFiles(const String& StartDir, SafeArray& Files, std::int32_t& NumFiles,
                         VBool Recurse, const String& FileFilter) {
  files::ListFiles(StartDir, Files, NumFiles, Recurse, FileFilter);
}
void FileSubs::AutocompleteFilePaths(std::int32_t hwnd) { files::AutocompleteFilePaths(hwnd); }

// The warning level is accepted and ignored, deliberately: callers pass levels that mean
// nothing to the log.
void FileSubs::AddToLog(const String& sMsg, std::int32_t /*WarningLevel*/) {
  files::AddToLogB_Worker(sMsg, u"", 0, VBool::False);
}
void FileSubs::AddToLogB(const String& sMsg, const String& Prefix, std::int32_t CodePage,
                         VBool PutByte, std::int32_t /*WarningLevel*/) {
  files::AddToLogB_Worker(sMsg, Prefix, CodePage, PutByte);
}
String FileSubs::LogFile() { return files::LogFile(); }

}  // namespace orvo
