#include "files/HugeTextFile.hpp"

#include <cstdio>
#include <cstring>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "files/encoding.hpp"
#include "files/textio.hpp"
#include "frame/state.hpp"
#include "frame/traps.hpp"
#include "runtime/errors.hpp"
#include "runtime/strings.hpp"
#include "text/line_breaks.hpp"
#include "text/strings.hpp"

namespace orvo::files {

namespace {

constexpr std::int32_t kDefaultBufferSize = 32768;

std::u16string_view descriptionOf(std::int32_t number) {
  switch (number) {
    case runtime::errInvalidProcedureCall:
      return u"Invalid parameter.  Numeric Variant expected.";
    case HugeTextFile::kAlreadyOpen:
      return u"File already open.";
    case HugeTextFile::kOpenFailed:
      return u"Error opening file.";
    case HugeTextFile::kAlreadyExists:
      return u"File already exists.";
    case HugeTextFile::kNotFound:
      return u"File not found.";
    case HugeTextFile::kSeekFailed:
      return u"Seek Error.";
    case HugeTextFile::kSizeFailed:
      return u"GetFileSize Error.";
    case HugeTextFile::kReadFailed:
      return u"Read failure.";
    case HugeTextFile::kReadPastEnd:
      return u"Attempt to read past EOF.";
    case HugeTextFile::kWriteFailed:
      return u"Write failure.";
    case HugeTextFile::kReadingWhileWriting:
      return u"Can't read file opened for writing.";
    case HugeTextFile::kRewindWhileWriting:
      return u"Can't rewind file opened for writing.";
    case HugeTextFile::kWritingWhileReading:
      return u"Can't write file opened for reading.";
    case HugeTextFile::kNotOpen:
      return u"File must be open for this operation.";
    case HugeTextFile::kBadBufferSize:
      return u"FileOpen BufferSize must be > 0.";
    case HugeTextFile::kBadAccess:
      return u"Invalid Access for FileOpen";
    case HugeTextFile::kLocked:
      return u"File locked for FileOpen.";
    default:
      return u"Unknown error.";
  }
}

}  // namespace

HugeTextFile::HugeTextFile()
    : eol_(frame::StaticGlobals::instance().eol()),
      writeUnicodeBOM_(frame::StaticGlobals::instance().writeUnicodeBOM()) {}

HugeTextFile::~HugeTextFile() {
  try {
    FileClose(true);
  } catch (...) {  // NOLINT(bugprone-empty-catch): a destructor cannot report
  }
}

void HugeTextFile::fail(std::int32_t number, bool withSystemError) {
  String description(descriptionOf(number));
  const std::uint32_t system = file_.lastError();
  if (withSystemError && system != 0) {
    String text = platform::systemErrorText(system);
    description += u"\r\nError " + runtime::DecimalText(system) + u"\r\n" +
                   (text.empty() ? String(u"Unknown Error.") : text);
  }
  if (file_.isOpen()) {
    file_.close();
    fileName_.clear();
  }
  throw Error(number, description, u"HugeTextFile");
}

SafeArray HugeTextFile::BOM() const {
  return SafeArray(0, std::vector<std::uint8_t>(bom_.begin(), bom_.end()));
}

std::int32_t HugeTextFile::CodePage() const {
  return frame::trap(u"CodePage", [&] {
    if (!file_.isOpen()) const_cast<HugeTextFile*>(this)->fail(kNotOpen);  // NOLINT
    return codePage_;
  });
}

void HugeTextFile::setCodePage(std::int32_t codePage) {
  codePage_ = codePage;
  convertCodePage_ = static_cast<std::int32_t>(effectiveCodePage(codePage));
  converter_ = platform::Converter(static_cast<std::uint32_t>(convertCodePage_));
  if (encoding_ == kNoEncoding) encoding_ = EncodingFromCodePage(codePage);
  switch (encoding_) {
    case encUTF16_LE_NB:
    case encUTF16_LE:
      unitWidth_ = 2, significantByte_ = 0;
      break;
    case encUTF16_BE_NB:
    case encUTF16_BE:
      unitWidth_ = 2, significantByte_ = 1;
      break;
    case encUTF32_LE:
      unitWidth_ = 4, significantByte_ = 0;
      break;
    case encUTF32_BE:
      unitWidth_ = 4, significantByte_ = 3;
      break;
    default:
      unitWidth_ = 1, significantByte_ = 0;
  }
  bom_ = HasBOM() ? std::string(bomBytes(encoding_)) : std::string();
  bomSize_ = static_cast<std::int32_t>(bom_.size());
}

void HugeTextFile::FileOpen(const String& FileName, std::int32_t Access, std::int32_t Disposition,
                            std::int32_t Share, std::int32_t BufferSize, std::int32_t* CodePage,
                            bool* FileExisted) {
  frame::trap(u"FileOpen", [&] {
    (void)Share;  // sharing modes have no POSIX equivalent
    const String name = runtime::Trim(FileName);
    if (file_.isOpen() && !nonZero(text::bStrComp(name, fileName_, VBool::False, VBool::True)))
      FileClose(true);
    if (file_.isOpen()) fail(kAlreadyOpen);
    std::int32_t size = BufferSize & ~1;
    if (size < 4) size = kDefaultBufferSize;
    if (Access != Read && Access != Write && Access != Append) fail(kBadAccess);
    platform::Disposition disposition = Access == Read    ? platform::Disposition::OpenExisting
                                        : Access == Write ? platform::Disposition::CreateAlways
                                                          : platform::Disposition::OpenAlways;
    if (Disposition >= 1 && Disposition <= 5) {
      disposition = static_cast<platform::Disposition>(Disposition);
    }
    codePage_ = kNoCodePage;
    encoding_ = kNoEncoding;
    std::int32_t codePage = CodePage != nullptr ? *CodePage : 0;
    if (Access == Read || Access == Append) {
      encoding_ = TextFileEncoding(name, kDefaultSampleBytes);
      codePage = CodePageCheck(codePage, encoding_);
      if (CodePage != nullptr) *CodePage = codePage;
    }
    bool existed = false;
    if (!file_.open(name,
                    {Access == Read ? platform::Access::Read : platform::Access::Write, disposition,
                     platform::Share::Read, true},
                    &existed)) {
      switch (file_.lastError()) {
        case platform::kErrorFileNotFound:
          fail(kNotFound);
        case platform::kErrorSharingViolation:
          fail(kLocked, true);
        case platform::kErrorFileExists:
          fail(kAlreadyExists);
        default:
          fail(kOpenFailed, true);
      }
    }
    if (FileExisted != nullptr) *FileExisted = existed;
    access_ = Access;
    if (Access == Append && !file_.seek(0, platform::SeekOrigin::End)) fail(kSeekFailed, true);
    setCodePage(codePage);
    fileName_ = name;
    bufferSize_ = size;
    lineCount_ = 0;
    bytesRead_ = 0;
    eof_ = false;
    encoded_.clear();
    if (Access == Write && writeUnicodeBOM_ && bomSize_ > 0) encoded_ = bom_;
    if (Access == Read) Rewind();
  });
}

void HugeTextFile::Rewind() {
  frame::trap(u"Rewind", [&] {
    if (!file_.isOpen()) fail(kNotOpen);
    if (access_ != Read) fail(kRewindWhileWriting);
    if (!file_.seek(bomSize_, platform::SeekOrigin::Begin)) fail(kSeekFailed, true);
    lineCount_ = 0;
    eof_ = false;
    pendingCR_ = false;
    // A file smaller than the buffer asked for still comes in one read with a buffer the size
    // of the file and some room for growth, at a fraction of the memory touched.
    std::size_t size = static_cast<std::size_t>(bufferSize_);
    constexpr std::size_t kRoom = std::size_t{64} << 10;
    if (const auto length = file_.size();
        length && *length >= 0 && static_cast<std::uint64_t>(*length) + kRoom < size) {
      size = static_cast<std::size_t>(*length) + kRoom;
    }
    // A UTF-32 unit must not straddle two buffers.
    buffer_.resize(size - size % unitWidth_);
    dataLength_ = 0;
    pos_ = 0;
    readNextBuffer();
  });
}

void HugeTextFile::readNextBuffer() {
  if (eof_) return;
  const std::int64_t n = file_.read(std::span(buffer_.data(), buffer_.size()));
  if (n < 0) fail(kReadFailed, true);
  dataLength_ = static_cast<std::size_t>(n);
  pos_ = 0;
  bytesRead_ += n;
  if (readProgress_ && n > 0) readProgress_(bytesRead_);
  if (n == 0) {
    eof_ = true;
    pendingCR_ = false;
    return;
  }
  if (pendingCR_) {
    pendingCR_ = false;
    // The line feed of a CR LF pair that the previous buffer cut in two.
    if (dataLength_ >= unitWidth_ && buffer_[significantByte_] == 10) {
      bool zeros = true;
      for (std::size_t k = 0; k < unitWidth_; ++k)
        zeros &= k == significantByte_ || buffer_[k] == 0;
      if (zeros) {
        pos_ = unitWidth_;
        if (dataLength_ == unitWidth_) eof_ = true;
      }
    }
  }
}

std::size_t HugeTextFile::findTerminator() const {
  const std::uint8_t* p = buffer_.data() + pos_;
  const std::size_t n = dataLength_ - pos_;
  std::size_t i = 0;
  if (unitWidth_ == 1) return text::findLineBreak(p, n);
  if (unitWidth_ == 2) {
#if defined(__SSE2__)
    // Units as little-endian lanes: a big-endian CR reads as 0x0D00.
    const short shift = significantByte_ == 0 ? 0 : 8;
    const __m128i cr = _mm_set1_epi16(static_cast<short>(13 << shift));
    const __m128i lf = _mm_set1_epi16(static_cast<short>(10 << shift));
    for (; i + 16 <= n; i += 16) {
      const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + i));
      const int m = _mm_movemask_epi8(_mm_or_si128(_mm_cmpeq_epi16(v, cr), _mm_cmpeq_epi16(v, lf)));
      if (m != 0)
        return i + (static_cast<std::size_t>(__builtin_ctz(static_cast<unsigned>(m))) &
                    ~std::size_t{1});
    }
#endif
  }
  for (; i + unitWidth_ <= n; i += unitWidth_) {
    const std::uint8_t v = p[i + significantByte_];
    if (v != 13 && v != 10) continue;
    bool zeros = true;
    for (std::size_t k = 0; k < unitWidth_; ++k) zeros &= k == significantByte_ || p[i + k] == 0;
    if (zeros) return i;
  }
  return n;
}

void HugeTextFile::consumeTerminator(std::size_t offset) {
  const std::size_t at = pos_ + offset;
  const bool cr = buffer_[at + significantByte_] == 13;
  std::size_t next = at + unitWidth_;
  if (cr) {
    if (next + unitWidth_ <= dataLength_) {
      bool lf = buffer_[next + significantByte_] == 10;
      for (std::size_t k = 0; k < unitWidth_; ++k) {
        lf &= k == significantByte_ || buffer_[next + k] == 0;
      }
      if (lf) next += unitWidth_;
    } else if (next >= dataLength_) {
      pendingCR_ = true;
    }
  }
  pos_ = next;
}

void HugeTextFile::decodeLine(std::span<const std::uint8_t> bytes, String& line) const {
  if (codePage_ == CP_UTF32_LE || codePage_ == CP_UTF32_BE) {
    decodeBytes(bytes, codePage_, line);  // refused there, with the conversion's own error
    return;
  }
  // Reading lines in a page that nothing can convert is a caller's mistake, told at the first
  // line read rather than when the page is chosen.
  if (!converter_.available()) runtime::raise(runtime::errInvalidProcedureCall);
  decodeBytes(bytes, converter_, line);
}

bool HugeTextFile::nextLine(String* line) {
  partial_.clear();
  bool havePartial = false;
  while (true) {
    if (pos_ < dataLength_) {
      const std::size_t left = dataLength_ - pos_;
      const std::size_t t = findTerminator();
      if (t < left) {
        if (line != nullptr) {
          line->clear();
          if (havePartial) {
            partial_.insert(partial_.end(), buffer_.begin() + static_cast<std::ptrdiff_t>(pos_),
                            buffer_.begin() + static_cast<std::ptrdiff_t>(pos_ + t));
            decodeLine(partial_, *line);
          } else {
            decodeLine(std::span(buffer_.data() + pos_, t), *line);
          }
        }
        consumeTerminator(t);
        ++lineCount_;
        if (pos_ >= dataLength_) readNextBuffer();
        return true;
      }
      if (line != nullptr) {
        partial_.insert(partial_.end(), buffer_.begin() + static_cast<std::ptrdiff_t>(pos_),
                        buffer_.begin() + static_cast<std::ptrdiff_t>(dataLength_));
      }
      havePartial = true;
      pos_ = dataLength_;
    }
    if (eof_) {
      // The last line had no terminator.
      if (havePartial) {
        if (line != nullptr) {
          line->clear();
          decodeLine(partial_, *line);
        }
        ++lineCount_;
        return true;
      }
      if (line != nullptr) line->clear();
      return false;
    }
    readNextBuffer();
  }
}

bool HugeTextFile::LineRead(String& line) {
  return frame::trap(u"LineRead", [&] {
    if (!file_.isOpen()) fail(kNotOpen);
    if (access_ != Read) fail(kReadingWhileWriting);
    if (eof_) fail(kReadPastEnd);
    return nextLine(&line);
  });
}

String HugeTextFile::LineRead() {
  String line;
  LineRead(line);
  return line;
}

void HugeTextFile::LineSkip(std::int64_t count) {
  frame::trap(u"LineSkip", [&] {
    if (!file_.isOpen()) fail(kNotOpen);
    if (access_ != Read) fail(kReadingWhileWriting);
    skipLines(count);
  });
}

std::int64_t HugeTextFile::skipLines(std::int64_t count) {
  const text::UnitForm form{static_cast<std::uint8_t>(unitWidth_), significantByte_ != 0};
  std::int64_t skipped = 0;
  bool midLine = false;  // units read since the last line end
  while (skipped < count && !eof_) {
    if (pos_ < dataLength_) {
      const std::size_t left = dataLength_ - pos_;
      const auto wanted = static_cast<std::uint64_t>(count - skipped);
      const text::LineEndScan scan =
          text::scanLineEnds(buffer_.data() + pos_, left, form, false, wanted);
      skipped += static_cast<std::int64_t>(scan.ends);
      lineCount_ += static_cast<std::int64_t>(scan.ends);
      if (scan.ends == wanted) {
        consumeTerminator(scan.stop - unitWidth_);
        if (pos_ >= dataLength_) readNextBuffer();
        return skipped;
      }
      // The buffer ran out first: the line goes on in the next one unless the buffer ended
      // with a terminator, and the LF of a CR LF pair cut in two is skipped there.
      midLine = scan.stop < left || !scan.lastWasBreak;
      pendingCR_ = scan.stop == left && scan.lastWasCr;
      pos_ = dataLength_;
    }
    readNextBuffer();
    if (eof_ && midLine) {
      // The last line had no terminator.
      ++skipped;
      ++lineCount_;
    }
  }
  return skipped;
}

void HugeTextFile::writeBuffer() {
  if (encoded_.empty()) return;
  if (!file_.writeAll(
          std::span(reinterpret_cast<const std::uint8_t*>(encoded_.data()), encoded_.size()))) {
    fail(kWriteFailed, true);
  }
  encoded_.clear();
}

void HugeTextFile::LineWrite(const String& Line) {
  frame::trap(u"LineWrite", [&] {
    if (!file_.isOpen()) fail(kNotOpen);
    if (access_ == Read) fail(kWritingWhileReading);
    std::string bytes;
    encodeText(Line, convertCodePage_, bytes);
    encodeText(eol_, convertCodePage_, bytes);
    if (encoded_.size() + bytes.size() > static_cast<std::size_t>(bufferSize_)) writeBuffer();
    if (bytes.size() > static_cast<std::size_t>(bufferSize_)) {
      if (!file_.writeAll(
              std::span(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()))) {
        fail(kWriteFailed, true);
      }
    } else {
      encoded_ += bytes;
    }
    ++lineCount_;
  });
}

void HugeTextFile::FileClose(bool OnlyIfOpen) {
  frame::trap(u"FileClose", [&] {
    if (!file_.isOpen()) {
      if (OnlyIfOpen) return;
      fail(kNotOpen);
    }
    if (access_ != Read) {
      writeBuffer();
      if (!file_.flush()) fail(kWriteFailed, true);
    }
    file_.close();
    fileName_.clear();
    eof_ = false;
    lineCount_ = 0;
    codePage_ = kNoCodePage;
    encoding_ = kNoEncoding;
    buffer_.clear();
    buffer_.shrink_to_fit();
    dataLength_ = pos_ = 0;
  });
}

std::int64_t HugeTextFile::FileLen() const {
  return frame::trap(u"FileLen", [&] {
    auto* self = const_cast<HugeTextFile*>(this);  // NOLINT: failing closes the file
    if (!file_.isOpen()) self->fail(kNotOpen);
    const auto size = file_.size();
    if (!size) self->fail(kSizeFailed, true);
    return *size;
  });
}

std::int32_t HugeTextFile::FilePosition() const {
  return frame::trap(u"FilePosition", [&] {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(file_.position() & 0xFFFFFFFF));
  });
}

}  // namespace orvo::files
