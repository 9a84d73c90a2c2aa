#include "files/encoding.hpp"

#include <atomic>
#include <mutex>
#include <unordered_map>

#include "files/fileutils.hpp"
#include "frame/state.hpp"
#include "frame/trace.hpp"
#include "frame/traps.hpp"
#include "platform/file.hpp"
#include "runtime/convert.hpp"
#include "runtime/strings.hpp"
#include "system/locale_lists.hpp"
#include "system/locale_queries.hpp"
#include "text/ascii_run.hpp"
#include "text/maths.hpp"
#include "text/same_units.hpp"
#include "text/strings.hpp"

namespace orvo::files {

namespace {

// The remembered verdicts. Keys compare without regard to case, as the keyed collection the
// applications used does; the presence test trims the path while storing, reading and removing
// use it as given, and that difference is kept.
class EncodingCache {
 public:
  bool contains(std::u16string_view path) const {
    const std::lock_guard lock(mutex_);
    return map_.count(runtime::UCase(runtime::trimView(path))) != 0;
  }
  std::optional<enumFileEncoding> get(std::u16string_view path) const {
    // A program reading settings asks about the same file at every lookup: the thread's last
    // answer stands while no verdict has been added or removed since, and spares upper-casing
    // the path each time.
    thread_local const EncodingCache* lastCache = nullptr;
    thread_local std::uint64_t lastChanges = 0;
    thread_local String lastPath;
    thread_local std::optional<enumFileEncoding> lastAnswer;
    const std::uint64_t changes = changes_.load(std::memory_order_acquire);
    if (lastCache == this && lastChanges == changes && text::sameUnits(lastPath, path)) {
      return lastAnswer;
    }
    std::optional<enumFileEncoding> answer;
    {
      const std::lock_guard lock(mutex_);
      const auto it = map_.find(runtime::UCase(path));
      if (it != map_.end()) answer = it->second;
    }
    lastCache = this;
    lastChanges = changes;
    lastPath.assign(path);
    lastAnswer = answer;
    return answer;
  }
  void add(std::u16string_view path, enumFileEncoding encoding) {
    const std::lock_guard lock(mutex_);
    // Adding a key that is there already fails in the collection (457); the first stays.
    if (map_.emplace(runtime::UCase(path), encoding).second) changes_.fetch_add(1);
  }
  bool remove(std::u16string_view path) {
    const std::lock_guard lock(mutex_);
    if (map_.erase(runtime::UCase(path)) == 0) return false;
    changes_.fetch_add(1);
    return true;
  }

 private:
  mutable std::mutex mutex_;
  std::unordered_map<String, enumFileEncoding> map_;
  std::atomic<std::uint64_t> changes_{0};
};

EncodingCache& cache() {
  static EncodingCache instance;
  return instance;
}

// The search window: the sample read as two-byte characters, its first n of them (2n bytes),
// searched for the BOM at any byte position.
bool bomInWindow(std::string_view sample, std::string_view bom, std::size_t characters) {
  const std::string_view window = sample.substr(0, 2 * characters);
  return window.find(bom) != std::string_view::npos;
}

String pathText(const Variant& path) {
  return runtime::CStr(path, *platform::userRegionalSettings());
}

}  // namespace

std::string_view bomBytes(enumFileEncoding FileEncoding) {
  switch (FileEncoding) {
    case encUTF8_BOM:
      return {"\xEF\xBB\xBF", 3};
    case encUTF16_LE:
      return {"\xFF\xFE", 2};
    case encUTF16_BE:
      return {"\xFE\xFF", 2};
    case encUTF32_LE:
      return {"\xFF\xFE\x00\x00", 4};
    case encUTF32_BE:
      return {"\x00\x00\xFE\xFF", 4};
    default:
      return {};
  }
}

namespace {
SafeArray bomArray(enumFileEncoding encoding) {
  const std::string_view b = bomBytes(encoding);
  return SafeArray(1, std::vector<std::uint8_t>(b.begin(), b.end()));
}
}  // namespace

SafeArray BOM_UTF8() { return bomArray(encUTF8_BOM); }
SafeArray BOM_UTF16LE() { return bomArray(encUTF16_LE); }
SafeArray BOM_UTF16BE() { return bomArray(encUTF16_BE); }
SafeArray BOM_UTF32LE() { return bomArray(encUTF32_LE); }
SafeArray BOM_UTF32BE() { return bomArray(encUTF32_BE); }

SafeArray DefaultBOM(enumFileEncoding FileEncoding) {
  if (bomBytes(FileEncoding).empty()) return SafeArray(VarType::Byte, 0, {});
  return bomArray(FileEncoding);
}

std::int32_t DefaultBOMSize(enumFileEncoding FileEncoding) {
  return static_cast<std::int32_t>(bomBytes(FileEncoding).size());
}

enumCodePages CodePageFromEncoding(enumFileEncoding Encoding) {
  switch (Encoding) {
    case encUTF8_NB:
    case encUTF8_BOM:
      return CP_UTF8;
    case encUTF16_LE_NB:
    case encUTF16_LE:
      return CP_UTF16_LE;
    case encUTF16_BE_NB:
    case encUTF16_BE:
      return CP_UTF16_BE;
    case encUTF32_LE:
      return CP_UTF32_LE;
    case encUTF32_BE:
      return CP_UTF32_BE;
    default:
      return CP_ACP;
  }
}

enumFileEncoding EncodingFromCodePage(std::int32_t CodePage) {
  const bool bom = frame::StaticGlobals::instance().writeUnicodeBOM();
  switch (CodePage) {
    case CP_UTF8:
      return bom ? encUTF8_BOM : encUTF8_NB;
    case CP_UTF16_LE:
      return bom ? encUTF16_LE : encUTF16_LE_NB;
    case CP_UTF16_BE:
      return bom ? encUTF16_BE : encUTF16_BE_NB;
    case CP_UTF32_LE:
      return encUTF32_LE;
    case CP_UTF32_BE:
      return encUTF32_BE;
    default:
      return encANSI;
  }
}

bool utf8Heuristic(std::string_view sample) {
  int pending = 0;
  bool sawMultiByte = false;
  const auto* p = reinterpret_cast<const std::uint8_t*>(sample.data());
  for (std::size_t i = 0; i < sample.size(); ++i) {
    // Runs of ASCII between sequences are passed over whole.
    if (pending == 0) i += text::asciiRun(p + i, sample.size() - i);
    if (i == sample.size()) break;
    const std::uint8_t b = p[i];
    if (pending > 0) {
      if ((b & 0xC0) != 0x80) return false;
      if (--pending == 0) sawMultiByte = true;
    } else if (b < 0x80) {
      continue;
    } else if ((b & 0xE0) == 0xC0) {
      pending = 1;
    } else if ((b & 0xF0) == 0xE0) {
      pending = 2;
    } else if ((b & 0xF8) == 0xF0) {
      pending = 3;
    } else {
      return false;
    }
  }
  // A sequence cut off by the end of the sample does not count against the file.
  return sawMultiByte;
}

bool UTF8HeuristicCheck(const String& FileName, std::int32_t NumBytes) {
  const auto length = platform::fileSize(FileName);
  if (!length || *length < 2 || NumBytes <= 0) return false;
  const auto sample = platform::readFilePrefix(
      FileName, static_cast<std::size_t>(std::min<std::int64_t>(NumBytes, *length)));
  return sample && utf8Heuristic(*sample);
}

enumFileEncoding encodingOfSample(std::string_view sample, std::int64_t fileLength,
                                  bool heuristicSaysUtf8) {
  if (fileLength == 1) return sample.empty() || sample[0] == '\0' ? encBIN : encANSI;
  // UTF-32 LE before UTF-16 LE: its BOM begins with FF FE.
  if (bomInWindow(sample, bomBytes(encUTF32_BE), 4)) return encUTF32_BE;
  if (bomInWindow(sample, bomBytes(encUTF32_LE), 4)) return encUTF32_LE;
  if (bomInWindow(sample, bomBytes(encUTF16_LE), 2)) return encUTF16_LE;
  if (bomInWindow(sample, bomBytes(encUTF16_BE), 2)) return encUTF16_BE;
  if (bomInWindow(sample, bomBytes(encUTF8_BOM), 3)) return encUTF8_BOM;
  if (heuristicSaysUtf8) return encUTF8_NB;
  if (sample.find('\0') == std::string_view::npos) return encANSI;
  enumFileEncoding result = encBIN;
  if (isTrue(text::IsEven(Currency{fileLength * Currency::scale}))) {
    std::int64_t oddZeros = 0;  // positions 1, 3, 5, ... counting the first byte as 1
    std::int64_t evenZeros = 0;
    for (std::size_t i = 0; i < sample.size(); ++i) {
      if (sample[i] == '\0') ++(i % 2 == 0 ? oddZeros : evenZeros);
    }
    if (evenZeros == 0 && oddZeros > 9) result = encUTF16_BE_NB;
    if (oddZeros == 0 && evenZeros > 9) result = encUTF16_LE_NB;
  }
  return result;
}

std::optional<enumFileEncoding> rememberedEncoding(const String& FilePath) {
  EncodingCache& known = cache();
  if (!known.contains(FilePath)) return std::nullopt;
  return known.get(FilePath);
}

enumFileEncoding EncodingOfExistingFile(const String& FileName, std::int32_t NumBytes) {
  if (runtime::trimView(FileName).size() == FileName.size()) {
    // Without edge blanks contains() and get() use one key: get() alone answers both.
    if (const auto known = cache().get(FileName)) return *known;
  }
  return TextFileEncoding(FileName, NumBytes);
}

enumFileEncoding TextFileEncoding(const String& FileName, std::int32_t NumBytes) {
  if (!isTrue(FileExists(FileName))) return encANSI;
  EncodingCache& known = cache();
  if (known.contains(FileName)) return known.get(FileName).value_or(encANSI);
  const auto length = platform::fileSize(FileName);
  if (!length || *length == 0) return encANSI;
  const std::size_t want =
      static_cast<std::size_t>(std::min<std::int64_t>(std::max(NumBytes, 0), *length));
  const auto sample = platform::readFilePrefix(FileName, want);
  if (!sample) {
    // A file that cannot be read keeps the verdict reached so far, which is ANSI; the reader
    // that comes next reports the failure with its own error.
    frame::LibraryTrace(u"TextFileEncoding: cannot read file " + FileName);
    return encANSI;
  }
  if (*length == 1) return encodingOfSample(*sample, 1, false);
  // The heuristic always samples 16384 bytes, whatever this call was asked to read.
  const bool utf8 = UTF8HeuristicCheck(FileName, kDefaultSampleBytes);
  const enumFileEncoding result = encodingOfSample(*sample, *length, utf8);
  known.add(FileName, result);
  frame::LibraryTrace(u"File Encoding = " + runtime::DecimalText(result) + u", for file " +
                      FileName);
  return result;
}

namespace {
VBool encodingTest(const String& path, enumFileEncoding* out, bool (*test)(enumFileEncoding)) {
  const enumFileEncoding e = TextFileEncoding(path, kDefaultSampleBytes);
  if (out != nullptr) *out = e;
  return toVBool(test(e));
}
}  // namespace

VBool FileIsUTF8(const String& FilePath, enumFileEncoding* FileEncoding) {
  return encodingTest(FilePath, FileEncoding,
                      [](enumFileEncoding e) { return e == encUTF8_BOM || e == encUTF8_NB; });
}

VBool FileIsUTF16LE(const String& FilePath, enumFileEncoding* FileEncoding) {
  return encodingTest(FilePath, FileEncoding,
                      [](enumFileEncoding e) { return e == encUTF16_LE || e == encUTF16_LE_NB; });
}

VBool FileIsUnicode(const String& FilePath, enumFileEncoding* FileEncoding) {
  const enumFileEncoding e = TextFileEncoding(FilePath, kDefaultSampleBytes);
  if (FileEncoding != nullptr) *FileEncoding = e;
  if (e == encBIN || e == encANSI) return VBool::False;
  if (e >= encUTF8_NB && e <= encUTF32_BE) return VBool::True;
  frame::LibraryTrace(u"FileIsUnicode found unhandled encoding case from TextFileEncoding: " +
                      runtime::DecimalText(e));
  return VBool::False;
}

namespace {
bool isInstalledAnsiCodePage(std::int32_t cp) {
  return nonZero(text::bIsInCollection(system::AvailableANSICodePages(), system::numberKey(cp)));
}
}  // namespace

std::int32_t CodePageCheck(std::int32_t CodePageSupplied, enumFileEncoding FileEncoding) {
  const std::int32_t fileCP = CodePageFromEncoding(FileEncoding);
  // The system page asks for the file's own whether or not it is counted as installed (a file
  // without BOM reads in the system page either way), so the locale lists, costly to build,
  // are not consulted for the commonest call.
  if (CodePageSupplied < 0 || CodePageSupplied == CP_ACP) return fileCP;
  const bool unicode = CodePageSupplied == CP_UTF16_LE || CodePageSupplied == CP_UTF16_BE ||
                       CodePageSupplied == CP_UTF32_LE || CodePageSupplied == CP_UTF32_BE ||
                       CodePageSupplied == CP_UTF8;
  if (!unicode && !isInstalledAnsiCodePage(CodePageSupplied)) return fileCP;
  switch (FileEncoding) {
    case encBIN:
      return CodePageSupplied;
    case encUTF8_NB:
    case encUTF8_BOM:
    case encUTF16_LE:
    case encUTF16_BE:
    case encUTF32_LE:
    case encUTF32_BE:
      return fileCP;
    default:
      // A file without BOM: an installed ANSI code page or UTF-8 overrides, a UTF-16/32 one not.
      if (CodePageSupplied == CP_ACP || (unicode && CodePageSupplied != CP_UTF8)) return fileCP;
      return CodePageSupplied;
  }
}

void ClearTextFileEncoding(const Variant& FilePath) {
  const String path = pathText(FilePath);
  EncodingCache& known = cache();
  if (!known.contains(path)) return;
  frame::LibraryTrace(u"ClearTextFileEncoding: " + path);
  known.remove(path);
}

void SetTextFileEncoding(const Variant& FilePath, enumFileEncoding FileEncoding) {
  ClearTextFileEncoding(FilePath);
  cache().add(pathText(FilePath), FileEncoding);
}

}  // namespace orvo::files
