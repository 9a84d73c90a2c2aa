#include "orvogeneric/text_conversion.hpp"

#include <bit>
#include <cerrno>
#include <cstring>
#include <string>
#include <system_error>
#include <vector>

#include "files/background_writer.hpp"
#include "files/encoding.hpp"
#include "files/textio.hpp"
#include "platform/codepage.hpp"
#include "platform/file.hpp"
#include "platform/replacement.hpp"
#include "runtime/buffer.hpp"

namespace orvo {

namespace {

constexpr std::size_t kChunk = 1 << 16;

// The BOM a target starts with. The choice is the caller's, not the process-wide one that new
// files of the file procedures follow.
std::string_view targetBom(const TextFileConversion& conversion) {
  if (!conversion.bom.value_or(true)) return {};
  switch (conversion.to) {
    case CP_UTF8:
      return files::bomBytes(encUTF8_BOM);
    case CP_UTF16_LE:
      return files::bomBytes(encUTF16_LE);
    case CP_UTF16_BE:
      return files::bomBytes(encUTF16_BE);
    default:
      return {};
  }
}

// A byte that starts a two-byte character in the double-byte ANSI code pages.
bool isLeadByte(std::uint32_t codePage, std::uint8_t b) {
  if (codePage == 932) return (b >= 0x81 && b <= 0x9F) || (b >= 0xE0 && b <= 0xFC);
  return b >= 0x81 && b <= 0xFE;  // 936, 949, 950
}

// Where the text read so far may be cut so that no character is split between two
// conversions; the bytes start on a character boundary. Every page is cut within its last
// character, so memory stays one buffer whatever the content, except the pages known only by
// their ICU tables that have characters of several bytes: those are cut after a byte that
// stands alone in them (below 0x40: never a lead or a trail byte), or at kCarryLimit.
std::size_t safeCut(std::span<const std::uint8_t> bytes, std::uint32_t codePage, bool wide) {
  constexpr std::size_t kCarryLimit = 16U << 20U;
  const std::size_t size = bytes.size();
  if (wide) return size - size % 2;
  if (codePage == platform::kCodePageUtf8) {
    // Before the last lead byte, unless its sequence is complete.
    std::size_t cut = size;
    std::size_t trail = 0;
    while (cut > 0 && trail < 3 && (bytes[cut - 1] & 0xC0U) == 0x80) --cut, ++trail;
    if (cut == 0 || bytes[cut - 1] < 0xC0) return size;
    const std::uint8_t lead = bytes[cut - 1];
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    return trail + 1 >= length ? size : cut - 1;
  }
  if (codePage == 932 || codePage == 936 || codePage == 949 || codePage == 950) {
    // After a byte below 0x40 near the end, as broken text is cut safely too; in a long run
    // without one, by following the lead bytes from the start.
    constexpr std::size_t kLookBack = 4096;
    for (std::size_t cut = size; cut > 0 && size - cut < kLookBack; --cut) {
      if (bytes[cut - 1] < 0x40) return cut;
    }
    std::size_t i = 0;
    while (i < size) i += isLeadByte(codePage, bytes[i]) ? 2 : 1;
    return i > size ? size - 1 : size;
  }
  if (platform::hasRecordedTables(codePage) || size >= kCarryLimit) return size;
  std::size_t cut = size;
  while (cut > 0 && bytes[cut - 1] >= 0x40) --cut;
  return cut;
}

// The system's reason, as a portable error code, for a Windows error number of the platform.
std::error_code reasonOf(std::uint32_t error) {
  switch (error) {
    case platform::kErrorFileNotFound:
    case platform::kErrorPathNotFound:
      return std::make_error_code(std::errc::no_such_file_or_directory);
    case platform::kErrorAccessDenied:
      return std::make_error_code(std::errc::permission_denied);
    case platform::kErrorSharingViolation:
      return std::make_error_code(std::errc::device_or_resource_busy);
    case platform::kErrorDiskFull:
      return std::make_error_code(std::errc::no_space_on_device);
    case platform::kErrorNotEnoughMemory:
      return std::make_error_code(std::errc::not_enough_memory);
    default:
      return std::make_error_code(std::errc::io_error);
  }
}

bool convertible(std::int32_t codePage) {
  // UTF-32 files are detected but, as in the file procedures, never converted.
  if (codePage == CP_UTF32_LE || codePage == CP_UTF32_BE) return false;
  return platform::codePageAvailable(files::effectiveCodePage(codePage));
}

bool isLeadSurrogate(char16_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }

// The text in the target's encoding: UTF-16 in the host's byte order as it stands, anything
// else through the target's converter into the one encode buffer.
std::string_view encode(std::u16string_view text, std::int32_t to,
                        const platform::Converter& encoder,
                        runtime::Buffer<std::uint8_t>& encoded) {
  const std::int32_t hostOrder =
      std::endian::native == std::endian::little ? CP_UTF16_LE : CP_UTF16_BE;
  if (to == hostOrder) return {reinterpret_cast<const char*>(text.data()), text.size() * 2};
  const auto page = files::effectiveCodePage(to);
  if (!platform::hasRecordedTables(page) && to != CP_UTF16_LE && to != CP_UTF16_BE) {
    // Pages known only by their ICU tables may take more than three bytes a unit.
    const std::string bytes = platform::wideToMultiByte(page, text);
    encoded.assign(bytes.begin(), bytes.end());
    return {reinterpret_cast<const char*>(encoded.data()), encoded.size()};
  }
  if (encoded.size() < text.size() * 3) encoded.resize(text.size() * 3);
  const std::size_t n = encoder.fromWide(text, encoded.data());
  return {reinterpret_cast<const char*>(encoded.data()), n};
}

// How many characters of text the encoded bytes do not give back: those the target page wrote
// as its default character or as a near one. Both sides hold whole characters.
std::int64_t unrepresentableIn(std::u16string_view text, std::string_view bytes,
                               const platform::Converter& target,
                               runtime::Buffer<char16_t>& decoded) {
  if (decoded.size() < bytes.size() + 1) decoded.resize(bytes.size() + 1);
  const std::size_t n = target.toWide(
      {reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()}, decoded.data());
  const std::size_t common = std::min(n, text.size());
  std::int64_t count = 0;
  for (std::size_t i = 0; i < common; ++i) count += decoded[i] != text[i] ? 1 : 0;
  return count + static_cast<std::int64_t>(std::max(n, text.size()) - common);
}

bool isUnicodePage(std::int32_t codePage) {
  return codePage == CP_UTF16_LE || codePage == CP_UTF16_BE || codePage == CP_UTF8;
}

}  // namespace

std::int64_t CountUnrepresentable(std::u16string_view text, std::int32_t codePage) {
  if (isUnicodePage(codePage) || !convertible(codePage)) return 0;
  const platform::Converter encoder(files::effectiveCodePage(codePage));
  runtime::Buffer<std::uint8_t> encoded;
  runtime::Buffer<char16_t> decoded;
  return unrepresentableIn(text, encode(text, codePage, encoder, encoded), encoder, decoded);
}

ConversionResult ConvertTextFile(const std::filesystem::path& source,
                                 const std::filesystem::path& target,
                                 const TextFileConversion& conversion,
                                 const std::function<void(std::int64_t)>& progress) {
  const String sourceName = fromSystemBytes(source.string());
  const String targetName = fromSystemBytes(target.string());
  // Everything that can be refused is refused before either file is touched.
  if (conversion.from && !convertible(*conversion.from)) {
    return {ConversionFailure::UnsupportedSource, {}};
  }
  if (!convertible(conversion.to)) return {ConversionFailure::UnsupportedTarget, {}};
  platform::File in;
  if (!in.open(sourceName, {platform::Access::Read, platform::Disposition::OpenExisting,
                            platform::Share::ReadWrite, true})) {
    return {ConversionFailure::OpenSource, reasonOf(in.lastError())};
  }
  const auto sourceId = platform::fileId(sourceName);
  if (sourceId && sourceId == platform::fileId(targetName)) {
    return {ConversionFailure::SameFile, {}};
  }
  const enumFileEncoding detected = files::TextFileEncoding(sourceName);
  const std::int32_t from = conversion.from.value_or(files::CodePageCheck(0, detected));
  if (!convertible(from)) return {ConversionFailure::UnsupportedSource, {}};
  // The source's BOM is not text; it is skipped when the file is read in its own encoding.
  if (!conversion.from || *conversion.from == files::CodePageFromEncoding(detected)) {
    in.seek(static_cast<std::int64_t>(files::bomBytes(detected).size()),
            platform::SeekOrigin::Begin);
  }

  // The old target stays whole until the new one is complete.
  if (platform::isDirectory(targetName)) {
    return {ConversionFailure::OpenTarget, std::make_error_code(std::errc::is_a_directory)};
  }
  platform::Replacement out;
  std::uint32_t error = 0;
  if (!out.begin(platform::NativePath(targetName), error)) {
    return {ConversionFailure::OpenTarget, reasonOf(error)};
  }
  files::BackgroundWriter writer(
      [&out](std::span<const std::uint8_t> bytes, std::uint32_t& writeError) {
        return out.write(bytes, writeError);
      });
  const auto write = [&](std::string_view bytes) { return writer.append(bytes); };
  bool ok = write(targetBom(conversion));
  const bool wide = from == CP_UTF16_LE || from == CP_UTF16_BE;
  const std::uint32_t page = files::effectiveCodePage(from);
  const platform::Converter decoder(page);
  const platform::Converter encoder(files::effectiveCodePage(conversion.to));
  // Every buffer is allocated once: the bytes read (with room for the end of a character carried
  // over), their text as UTF-16 (with the lead surrogate carried over), and the encoded bytes.
  runtime::Buffer<std::uint8_t> buffer(kChunk * 2);
  runtime::Buffer<char16_t> units(kChunk * 2 + 1);
  runtime::Buffer<std::uint8_t> encoded;
  // A legacy target is checked by decoding what was encoded: a character that does not come
  // back was not held.
  const bool checkLoss = !isUnicodePage(conversion.to);
  runtime::Buffer<char16_t> decodedBack;
  std::int64_t unrepresentable = 0;
  std::size_t held = 0;   // bytes at the buffer's start that wait for the rest of a character
  bool heldUnit = false;  // a lead surrogate at units[0] whose pair comes with the next chunk
  std::int64_t doneBytes = 0;
  for (;;) {
    if (buffer.size() < held + kChunk) buffer.resize(held + kChunk);
    // A read fills what it is given unless the file ends first.
    const std::int64_t n = in.read(std::span(buffer.data() + held, kChunk));
    if (n < 0) return {ConversionFailure::ReadSource, reasonOf(in.lastError())};
    const bool last = n < static_cast<std::int64_t>(kChunk);
    doneBytes += n;
    const std::size_t filled = held + static_cast<std::size_t>(n);
    const std::span<const std::uint8_t> bytes(buffer.data(), filled);
    const std::size_t cut = last ? filled : safeCut(bytes, page, wide);
    const std::size_t start = heldUnit ? 1 : 0;
    if (units.size() < start + cut + 1) units.resize(start + cut + 1);
    const std::size_t count = start + decoder.toWide(bytes.first(cut), units.data() + start);
    std::memmove(buffer.data(), buffer.data() + cut, filled - cut);
    held = filled - cut;
    heldUnit = !last && count > 0 && isLeadSurrogate(units[count - 1]);
    const std::size_t complete = heldUnit ? count - 1 : count;
    const std::u16string_view text(units.data(), complete);
    const std::string_view bytesOut = encode(text, conversion.to, encoder, encoded);
    if (checkLoss) {
      unrepresentable += unrepresentableIn(text, bytesOut, encoder, decodedBack);
      if (conversion.strict && unrepresentable > 0) {
        return {ConversionFailure::Unrepresentable, {}, unrepresentable};
      }
    }
    ok = ok && write(bytesOut);
    if (heldUnit) units[0] = units[count - 1];
    if (progress) progress(doneBytes);
    if (last || !ok) break;
  }
  // The first failed write's reason, whether it failed here or on the writer's thread.
  ok = writer.finish(error) && ok;
  if (!ok || !out.commit(error)) {
    return {ConversionFailure::WriteTarget, reasonOf(error), unrepresentable};
  }
  return {ConversionFailure::None, {}, unrepresentable};
}

}  // namespace orvo
