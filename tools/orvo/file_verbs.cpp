#include "file_verbs.hpp"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>

#include "orvogeneric/classes.hpp"
#include "orvogeneric/error.hpp"
#include "verb_support.hpp"

namespace orvo::cli {

namespace {

constexpr std::int64_t kProgressThreshold = 100LL << 20;
constexpr std::size_t kChunk = 1 << 20;

constexpr const char* kEncodingHelp =
    "usage: orvo encoding FILE...\n"
    "Prints, for each file, the encoding the library detects (name and number) and the code\n"
    "page it reads the file with: FILE<TAB>NAME<TAB>NUMBER<TAB>CODEPAGE.\n";
constexpr const char* kLinesHelp =
    "usage: orvo lines FILE...\n"
    "Prints, for each file, its line count as FileLineCount counts it (CR, LF and CR LF each\n"
    "end a line; a last line without terminator counts): COUNT<TAB>FILE.\n";
constexpr const char* kConvertHelp =
    "usage: orvo convert --to CODEPAGE [--from CODEPAGE] [--bom|--no-bom] IN OUT\n"
    "Re-encodes a text file, streaming. The source is read in its detected encoding (after its\n"
    "BOM), or as --from says. CODEPAGE: 0 (the system ANSI code page), 65001 (UTF-8), 1200\n"
    "(UTF-16 LE), 1201 (UTF-16 BE) or a Windows code page such as 1252 or 932. A Unicode\n"
    "target gets a BOM unless --no-bom.\n";

const char* encodingName(std::int32_t e) {
  static const char* const kNames[] = {
      "encBIN",      "encANSI",     "encUTF8_NB",  "encUTF16_LE_NB", "encUTF16_BE_NB",
      "encUTF8_BOM", "encUTF16_LE", "encUTF16_BE", "encUTF32_LE",    "encUTF32_BE"};
  return e >= -1 && e <= 8 ? kNames[e + 1] : "unknown";
}

// A file to read: missing, a directory and unreadable are told apart.
bool readable(const std::string& path, std::string& why, std::int64_t* size = nullptr) {
  struct stat st {};
  if (::stat(path.c_str(), &st) != 0) {
    why = std::strerror(errno);
    return false;
  }
  if (S_ISDIR(st.st_mode)) {
    why = "is a directory";
    return false;
  }
  if (::access(path.c_str(), R_OK) != 0) {
    why = std::strerror(errno);
    return false;
  }
  if (size != nullptr) *size = static_cast<std::int64_t>(st.st_size);
  return true;
}

void progress(const std::string& verb, const std::string& file, std::int64_t doneBytes,
              std::int64_t total) {
  if (total <= kProgressThreshold || ::isatty(STDERR_FILENO) == 0) return;
  std::fprintf(stderr, "\rorvo %s %s: %3lld%%", verb.c_str(), file.c_str(),
               static_cast<long long>(doneBytes * 100 / total));
  if (doneBytes >= total) std::fputs("\n", stderr);
}

std::optional<std::int32_t> codePageArgument(const std::string& text) {
  std::int32_t value = 0;
  const auto r = std::from_chars(text.data(), text.data() + text.size(), value);
  if (r.ec != std::errc() || r.ptr != text.data() + text.size() || value < 0) return std::nullopt;
  return value;
}

}  // namespace

int commandEncoding(const std::vector<std::string>& args) {
  if (wantsHelp(args)) return std::fputs(kEncodingHelp, stdout) < 0 ? 3 : done(0);
  if (args.empty()) {
    std::fputs(kEncodingHelp, stderr);
    return 2;
  }
  FileSubs files;
  int status = 0;
  for (const auto& path : args) {
    std::string why;
    if (!readable(path, why)) {
      std::fprintf(stderr, "orvo encoding: %s: %s\n", path.c_str(), why.c_str());
      status = 1;
      continue;
    }
    try {
      const String name = fromUtf8(path);
      const enumFileEncoding e = files.TextFileEncoding(name);
      const std::int32_t cp = files.CodePageCheck(0, e);
      put(path + "\t" + encodingName(e) + "\t" + std::to_string(e) + "\t" + std::to_string(cp) +
          "\n");
    } catch (const Error& e) {
      std::fprintf(stderr, "orvo encoding: %s: %s\n", path.c_str(),
                   toUtf8(e.description()).c_str());
      status = 1;
    }
  }
  return done(status);
}

int commandLines(const std::vector<std::string>& args) {
  if (wantsHelp(args)) return std::fputs(kLinesHelp, stdout) < 0 ? 3 : done(0);
  if (args.empty()) {
    std::fputs(kLinesHelp, stderr);
    return 2;
  }
  FileSubs files;
  int status = 0;
  for (const auto& path : args) {
    std::string why;
    std::int64_t size = 0;
    if (!readable(path, why, &size)) {
      std::fprintf(stderr, "orvo lines: %s: %s\n", path.c_str(), why.c_str());
      status = 1;
      continue;
    }
    progress("lines", path, 0, size);
    try {
      const std::int32_t count = files.FileLineCount(fromUtf8(path));
      progress("lines", path, size, size);
      put(std::to_string(count) + "\t" + path + "\n");
    } catch (const Error& e) {
      std::fprintf(stderr, "orvo lines: %s: %s\n", path.c_str(), toUtf8(e.description()).c_str());
      status = 1;
    }
  }
  return done(status);
}

ConvertParse parseConvertArguments(const std::vector<std::string>& args) {
  ConvertParse parse;
  ConvertOptions options;
  bool haveTo = false;
  std::vector<std::string> files;
  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string& a = args[i];
    if (a == "--help" || a == "-h") {
      parse.help = true;
      return parse;
    }
    if (a == "--to" || a == "--from") {
      if (i + 1 == args.size()) {
        parse.error = a + " needs a code page";
        return parse;
      }
      const auto cp = codePageArgument(args[++i]);
      if (!cp) {
        parse.error = a + ": not a code page number: " + args[i].substr(0, 40);
        return parse;
      }
      if (a == "--to") {
        options.to = *cp;
        haveTo = true;
      } else {
        options.from = *cp;
      }
    } else if (a == "--bom" || a == "--no-bom") {
      options.bom = a == "--bom";
    } else if (a.size() > 1 && a[0] == '-' && a != "-") {
      parse.error = "unknown option " + a.substr(0, 40);
      return parse;
    } else {
      files.push_back(a);
    }
  }
  if (!haveTo) {
    parse.error = "--to CODEPAGE is required";
  } else if (files.size() != 2) {
    parse.error = "give one input and one output file";
  } else if (options.to == 12000 || options.to == 12001) {
    parse.error = "UTF-32 is not supported as a target";
  } else {
    options.in = files[0];
    options.out = files[1];
    parse.options = options;
  }
  return parse;
}

int commandConvert(const std::vector<std::string>& args) {
  const ConvertParse parse = parseConvertArguments(args);
  if (parse.help) return std::fputs(kConvertHelp, stdout) < 0 ? 3 : done(0);
  if (!parse.options) {
    std::fprintf(stderr, "orvo convert: %s\n%s", parse.error.c_str(), kConvertHelp);
    return 2;
  }
  const ConvertOptions& o = *parse.options;
  std::string why;
  std::int64_t size = 0;
  if (!readable(o.in, why, &size)) {
    std::fprintf(stderr, "orvo convert: %s: %s\n", o.in.c_str(), why.c_str());
    return 1;
  }
  FileSubs files;
  try {
    const String inName = fromUtf8(o.in);
    const enumFileEncoding detected = files.TextFileEncoding(inName);
    const std::int32_t sourceBom = files.DefaultBOMSize(detected);
    const std::int32_t from = o.from.value_or(files.CodePageCheck(0, detected));
    if (from == 12000 || from == 12001) {
      std::fprintf(stderr, "orvo convert: %s: UTF-32 is not supported\n", o.in.c_str());
      return 1;
    }
    const bool unicodeTarget = o.to == 65001 || o.to == 1200 || o.to == 1201;
    const bool bom = unicodeTarget && o.bom.value_or(true);
    const std::string bomBytes = !bom            ? ""
                                 : o.to == 65001 ? "\xEF\xBB\xBF"
                                 : o.to == 1200  ? "\xFF\xFE"
                                                 : "\xFE\xFF";
    FILE* in = std::fopen(o.in.c_str(), "rb");
    FILE* out = in != nullptr ? std::fopen(o.out.c_str(), "wb") : nullptr;
    if (in == nullptr || out == nullptr) {
      std::fprintf(stderr, "orvo convert: %s: %s\n", (in == nullptr ? o.in : o.out).c_str(),
                   std::strerror(errno));
      if (in != nullptr) std::fclose(in);
      return 1;
    }
    // The source's BOM is not text; it is skipped when the file is read in its own encoding.
    if (!o.from || *o.from == files.CodePageFromEncoding(detected)) {
      std::fseek(in, sourceBom, SEEK_SET);
    }
    bool ok = std::fwrite(bomBytes.data(), 1, bomBytes.size(), out) == bomBytes.size();
    const bool wide = from == 1200 || from == 1201;
    std::vector<std::uint8_t> carry;
    std::vector<std::uint8_t> chunk(kChunk);
    std::int64_t doneBytes = 0;
    String heldUnit;  // a lead surrogate whose pair comes with the next chunk
    for (;;) {
      const std::size_t n = std::fread(chunk.data(), 1, chunk.size(), in);
      const bool last = n < chunk.size();
      doneBytes += static_cast<std::int64_t>(n);
      carry.insert(carry.end(), chunk.begin(), chunk.begin() + static_cast<std::ptrdiff_t>(n));
      // Cut after a byte that stands alone in every multi-byte code page (below 0x40: never
      // a lead or a trail byte), or at a unit boundary for UTF-16, so that no character is
      // split between two conversions.
      std::size_t cut = carry.size();
      if (!last) {
        if (wide) {
          cut -= cut % 2;
        } else {
          while (cut > 0 && carry[cut - 1] >= 0x40) --cut;
          if (cut == 0) continue;  // no safe place yet: read more
        }
      }
      SafeArray bytes(0, std::vector<std::uint8_t>(
                             carry.begin(), carry.begin() + static_cast<std::ptrdiff_t>(cut)));
      carry.erase(carry.begin(), carry.begin() + static_cast<std::ptrdiff_t>(cut));
      String text = heldUnit + files.FromBytesToVBString(bytes, from);
      heldUnit.clear();
      if (!last && !text.empty() && text.back() >= 0xD800 && text.back() <= 0xDBFF) {
        heldUnit = text.back();
        text.pop_back();
      }
      const Variant encoded = files.FromVBStringToBytes(text, o.to);
      const auto view = encoded.array()->bytes();
      ok = ok && std::fwrite(view.data(), 1, view.size(), out) == view.size();
      progress("convert", o.in, doneBytes, size);
      if (last || !ok) break;
    }
    const bool readFailed = std::ferror(in) != 0;
    std::fclose(in);
    ok = std::fclose(out) == 0 && ok;
    if (readFailed || !ok) {
      std::fprintf(stderr, "orvo convert: %s: %s\n", (readFailed ? o.in : o.out).c_str(),
                   readFailed ? "read failed" : "write failed");
      return 1;
    }
    return 0;
  } catch (const Error& e) {
    std::fprintf(stderr, "orvo convert: %s\n", toUtf8(e.description()).c_str());
    return 1;
  }
}

}  // namespace orvo::cli
