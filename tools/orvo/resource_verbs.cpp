#include "resource_verbs.hpp"

#include <charconv>
#include <cstdio>
#include <optional>
#include <string_view>
#include <utility>

#include "arguments.hpp"
#include "json_bridge.hpp"
#include "orvogeneric/satellite.hpp"
#include "progress.hpp"
#include "verb_support.hpp"

namespace orvo::cli {

namespace {

constexpr const char* kStringsHelp =
    "usage: orvo strings [--json] [--language LANGID] DLL [ID...]\n"
    "Lists the string tables of a satellite library (a Windows resource DLL, 32- or 64-bit),\n"
    "read from the file without loading it: every string of every language, or only the given\n"
    "ids, one per line as LANGID<TAB>ID<TAB>TEXT (LANGID in decimal: 2057 is 0x0809), with\n"
    "CR, LF, TAB and backslash in the text written as \\r, \\n, \\t and \\\\. --json prints JSON\n"
    "lines instead: {\"language\":2057,\"id\":101,\"text\":\"...\"}. LANGID and ID are decimal or "
    "0x-hex. On a terminal, the time the read has taken shows on standard error once it has\n"
    "taken a second (ORVO_PROGRESS_DELAY seconds).\n"
    "Exit status: 0 done, 1 the file is missing, unreadable or not a satellite library, or a\n"
    "given id has no string in any (chosen) language, 2 usage.\n";

// A 16-bit number in decimal or 0x-hex, nothing else around it.
std::optional<std::uint16_t> number16(std::string_view text) {
  int base = 10;
  if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
    text.remove_prefix(2);
    base = 16;
  }
  if (text.empty() || text[0] == '+' || text[0] == '-') return std::nullopt;
  std::uint32_t value = 0;
  const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value, base);
  if (ec != std::errc() || end != text.data() + text.size() || value > 0xFFFF) {
    return std::nullopt;
  }
  return static_cast<std::uint16_t>(value);
}

// Text for one line: the line breaks and tabs a string may hold would split the listing, and
// the backslash is escaped too, so that "\\n" in a path and a line break read differently.
void appendEscaped(std::string& out, std::u16string_view text) {
  std::u16string_view rest = text;
  while (!rest.empty()) {
    const std::size_t stop = rest.find_first_of(u"\r\n\t\\");
    out += toUtf8(rest.substr(0, stop));
    if (stop == std::u16string_view::npos) break;
    switch (rest[stop]) {
      case u'\r':
        out += "\\r";
        break;
      case u'\n':
        out += "\\n";
        break;
      case u'\t':
        out += "\\t";
        break;
      default:
        out += "\\\\";
    }
    rest.remove_prefix(stop + 1);
  }
}

void appendLine(std::string& out, const SatelliteString& s, bool json) {
  if (json) {
    out += "{\"language\":" + std::to_string(s.language) + ",\"id\":" + std::to_string(s.id) +
           ",\"text\":";
    appendQuoted(out, s.text);
    out += "}\n";
  } else {
    out += std::to_string(s.language) + "\t" + std::to_string(s.id) + "\t";
    appendEscaped(out, s.text);
    out += "\n";
  }
}

}  // namespace

StringsParse parseStringsArguments(const std::vector<std::string>& args) {
  StringsParse parse;
  const Arguments a = splitArguments(args, {{"--json", false}, {"--language", true}});
  if (a.help) {
    parse.help = true;
    return parse;
  }
  if (!a.error.empty()) {
    parse.error = a.error;
    return parse;
  }
  StringsOptions options;
  for (const auto& [name, value] : a.options) {
    if (name == "--json") {
      options.json = true;
      continue;
    }
    options.language = number16(value);
    if (!options.language) {
      parse.error = "not a language id: " + value.substr(0, 40);
      return parse;
    }
  }
  if (a.operands.empty()) {
    parse.error = "no library named";
    return parse;
  }
  if (a.operands[0].empty()) {
    parse.error = "the library's file name is empty";
    return parse;
  }
  options.file = a.operands[0];
  for (std::size_t i = 1; i < a.operands.size(); ++i) {
    const auto id = number16(a.operands[i]);
    if (!id) {
      parse.error = "not a string id (0 to 65535): " + a.operands[i].substr(0, 40);
      return parse;
    }
    options.ids.push_back(*id);
  }
  parse.options = std::move(options);
  return parse;
}

int commandStrings(const std::vector<std::string>& args) {
  const StringsParse parse = parseStringsArguments(args);
  if (parse.help) return std::fputs(kStringsHelp, stdout) < 0 ? 3 : done(0);
  if (!parse.options) {
    std::fprintf(stderr, "orvo strings: %s\n%s", parse.error.c_str(), kStringsHelp);
    return 2;
  }
  const StringsOptions& o = *parse.options;
  String why;
  // The library reads the whole file in one call, which tells nothing of how far it has got:
  // a long read shows the time it has taken.
  std::optional<Progress> shown(std::in_place, "strings", o.file, 0);
  const auto strings = SatelliteStrings(fromSystemBytes(o.file), &why);
  if (strings) shown->finish();
  shown.reset();
  if (!strings) {
    std::fprintf(stderr, "orvo strings: %s: %s\n", o.file.c_str(), toUtf8(why).c_str());
    return 1;
  }
  std::string out;
  int status = 0;
  if (o.ids.empty()) {
    for (const SatelliteString& s : *strings) {
      if (!o.language || s.language == *o.language) appendLine(out, s, o.json);
    }
  } else {
    // Language by language, the ids in the order asked for.
    std::vector<bool> found(o.ids.size(), false);
    std::size_t first = 0;
    while (first < strings->size()) {
      std::size_t last = first;
      while (last < strings->size() && (*strings)[last].language == (*strings)[first].language) {
        ++last;
      }
      if (!o.language || (*strings)[first].language == *o.language) {
        for (std::size_t k = 0; k < o.ids.size(); ++k) {
          for (std::size_t i = first; i < last; ++i) {
            if ((*strings)[i].id != o.ids[k]) continue;
            appendLine(out, (*strings)[i], o.json);
            found[k] = true;
            break;
          }
        }
      }
      first = last;
    }
    for (std::size_t k = 0; k < o.ids.size(); ++k) {
      if (found[k]) continue;
      std::fprintf(stderr, "orvo strings: %s has no string %u\n", o.file.c_str(),
                   static_cast<unsigned>(o.ids[k]));
      status = 1;
    }
  }
  put(out);
  return done(status);
}

}  // namespace orvo::cli
