// The big-file line reader as a differential target: any text, written in each encoding, read
// back with every buffer size from 4 to 64 bytes, must give exactly the lines of a plain
// splitter (CR LF, CR and LF each end a line; a terminator at the very end starts no line).
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "files/HugeTextFile.hpp"
#include "files/encoding.hpp"
#include "files/textio.hpp"
#include "fuzz_input.hpp"
#include "support/reference_lines.hpp"

namespace {

std::string scratchFile() {
  static const std::string path = [] {
    char dir[] = "/tmp/orvo_linesplit_fuzz_XXXXXX";
    if (::mkdtemp(dir) == nullptr) std::abort();
    return std::string(dir) + "/text";
  }();
  return path;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 1 || size > 600) return 0;
  // Text from the units; lone surrogates and NULs stay out, so every form can hold it.
  std::u16string text;
  for (const char16_t c : orvo::fuzz::unitsOf(data + 1, size - 1)) {
    const char16_t unit = (c >= 0xD800 && c <= 0xDFFF) || c == 0 ? u'x' : c;
    // Mostly small units, so that terminators are common.
    text += (data[0] & 1) != 0 ? static_cast<char16_t>(unit % 16 + 4) : unit;
  }
  struct Form {
    std::int32_t codePage;
    const char* bom;
    std::size_t bomSize;
  };
  static const Form kForms[] = {
      {65001, "\xEF\xBB\xBF", 3}, {1200, "\xFF\xFE", 2}, {1201, "\xFE\xFF", 2}};
  const Form& form = kForms[data[0] % 3];
  std::string bytes(form.bom, form.bomSize);
  orvo::files::encodeText(text, form.codePage, bytes);
  const std::string path = scratchFile();
  std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
  const orvo::String name = orvo::fromUtf8(path);
  orvo::files::ClearTextFileEncoding(orvo::Variant(name));
  // The detector looks for a BOM anywhere in its first bytes, so text starting with U+FFFE or
  // U+FEFF can make a file look like another form; such files are read as they are detected,
  // which is not this target's question.
  const orvo::enumFileEncoding written = form.codePage == 65001  ? orvo::encUTF8_BOM
                                         : form.codePage == 1200 ? orvo::encUTF16_LE
                                                                 : orvo::encUTF16_BE;
  if (orvo::files::TextFileEncoding(name) != written) return 0;
  const auto want = orvo::test::referenceLines(text);
  for (std::int32_t buffer = 4; buffer <= 64; ++buffer) {
    orvo::files::HugeTextFile reader;
    std::int32_t cp = 0;
    reader.FileOpen(name, orvo::files::HugeTextFile::Read, 0, -1, buffer, &cp);
    std::vector<std::u16string> got;
    orvo::String line;
    while (!reader.EndOfFile()) {
      if (reader.LineRead(line)) got.push_back(line);
    }
    if (got != want || reader.LineCount() != static_cast<std::int64_t>(want.size())) {
      __builtin_trap();
    }
  }
  return 0;
}
