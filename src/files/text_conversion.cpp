#include "orvogeneric/text_conversion.hpp"

#include <cerrno>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "files/encoding.hpp"
#include "files/textio.hpp"

namespace orvo {

namespace {

constexpr std::size_t kChunk = 1 << 20;

struct FileCloser {
  void operator()(std::FILE* f) const { std::fclose(f); }
};
using FilePtr = std::unique_ptr<std::FILE, FileCloser>;

bool isUtf32(std::int32_t codePage) { return codePage == CP_UTF32_LE || codePage == CP_UTF32_BE; }

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

// Where the text read so far may be cut so that no character is split between two
// conversions: after a byte that stands alone in every multi-byte code page (below 0x40: never
// a lead or a trail byte), or at a unit boundary for UTF-16. 0 when there is no such place yet.
std::size_t safeCut(const std::vector<std::uint8_t>& bytes, bool wide) {
  std::size_t cut = bytes.size();
  if (wide) return cut - cut % 2;
  while (cut > 0 && bytes[cut - 1] >= 0x40) --cut;
  return cut;
}

bool isLeadSurrogate(char16_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }

}  // namespace

ConversionResult ConvertTextFile(const std::filesystem::path& source,
                                 const std::filesystem::path& target,
                                 const TextFileConversion& conversion,
                                 const std::function<void(std::int64_t)>& progress) {
  const enumFileEncoding detected = files::TextFileEncoding(fromUtf8(source.string()));
  const std::int32_t from = conversion.from.value_or(files::CodePageCheck(0, detected));
  if (isUtf32(from)) return {ConversionFailure::UnsupportedSource, {}};
  if (isUtf32(conversion.to)) return {ConversionFailure::UnsupportedTarget, {}};
  const std::string_view bom = targetBom(conversion);

  const FilePtr in(std::fopen(source.c_str(), "rb"));
  if (!in) return {ConversionFailure::OpenSource, std::error_code(errno, std::generic_category())};
  FilePtr out(std::fopen(target.c_str(), "wb"));
  if (!out) return {ConversionFailure::OpenTarget, std::error_code(errno, std::generic_category())};
  // The source's BOM is not text; it is skipped when the file is read in its own encoding.
  if (!conversion.from || *conversion.from == files::CodePageFromEncoding(detected)) {
    std::fseek(in.get(), static_cast<long>(files::bomBytes(detected).size()), SEEK_SET);
  }

  // No BOM is no write: fwrite may not be handed the null data of an empty view.
  bool ok = bom.empty() || std::fwrite(bom.data(), 1, bom.size(), out.get()) == bom.size();
  const bool wide = from == CP_UTF16_LE || from == CP_UTF16_BE;
  std::vector<std::uint8_t> carry;
  std::vector<std::uint8_t> chunk(kChunk);
  std::int64_t doneBytes = 0;
  String text;
  std::string encoded;
  String heldUnit;  // a lead surrogate whose pair comes with the next chunk
  for (;;) {
    const std::size_t n = std::fread(chunk.data(), 1, chunk.size(), in.get());
    const bool last = n < chunk.size();
    doneBytes += static_cast<std::int64_t>(n);
    carry.insert(carry.end(), chunk.begin(), chunk.begin() + static_cast<std::ptrdiff_t>(n));
    const std::size_t cut = last ? carry.size() : safeCut(carry, wide);
    if (cut == 0 && !last && !wide) continue;  // no safe place yet: read more
    text = heldUnit;
    heldUnit.clear();
    if (cut > 0) files::decodeBytes(std::span(carry.data(), cut), from, text);
    carry.erase(carry.begin(), carry.begin() + static_cast<std::ptrdiff_t>(cut));
    if (!last && !text.empty() && isLeadSurrogate(text.back())) {
      heldUnit = text.back();
      text.pop_back();
    }
    encoded.clear();
    files::encodeText(text, conversion.to, encoded);
    ok = ok && std::fwrite(encoded.data(), 1, encoded.size(), out.get()) == encoded.size();
    if (progress) progress(doneBytes);
    if (last || !ok) break;
  }
  const bool readFailed = std::ferror(in.get()) != 0;
  ok = std::fclose(out.release()) == 0 && ok;
  if (readFailed) return {ConversionFailure::ReadSource, {}};
  if (!ok) return {ConversionFailure::WriteTarget, {}};
  return {};
}

}  // namespace orvo
