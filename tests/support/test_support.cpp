#include "support/test_support.hpp"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "frame/state.hpp"

namespace orvo::test {

namespace {

String unescape(const std::string& field) {
  std::string utf8;
  String out;
  auto flush = [&] {
    out += fromUtf8(utf8);
    utf8.clear();
  };
  for (std::size_t i = 0; i < field.size(); ++i) {
    if (field[i] != '\\' || i + 1 == field.size()) {
      utf8 += field[i];
      continue;
    }
    const char next = field[++i];
    // The one-letter escapes, each standing for the character at the same place in `to`.
    static constexpr std::string_view from = "\\tnr0";
    static constexpr std::string_view to = {"\\\t\n\r\0", 5};
    if (const auto at = from.find(next); at != std::string_view::npos) {
      utf8 += to[at];
    } else if (next != 'u') {
      utf8 += '\\';
      utf8 += next;
    } else {
      const auto close = field.find('}', i);
      if (i + 1 >= field.size() || field[i + 1] != '{' || close == std::string::npos) {
        throw std::runtime_error("bad \\u escape in golden field: " + field);
      }
      flush();
      out += static_cast<char16_t>(std::stoul(field.substr(i + 2, close - i - 2), nullptr, 16));
      i = close;
    }
  }
  flush();
  return out;
}

std::vector<GoldenRow> readRows(const std::string& directory, const std::string& fileName) {
  std::ifstream in(directory + "/" + fileName);
  if (!in) throw std::runtime_error("cannot open data file " + fileName);
  std::vector<GoldenRow> rows;
  std::string line;
  int number = 0;
  while (std::getline(in, line)) {
    ++number;
    if (line.empty() || line[0] == '#') continue;
    GoldenRow row;
    row.line = number;
    // Up to the next TAB; the last field runs to the end (npos - start takes the rest).
    for (std::size_t start = 0, tab = 0; tab != std::string::npos; start = tab + 1) {
      tab = line.find('\t', start);
      row.fields.push_back(unescape(line.substr(start, tab - start)));
    }
    rows.push_back(std::move(row));
  }
  return rows;
}

}  // namespace

std::vector<GoldenRow> readGolden(const std::string& fileName) {
  return readRows(ORVO_GOLDEN_DIR, fileName);
}

std::vector<GoldenRow> readTestData(const std::string& fileName) {
  return readRows(ORVO_TEST_DATA_DIR, fileName);
}

std::vector<GoldenRow> readTestData(const std::string& fileName, std::size_t columns) {
  auto rows = readTestData(fileName);
  if (rows.empty()) throw std::runtime_error("no rows in data file " + fileName);
  for (const GoldenRow& row : rows) {
    if (row.fields.size() != columns) {
      throw std::runtime_error(fileName + " line " + std::to_string(row.line) + ": " +
                               std::to_string(row.fields.size()) + " fields, not " +
                               std::to_string(columns));
    }
  }
  return rows;
}

FileAndCases readFileAndCases(const std::string& fileName, std::size_t caseColumns) {
  FileAndCases out;
  for (GoldenRow& row : readTestData(fileName)) {
    const bool fileRow = row.fields.size() == 2 && row.fields[0] == u"file";
    if (!fileRow && row.fields.size() != caseColumns) {
      throw std::runtime_error(fileName + " line " + std::to_string(row.line) +
                               ": neither a file row nor a case");
    }
    if (fileRow) {
      out.bytes += bytesOf(row.fields[1]);
    } else {
      out.cases.push_back(std::move(row));
    }
  }
  if (out.cases.empty()) throw std::runtime_error("no cases in data file " + fileName);
  return out;
}

std::int64_t integerOf(const String& field) {
  const std::string text = toUtf8(field);
  const std::size_t digits = text.starts_with('-') || text.starts_with('+') ? 1 : 0;
  const bool hex = text.compare(digits, 2, "0x") == 0;
  std::size_t used = 0;
  const auto magnitude = std::stoull(text.substr(digits + (hex ? 2 : 0)), &used, hex ? 16 : 10);
  if (used != text.size() - digits - (hex ? 2 : 0)) {
    throw std::runtime_error("not a whole number in data field: " + text);
  }
  return text[0] == '-' ? static_cast<std::int64_t>(0 - magnitude)
                        : static_cast<std::int64_t>(magnitude);
}

std::vector<String> split(const String& field, char16_t separator) {
  std::vector<String> parts;
  for (std::size_t start = 0; start < field.size();) {
    const auto end = std::min(field.find(separator, start), field.size());
    parts.push_back(field.substr(start, end - start));
    start = end + 1;
  }
  return parts;
}

Variant variantOf(const String& field) {
  const auto blank = std::min(field.find(u' '), field.size());
  const String type = field.substr(0, blank);
  const String value = blank < field.size() ? field.substr(blank + 1) : String();
  if (type == u"Array") {
    if (value.empty()) return Variant(SafeArray());
    const auto colon = value.find(u':');
    std::vector<Variant> items;
    for (const String& item : split(value.substr(colon + 1), u'|'))
      items.push_back(variantOf(item));
    return Variant::array(std::move(items),
                          static_cast<std::int32_t>(integerOf(value.substr(0, colon))));
  }
  const auto number = [&] { return integerOf(value); };
  if (type == u"Empty") return Variant();
  if (type == u"Null") return Variant(Null{});
  if (type == u"Nothing") return Variant(std::shared_ptr<Object>());
  if (type == u"Integer") return Variant(static_cast<std::int16_t>(number()));
  if (type == u"Long") return Variant(static_cast<std::int32_t>(number()));
  if (type == u"Byte") return Variant(static_cast<std::uint8_t>(number()));
  if (type == u"Single") return Variant(static_cast<float>(parseHexDouble(value)));
  if (type == u"Double") return Variant(parseHexDouble(value));
  if (type == u"Currency")
    return Variant(Currency{std::llround(parseHexDouble(value) * Currency::scale)});
  if (type == u"Date") return Variant(Date{parseHexDouble(value)});
  if (type == u"Boolean" && (value == u"True" || value == u"False")) {
    return Variant(value == u"True" ? VBool::True : VBool::False);
  }
  if (type == u"Error") return Variant(ErrorCode{static_cast<std::int32_t>(number())});
  if (type == u"String") return Variant(value);
  throw std::runtime_error("not a variant in data field: " + toUtf8(field));
}

VarType varTypeOf(const String& name) {
  for (int type = 0; type <= static_cast<int>(VarType::Byte); ++type) {
    if (toUtf8(name) == typeName(static_cast<VarType>(type))) return static_cast<VarType>(type);
  }
  throw std::runtime_error("not a type name in data field: " + toUtf8(name));
}

double parseHexDouble(const String& field) { return std::strtod(toUtf8(field).c_str(), nullptr); }

Variant typedValue(std::string_view type, const String& text) {
  const std::string t = toUtf8(text);
  if (type == "R8") return Variant(parseHexDouble(text));
  if (type == "R4") return Variant(static_cast<float>(parseHexDouble(text)));
  if (type == "DATE") return Variant(Date{parseHexDouble(text)});
  if (type == "CY") return Variant(Currency{integerOf(text)});
  if (type == "I2") return Variant(static_cast<std::int16_t>(integerOf(text)));
  if (type == "I4") return Variant(static_cast<std::int32_t>(integerOf(text)));
  if (type == "UI1") return Variant(static_cast<std::uint8_t>(integerOf(text)));
  if (type == "BOOL") return Variant(static_cast<VBool>(integerOf(text)));
  if (type == "BSTR") return Variant(text);
  if (type == "EMPTY") return Variant();
  if (type == "NULL") return Variant(Null{});
  throw std::runtime_error("a value of an unexpected type " + std::string(type) + " " + t);
}

Variant typedValue(const String& typed) {
  const std::string whole = toUtf8(typed);
  const auto space = whole.find(' ');
  return typedValue(whole.substr(0, space),
                    space == std::string::npos ? String() : typed.substr(space + 1));
}

namespace {

std::string describe(const Variant& v) {
  std::ostringstream out;
  out.precision(17);
  out << typeName(v.type()) << " ";
  if (const auto* s = v.get<String>()) out << show(*s);
  if (const auto* d = v.get<double>()) out << *d;
  if (const auto* f = v.get<float>()) out << *f;
  if (const auto* c = v.get<Currency>()) out << c->scaled;
  if (const auto* d = v.get<Date>()) out << d->serial;
  if (const auto* i = v.get<std::int16_t>()) out << *i;
  if (const auto* i = v.get<std::int32_t>()) out << *i;
  if (const auto* b = v.get<std::uint8_t>()) out << static_cast<int>(*b);
  if (const auto* b = v.get<VBool>()) out << static_cast<int>(*b);
  return out.str();
}

}  // namespace

void expectCall(const GoldenRow& row, const String& expected,
                const std::function<Variant()>& call) {
  Variant got;
  const std::int32_t error = errorNumber([&] { got = call(); });
  if (expected.starts_with(u'#')) {
    EXPECT_EQ(error, integerOf(expected.substr(1))) << "data line " << row.line;
  } else {
    EXPECT_EQ(error, 0) << "data line " << row.line;
    EXPECT_TRUE(got == typedValue(expected))
        << "data line " << row.line << ": got " << describe(got) << ", want " << show(expected);
  }
}

std::string bytesOf(const String& field) {
  std::string bytes;
  for (const char16_t unit : field) {
    if (unit > 0xFF) throw std::runtime_error("not a byte in data field: " + toUtf8(field));
    bytes += static_cast<char>(unit);
  }
  return bytes;
}

ScopedEnvironment::ScopedEnvironment(const char* name, const char* value) : name_(name) {
  if (const char* old = std::getenv(name)) previous_ = old;
  (void)(value != nullptr ? ::setenv(name, value, 1) : ::unsetenv(name));
}

ScopedEnvironment::~ScopedEnvironment() {
  (void)(previous_ ? ::setenv(name_.c_str(), previous_->c_str(), 1) : ::unsetenv(name_.c_str()));
}

ScopedLocale::ScopedLocale(const char* localeName) : lcAll_("LC_ALL", localeName) {
  frame::StaticGlobals::instance().setDecimalSeparatorCache({});
}

// The separator is computed again on first use, after LC_ALL is restored.
ScopedLocale::~ScopedLocale() { frame::StaticGlobals::instance().setDecimalSeparatorCache({}); }

bool runInProcesses(int count, const std::function<bool(int)>& body) {
  std::vector<pid_t> children;
  bool ok = true;
  for (int i = 0; i < count; ++i) {
    const pid_t pid = ::fork();
    if (pid < 0) {
      ok = false;
      break;
    }
    if (pid == 0) ::_exit(body(i) ? 0 : 1);
    children.push_back(pid);
  }
  for (const pid_t pid : children) {
    int status = 0;
    ok = ::waitpid(pid, &status, 0) == pid && WIFEXITED(status) && WEXITSTATUS(status) == 0 && ok;
  }
  return ok;
}

TraceCapture::TraceCapture()
    : previous_(
          frame::setTraceSink([this](std::u16string_view prefix, std::u16string_view message) {
            prefixes_.emplace_back(prefix);
            messages_.emplace_back(message);
          })) {}

TraceCapture::~TraceCapture() { frame::setTraceSink(std::move(previous_)); }

Error errorOf(const std::function<void()>& call) {
  try {
    call();
  } catch (const Error& e) {
    return e;
  }
  ADD_FAILURE() << "expected an error";
  return Error(0, u"");
}

std::int32_t errorNumber(const std::function<void()>& call) {
  try {
    call();
  } catch (const Error& e) {
    return e.number();
  }
  return 0;
}

String handledBy(std::u16string_view message, std::u16string_view procedure) {
  return String(message) + u"\r\nError handled by " + String(procedure);
}

std::string show(std::u16string_view s) {
  std::string out;
  for (const char16_t c : s) {
    if (c >= 0x20 && c < 0x7F) {
      out += static_cast<char>(c);
    } else {
      char buf[16];
      std::snprintf(buf, sizeof buf, "\\u{%04X}", static_cast<unsigned>(c));
      out += buf;
    }
  }
  return out;
}

}  // namespace orvo::test

// Tests never depend on the machine's locale: each starts from English (United States) unless
// it sets a locale of its own.
namespace {
const bool kNeutralLocale = [] {
  ::setenv("LC_ALL", "en_US.UTF-8", 1);
  ::unsetenv("ORVO_ANSI_CODEPAGE");
  return true;
}();
}  // namespace
