#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "orvogeneric/types.hpp"
#include "orvogeneric/variant.hpp"
#include "platform/codepage.hpp"
#include "platform/file.hpp"
#include "runtime/buffer.hpp"
#include "text/line_scan.hpp"

namespace orvo::files {

// Reads a text file of any size line by line, or writes one, through a fixed-size buffer: a
// line may span any number of buffers, CR, LF and CR LF each end a line (in UTF-16 and UTF-32
// only a unit whose other bytes are zero), and counts are 64-bit. The library's own reader of
// big files; not handed out to callers.
class HugeTextFile {
 public:
  enum Access : std::int32_t { Read = 1, Write = 2, Append = 3 };

  // The numbers the reader raises, with "HugeTextFile" as the source; the original class's
  // numbers, which callers test for.
  enum Failure : std::int32_t {
    kAlreadyOpen = 45601,
    kOpenFailed = 45602,
    kAlreadyExists = 45603,
    kNotFound = 45604,
    kSeekFailed = 45605,
    kSizeFailed = 45606,
    kReadFailed = 45607,
    kReadPastEnd = 45608,
    kWriteFailed = 45609,
    kReadingWhileWriting = 45610,
    kRewindWhileWriting = 45611,
    kWritingWhileReading = 45612,
    kNotOpen = 45613,
    kBadBufferSize = 45614,
    kBadAccess = 45615,
    kLocked = 45616,
  };

  // The code page and encoding of a reader with no file open: a value no file has, which
  // FileEncoding reports as it is.
  static constexpr std::int32_t kNoCodePage = -999;
  static constexpr enumFileEncoding kNoEncoding = static_cast<enumFileEncoding>(-999);

  HugeTextFile();
  HugeTextFile(const HugeTextFile&) = delete;
  HugeTextFile& operator=(const HugeTextFile&) = delete;
  ~HugeTextFile();

  [[nodiscard]] SafeArray BOM() const;
  [[nodiscard]] std::int32_t BOMSize() const { return bomSize_; }
  [[nodiscard]] std::int32_t CodePage() const;
  [[nodiscard]] bool EndOfFile() const { return eof_; }
  [[nodiscard]] String EOL() const { return eol_; }
  void setEOL(String eol) { eol_ = std::move(eol); }
  void FileClose(bool OnlyIfOpen = false);
  [[nodiscard]] enumFileEncoding FileEncoding() const { return encoding_; }
  [[nodiscard]] std::int32_t FileHandle() const { return file_.isOpen() ? 1 : -1; }
  [[nodiscard]] std::int64_t FileLen() const;
  [[nodiscard]] String FileName() const { return fileName_; }
  // CodePage in: the caller's choice (0 for the file's own); out: the code page used.
  void FileOpen(const String& FileName, std::int32_t Access, std::int32_t Disposition = 0,
                std::int32_t Share = -1, std::int32_t BufferSize = 32768,
                std::int32_t* CodePage = nullptr, bool* FileExisted = nullptr);
  [[nodiscard]] std::int32_t FilePosition() const;
  [[nodiscard]] bool HasBOM() const { return encoding_ >= encUTF8_BOM && encoding_ != kNoEncoding; }
  [[nodiscard]] bool IsOpen() const { return file_.isOpen(); }
  [[nodiscard]] std::int64_t LineCount() const { return lineCount_; }
  String LineRead();
  // LineRead into the caller's string, reusing its storage; false (and EOF) when there was no
  // line left.
  bool LineRead(String& line);
  void LineSkip(std::int64_t count);
  void LineWrite(const String& Line);
  void Rewind();
  [[nodiscard]] bool WriteUnicodeBOM() const { return writeUnicodeBOM_; }
  void setWriteUnicodeBOM(bool value) { writeUnicodeBOM_ = value; }
  // Hears the bytes read from the file since it was opened, after each buffer: a long count can
  // show how far it has got.
  void setReadProgress(std::function<void(std::int64_t)> progress) {
    readProgress_ = std::move(progress);
  }

 private:
  [[noreturn]] void fail(std::int32_t number, bool withSystemError = false);
  void setCodePage(std::int32_t codePage);
  void readNextBuffer();
  // Finds the next line end in the buffer from pos_: the offset of the terminator unit, or the
  // number of bytes left when the buffer holds none.
  [[nodiscard]] std::size_t findTerminator() const;
  // Steps over the terminator at pos_ + offset (a CR LF pair as one).
  void consumeTerminator(std::size_t offset);
  bool nextLine(String* line);
  // Skips up to count lines by scanning whole buffers; the lines skipped.
  std::int64_t skipLines(std::int64_t count);
  void decodeLine(std::span<const std::uint8_t> bytes, String& line) const;
  void writeBuffer();

  platform::File file_;
  String fileName_;
  std::int32_t access_ = 0;
  std::int32_t bufferSize_ = 32768;
  String eol_;
  runtime::Buffer<std::uint8_t> buffer_;
  std::size_t dataLength_ = 0;
  std::size_t pos_ = 0;
  bool pendingCR_ = false;
  std::int64_t lineCount_ = 0;
  bool eof_ = false;
  std::int32_t codePage_ = kNoCodePage;
  // The code page the conversions use, 0 resolved once to the system's: asking the regional
  // settings on every line would cost more than converting it.
  std::int32_t convertCodePage_ = 0;
  platform::Converter converter_{1252};
  enumFileEncoding encoding_ = kNoEncoding;
  std::size_t unitWidth_ = 1;
  std::size_t significantByte_ = 0;
  std::string bom_;
  std::int32_t bomSize_ = 0;
  bool writeUnicodeBOM_ = true;
  std::vector<std::uint8_t> partial_;  // the start of a line that continues in the next buffer
  std::string encoded_;                // LineWrite's bytes, kept for their storage
  std::function<void(std::int64_t)> readProgress_;
  std::int64_t bytesRead_ = 0;
};

}  // namespace orvo::files
