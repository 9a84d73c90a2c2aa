#include "file_verbs.hpp"

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <optional>
#include <system_error>

#include "arguments.hpp"
#include "json_bridge.hpp"
#include "orvogeneric/classes.hpp"
#include "orvogeneric/error.hpp"
#include "orvogeneric/line_count.hpp"
#include "orvogeneric/text_conversion.hpp"
#include "orvogeneric/tool_checks.hpp"
#include "progress.hpp"
#include "standard_streams.hpp"
#include "verb_support.hpp"

namespace orvo::cli {

namespace {

constexpr const char* kEncodingHelp =
    "usage: orvo encoding [--json] FILE...\n"
    "Prints, for each file, the encoding the library detects (name and number), the code page\n"
    "it reads the file with (for ANSI files the system's ANSI code page) and that code page's\n"
    "name as iconv takes it: FILE<TAB>NAME<TAB>NUMBER<TAB>CODEPAGE<TAB>CHARSET. --json prints a\n"
    "JSON line a file instead, with the BOM's size: {\"file\",\"encoding\",\"number\",\"bom\",\n"
    "\"codePage\",\"charset\"}. A binary file has code page 0 and no charset. FILE - is\n"
    "standard input.\n"
    "Exit status: 0 every file answered, 1 a file is missing or unreadable (the others are\n"
    "still answered), 2 usage.\n";
constexpr const char* kLinesHelp =
    "usage: orvo lines FILE...\n"
    "Prints, for each file, its line count as FileLineCount counts it (CR, LF and CR LF each\n"
    "end a line; a last line without terminator counts): COUNT<TAB>FILE. FILE - is standard\n"
    "input. Counts are 64-bit. On a terminal, progress shows on standard error once a count has\n"
    "taken a second (ORVO_PROGRESS_DELAY seconds).\n"
    "Exit status: 0 every file counted, 1 a file is missing or unreadable (the others are\n"
    "still counted), 2 usage.\n";
constexpr const char* kConvertHelp =
    "usage: orvo convert --to CODEPAGE [--from CODEPAGE] [--bom|--no-bom] [--strict] IN OUT\n"
    "Re-encodes a text file, streaming. The source is read in its detected encoding (after its\n"
    "BOM), or as --from says. CODEPAGE: 0 (the system ANSI code page), 65001 (UTF-8), 1200\n"
    "(UTF-16 LE), 1201 (UTF-16 BE) or a Windows code page such as 1252 or 932. A Unicode\n"
    "target gets a BOM unless --no-bom. Characters a legacy target cannot hold are written as\n"
    "Windows writes them ('?' or a near character) and counted on standard error; with\n"
    "--strict they are an error and nothing is written. IN - is standard input, OUT - standard\n"
    "output (written once the conversion is complete). On a terminal, progress shows on\n"
    "standard error once the conversion has taken a second (ORVO_PROGRESS_DELAY seconds).\n"
    "Exit status: 0 converted, 1 nothing written (unreadable input, a code page that cannot be\n"
    "read or written, OUT is IN, a failed write, --strict and a character lost: OUT is left as\n"
    "it was), 2 usage, 3 standard output refused the converted text.\n";

const char* encodingName(std::int32_t e) {
  static const char* const kNames[] = {
      "encBIN",      "encANSI",     "encUTF8_NB",  "encUTF16_LE_NB", "encUTF16_BE_NB",
      "encUTF8_BOM", "encUTF16_LE", "encUTF16_BE", "encUTF32_LE",    "encUTF32_BE"};
  return e >= -1 && e <= 8 ? kNames[e + 1] : "unknown";
}

// The code page's name as iconv (and most charset tables) know it; empty for none.
std::string charsetName(std::int32_t codePage) {
  switch (codePage) {
    case 0:
      return {};
    case 65001:
      return "UTF-8";
    case 1200:
      return "UTF-16LE";
    case 1201:
      return "UTF-16BE";
    case 12000:
      return "UTF-32LE";
    case 12001:
      return "UTF-32BE";
    default:
      return "CP" + std::to_string(codePage);
  }
}

// A file to read: missing, a directory and unreadable are told apart.
bool readable(const std::string& path, std::string& why, std::int64_t* size = nullptr) {
  std::error_code error;
  const std::filesystem::file_status status = std::filesystem::status(path, error);
  if (error) {
    why = error.message();
    return false;
  }
  if (std::filesystem::is_directory(status)) {
    why = "is a directory";
    return false;
  }
  if (const std::error_code denied = readAccess(path)) {
    why = denied.message();
    return false;
  }
  if (size != nullptr) {
    // Only a regular file has a size worth showing progress against.
    const std::uintmax_t bytes = std::filesystem::file_size(path, error);
    *size = error ? 0 : static_cast<std::int64_t>(bytes);
  }
  return true;
}

// The operands of a verb that reads files: at least one. 0 when they will do.
int checkFileOperands(std::string_view verb, const Arguments& a, const char* help) {
  if (!a.error.empty()) return usageError(verb, a.error, help);
  if (a.operands.empty()) return usageError(verb, "no file named", help);
  return 0;
}

// Standard input, read once into a scratch file the first time an operand "-" asks for it.
class StandardInput {
 public:
  // The file to hand the library for the operand; empty (why set) when standard input could
  // not be read.
  std::string fileFor(const std::string& operand, std::string& why) {
    if (operand != "-") return operand;
    if (!read_) {
      read_ = true;
      ok_ = scratch_.create() && scratch_.fillFromStandardInput();
      if (!ok_) error_ = std::strerror(errno);
    }
    if (!ok_) {
      why = "standard input could not be read: " + error_;
      return {};
    }
    return scratch_.path();
  }

 private:
  ScratchFile scratch_;
  bool read_ = false;
  bool ok_ = false;
  std::string error_;
};

std::optional<std::int32_t> codePageArgument(const std::string& text) {
  std::int32_t value = 0;
  const auto r = std::from_chars(text.data(), text.data() + text.size(), value);
  if (r.ec != std::errc() || r.ptr != text.data() + text.size() || value < 0) return std::nullopt;
  return value;
}

}  // namespace

int commandEncoding(const std::vector<std::string>& args) {
  const Arguments a = splitArguments(args, {{"--json", false}});
  if (a.help) return std::fputs(kEncodingHelp, stdout) < 0 ? 3 : done(0);
  if (const int status = checkFileOperands("encoding", a, kEncodingHelp); status != 0) {
    return status;
  }
  FileSubs files;
  StandardInput input;
  int status = 0;
  for (const auto& path : a.operands) {
    std::string why;
    const std::string file = input.fileFor(path, why);
    if (file.empty() || !readable(file, why)) {
      std::fprintf(stderr, "orvo encoding: %s: %s\n", path.c_str(), why.c_str());
      status = 1;
      continue;
    }
    try {
      const String name = fromSystemBytes(path);
      const String opened = fromSystemBytes(file);
      const enumFileEncoding e = files.TextFileEncoding(opened);
      std::int32_t cp = files.CodePageCheck(0, e);
      // "The system's code page" (0) is answered as the page it is, which a script can use.
      if (cp == 0 && e != encBIN) cp = SystemUtilities().GetWindowsCodePage();
      const std::string charset = charsetName(cp);
      if (a.has("--json")) {
        std::string line = "{\"file\":";
        appendQuoted(line, name);
        line.append(",\"encoding\":\"").append(encodingName(e));
        line.append("\",\"number\":").append(std::to_string(e));
        line.append(",\"bom\":").append(std::to_string(files.DefaultBOMSize(e)));
        line.append(",\"codePage\":").append(std::to_string(cp)).append(",\"charset\":");
        line.append(charset.empty() ? "null" : "\"" + charset + "\"").append("}\n");
        put(line);
      } else {
        std::string line = path;
        line.append("\t").append(encodingName(e)).append("\t").append(std::to_string(e));
        line.append("\t").append(std::to_string(cp)).append("\t").append(charset).append("\n");
        put(line);
      }
    } catch (const Error& e) {
      std::fprintf(stderr, "orvo encoding: %s: %s\n", path.c_str(),
                   toUtf8(e.description()).c_str());
      status = 1;
    }
  }
  return done(status);
}

int commandLines(const std::vector<std::string>& args) {
  const Arguments a = splitArguments(args, {});
  if (a.help) return std::fputs(kLinesHelp, stdout) < 0 ? 3 : done(0);
  if (const int status = checkFileOperands("lines", a, kLinesHelp); status != 0) return status;
  StandardInput input;
  int status = 0;
  for (const auto& path : a.operands) {
    std::string why;
    std::int64_t size = 0;
    const std::string file = input.fileFor(path, why);
    if (file.empty() || !readable(file, why, &size)) {
      std::fprintf(stderr, "orvo lines: %s: %s\n", path.c_str(), why.c_str());
      status = 1;
      continue;
    }
    try {
      std::int64_t count = 0;
      {
        Progress shown("lines", path, size);
        count = CountFileLines(file, [&](std::int64_t bytes) { shown.advance(bytes); });
        shown.finish();
      }
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
  const Arguments a = splitArguments(args, {{"--to", true},
                                            {"--from", true},
                                            {"--bom", false},
                                            {"--no-bom", false},
                                            {"--strict", false}});
  if (a.help) {
    parse.help = true;
    return parse;
  }
  if (!a.error.empty()) {
    parse.error = a.error;
    return parse;
  }
  ConvertOptions options;
  bool haveTo = false;
  for (const auto& [name, value] : a.options) {
    if (name == "--strict") {
      options.strict = true;
      continue;
    }
    if (name == "--bom" || name == "--no-bom") {
      options.bom = name == "--bom";
      continue;
    }
    const auto cp = codePageArgument(value);
    if (!cp) {
      parse.error = name + ": not a code page number: " + value.substr(0, 40);
      return parse;
    }
    if (name == "--to") {
      options.to = *cp;
      haveTo = true;
    } else {
      options.from = *cp;
    }
  }
  if (!haveTo) {
    parse.error = "--to CODEPAGE is required";
    return parse;
  }
  if (a.operands.size() != 2) {
    parse.error = "IN and OUT are required, and nothing else";
    return parse;
  }
  for (const std::string& file : a.operands) {
    if (file.empty()) {
      parse.error = "a file name is empty";
      return parse;
    }
  }
  options.in = a.operands[0];
  options.out = a.operands[1];
  parse.options = options;
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
  StandardInput input;
  const std::string in = input.fileFor(o.in, why);
  if (in.empty() || !readable(in, why, &size)) {
    std::fprintf(stderr, "orvo convert: %s: %s\n", o.in.c_str(), why.c_str());
    return 1;
  }
  // Standard output receives the converted file once it is complete, as a file would.
  ScratchFile output;
  if (o.out == "-" && !output.create()) {
    std::fprintf(stderr, "orvo convert: no scratch file for standard output: %s\n",
                 std::strerror(errno));
    return 1;
  }
  const std::string out = o.out == "-" ? output.path() : o.out;
  try {
    std::optional<Progress> shown(std::in_place, "convert", o.in, size);
    const ConversionResult result =
        ConvertTextFile(in, out, {o.to, o.from, o.bom, o.strict},
                        [&](std::int64_t doneBytes) { shown->advance(doneBytes); });
    if (result.failure == ConversionFailure::None) shown->finish();
    shown.reset();
    const auto report = [](const std::string& file, const std::string& reason) {
      std::fprintf(stderr, "orvo convert: %s: %s\n", file.c_str(), reason.c_str());
      return 1;
    };
    const auto lost = [&] {
      return std::to_string(result.unrepresentable) +
             (result.unrepresentable == 1 ? " character" : " characters") + " that code page " +
             std::to_string(o.to) + " cannot hold";
    };
    switch (result.failure) {
      case ConversionFailure::None:
        // The bytes are what the platform writes; the loss is said, as iconv says it.
        if (result.unrepresentable > 0) {
          std::fprintf(stderr, "orvo convert: %s: %s were written as '?' or a near character\n",
                       o.out.c_str(), lost().c_str());
        }
        if (o.out == "-" && !output.copyToStandardOutput()) {
          std::fprintf(stderr, "orvo: cannot write the output: %s\n", std::strerror(errno));
          return 3;
        }
        return 0;
      case ConversionFailure::Unrepresentable:
        return report(o.in, "holds " + lost() + " (--strict): nothing was written");
      case ConversionFailure::UnsupportedSource:
        return report(o.in, o.from ? "code page " + std::to_string(*o.from) + " cannot be read"
                                   : std::string("UTF-32 is not supported"));
      case ConversionFailure::UnsupportedTarget:
        return report(o.out, "code page " + std::to_string(o.to) + " cannot be written");
      case ConversionFailure::SameFile:
        return report(o.out, "is the input file; nothing was written");
      case ConversionFailure::OpenSource:
        return report(o.in, result.error.message());
      case ConversionFailure::OpenTarget:
        return report(o.out, result.error.message());
      case ConversionFailure::ReadSource:
        return report(o.in, "read failed");
      case ConversionFailure::WriteTarget:
        return report(o.out, "write failed");
    }
    return 1;
  } catch (const Error& e) {
    std::fprintf(stderr, "orvo convert: %s\n", toUtf8(e.description()).c_str());
    return 1;
  }
}

}  // namespace orvo::cli
