#include "json_bridge.hpp"

#include <locale.h>  // NOLINT(modernize-deprecated-headers): newlocale and strtod_l are POSIX

#include <algorithm>
#include <charconv>
#include <climits>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "orvogeneric/types.hpp"

namespace orvo::cli {

namespace {

constexpr std::size_t kQuoteLimit = 40;  // bytes of bad input a message repeats

// At most kQuoteLimit bytes of the input, cut on a character boundary, as readable text.
std::string excerpt(std::string_view text) {
  if (text.size() <= kQuoteLimit) return std::string(text);
  std::size_t end = kQuoteLimit;
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
  return std::string(text.substr(0, end)) + "...";
}

[[noreturn]] void badArgument(const std::string& why) {
  throw Error(5, u"Invalid procedure call or argument: " + fromUtf8(why), u"orvo");
}

[[noreturn]] void overflow(const std::string& why) {
  throw Error(6, u"Overflow: " + fromUtf8(why), u"orvo");
}

// 1899-12-30 is serial 0; days from the civil calendar (proleptic Gregorian).
std::int64_t daysFromCivil(std::int64_t y, unsigned m, unsigned d) {
  y -= m <= 2;
  const std::int64_t era = (y >= 0 ? y : y - 399) / 400;
  const auto yoe = static_cast<unsigned>(y - era * 400);
  const unsigned doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
  const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + static_cast<std::int64_t>(doe) - 719468;
}
constexpr std::int64_t kSerialEpoch = -25569;  // daysFromCivil(1899, 12, 30)

// "YYYY-MM-DD" or "YYYY-MM-DDTHH:MM:SS", each field digits only.
Date parseDate(std::u16string_view text16) {
  const std::string text = toUtf8(text16);
  int fields[6] = {0, 0, 0, 0, 0, 0};
  const char separators[] = {'-', '-', 'T', ':', ':'};
  const char* p = text.data();
  const char* const end = p + text.size();
  int n = 0;
  for (; n < 6; ++n) {
    if (p == end || *p < '0' || *p > '9') break;
    const auto r = std::from_chars(p, end, fields[n]);
    if (r.ec != std::errc() || r.ptr - p > (n == 0 ? 4 : 2)) break;
    p = r.ptr;
    if (p == end || n == 5) {
      ++n;
      break;
    }
    if (*p != separators[n]) break;
    ++p;
  }
  const auto [y, mo, d, h, mi, s] = fields;
  if (p != end || (n != 3 && n != 6) || mo < 1 || mo > 12 || d < 1 || d > 31 || h > 23 || mi > 59 ||
      s > 59) {
    badArgument(R"(a date is {"date": "YYYY-MM-DDTHH:MM:SS"}, got ")" + excerpt(text) + "\"");
  }
  const double days = static_cast<double>(
      daysFromCivil(y, static_cast<unsigned>(mo), static_cast<unsigned>(d)) - kSerialEpoch);
  const double time = (h * 3600.0 + mi * 60.0 + s) / 86400.0;
  // The automation date counts the time away from zero for days before the epoch.
  return Date{days < 0 ? days - time : days + time};
}

void appendDate(std::string& out, Date date) {
  double whole = std::trunc(date.serial);
  const double frac = std::fabs(date.serial - whole);
  auto seconds = static_cast<std::int64_t>(std::llround(frac * 86400.0));
  if (seconds >= 86400) {
    seconds -= 86400;
    whole += date.serial < 0 ? -1 : 1;
  }
  const std::int64_t z = static_cast<std::int64_t>(whole) + kSerialEpoch + 719468;
  const std::int64_t era = (z >= 0 ? z : z - 146096) / 146097;
  const auto doe = static_cast<unsigned>(z - era * 146097);
  const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const std::int64_t y = static_cast<std::int64_t>(yoe) + era * 400;
  const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const unsigned mp = (5 * doy + 2) / 153;
  const unsigned d = doy - (153 * mp + 2) / 5 + 1;
  const unsigned m = mp < 10 ? mp + 3 : mp - 9;
  char buf[80];
  std::snprintf(buf, sizeof buf, R"({"date":"%04lld-%02u-%02uT%02lld:%02lld:%02lld"})",
                static_cast<long long>(y + (m <= 2)), m, d, static_cast<long long>(seconds / 3600),
                static_cast<long long>(seconds / 60 % 60), static_cast<long long>(seconds % 60));
  out += buf;
}

void appendNumber(std::string& out, double v) {
  if (!std::isfinite(v)) {
    out += v > 0 ? "1e999" : (v < 0 ? "-1e999" : "null");
    return;
  }
  char buf[64];
  const auto r = std::to_chars(buf, buf + sizeof buf, v);
  out.append(buf, r.ptr);
}

template <class Integer>
void appendInteger(std::string& out, Integer v) {
  char buf[24];
  const auto r = std::to_chars(buf, buf + sizeof buf, v);
  out.append(buf, r.ptr);
}

void appendCurrency(std::string& out, Currency c) {
  const bool negative = c.scaled < 0;
  // Unsigned negation: the smallest amount has no positive counterpart in 64 bits.
  const auto magnitude = negative ? 0ULL - static_cast<unsigned long long>(c.scaled)
                                  : static_cast<unsigned long long>(c.scaled);
  char buf[64];
  std::snprintf(buf, sizeof buf, R"({"currency":"%s%llu.%04llu"})", negative ? "-" : "",
                magnitude / 10000, magnitude % 10000);
  out += buf;
}

// "[-+]digits[.digits]" with at most four decimals, within the 64-bit range of the type.
Currency parseCurrency(std::u16string_view text16) {
  const std::string text = toUtf8(text16);
  std::size_t i = 0;
  const bool negative = !text.empty() && text[0] == '-';
  if (negative || (!text.empty() && text[0] == '+')) ++i;
  unsigned long long scaled = 0;
  constexpr unsigned long long kLimit = 9223372036854775808ULL;  // 2^63
  bool digits = false;
  bool tooBig = false;
  for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i, digits = true) {
    scaled = scaled * 10 + static_cast<unsigned>(text[i] - '0');
    if (scaled > kLimit / 10000) tooBig = true, scaled = kLimit / 10000;
  }
  scaled *= 10000;
  int fracDigits = 0;
  if (i < text.size() && text[i] == '.') {
    unsigned long long frac = 0;
    for (++i; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i) {
      if (fracDigits == 4)
        badArgument("a currency amount has at most four decimals: " + excerpt(text));
      frac = frac * 10 + static_cast<unsigned>(text[i] - '0');
      ++fracDigits;
      digits = true;
    }
    for (int k = fracDigits; k < 4; ++k) frac *= 10;
    scaled += frac;
  }
  if (!digits || i != text.size()) badArgument("not a currency amount: \"" + excerpt(text) + "\"");
  if (tooBig || scaled > (negative ? kLimit : kLimit - 1)) {
    overflow("a currency amount lies within +-922337203685477.5807, got " + excerpt(text));
  }
  return Currency{negative ? static_cast<std::int64_t>(0ULL - scaled)
                           : static_cast<std::int64_t>(scaled)};
}

locale_t cLocale() {
  static const locale_t c = newlocale(LC_ALL_MASK, "C", nullptr);
  return c;
}

// The reader: one pass over the text, straight into variants.
class Reader {
 public:
  Reader(std::string_view text, const ObjectTable& objects) : text_(text), objects_(objects) {}

  Variant value(int depth) {
    skipBlanks();
    if (pos_ == text_.size()) syntax("a value was expected but the text ends");
    const char c = text_[pos_];
    switch (c) {
      case '"':
        return Variant(string());
      case '[': {
        enter(depth);
        return Variant(SafeArray(VarType::Variant, 0, arrayItems(depth + 1)));
      }
      case '{':
        enter(depth);
        return taggedObject(depth + 1);
      case 't':
        word("true");
        return Variant(VBool::True);
      case 'f':
        word("false");
        return Variant(VBool::False);
      case 'n':
        word("null");
        return Variant{};
      default:
        if (c == '-' || (c >= '0' && c <= '9')) return number();
        syntax("unexpected character");
    }
  }

  BatchRequest batchLine() {
    BatchRequest request;
    skipBlanks();
    if (pos_ == text_.size() || text_[pos_] != '{') {
      std::string message = "Invalid procedure call or argument: a batch line is one JSON object";
      message += pos_ == text_.size() ? ", the line is blank"
                                      : ", it starts with: " + excerpt(text_.substr(pos_));
      throw SyntaxError(5, fromUtf8(message), u"orvo");
    }
    ++pos_;
    members([&](const String& key, std::size_t) {
      if (key == u"call") {
        Variant v = value(1);
        auto* s = v.get<String>();
        if (s == nullptr) badArgument("\"call\" is a string such as \"Class.Member\"");
        request.call = std::move(*s);
      } else if (key == u"object") {
        skipBlanks();
        const std::size_t start = pos_;
        const Variant v = value(1);
        request.object = handleOf(v, text_.substr(start, pos_ - start));
      } else if (key == u"args") {
        skipBlanks();
        if (pos_ == text_.size() || text_[pos_] != '[') badArgument("\"args\" is a list");
        ++pos_;
        request.args = arrayItems(1);
      } else if (key == u"named") {
        skipBlanks();
        if (pos_ == text_.size() || text_[pos_] != '{') badArgument("\"named\" is an object");
        ++pos_;
        request.named.clear();
        members([&](const String& name, std::size_t) {
          Variant v = value(1);
          request.named.push_back({toUtf8(name), std::move(v)});
        });
      } else if (key == u"let") {
        request.let = value(1);
      } else {
        (void)value(1);  // other keys are left for the caller's own use
      }
    });
    end();
    if (!request.call) badArgument("the line has no \"call\"");
    return request;
  }

  void end() {
    skipBlanks();
    if (pos_ != text_.size()) syntax("unexpected text after the JSON value");
  }

 private:
  [[noreturn]] void syntax(const std::string& what) const {
    std::string message = "Invalid procedure call or argument: bad JSON at byte " +
                          std::to_string(pos_) + ": " + what;
    if (pos_ < text_.size()) message += ": " + excerpt(text_.substr(pos_));
    throw SyntaxError(5, fromUtf8(message), u"orvo");
  }

  void enter(int depth) {
    if (depth >= kMaxNesting) {
      throw Error(28,
                  u"Out of stack space: arrays and objects nest at most " +
                      fromUtf8(std::to_string(kMaxNesting)) + u" deep (byte " +
                      fromUtf8(std::to_string(pos_)) + u")",
                  u"orvo");
    }
    ++pos_;
  }

  void skipBlanks() {
    while (pos_ < text_.size()) {
      const char c = text_[pos_];
      if (c != ' ' && c != '\t' && c != '\n' && c != '\r') break;
      ++pos_;
    }
  }

  void word(std::string_view w) {
    if (text_.substr(pos_, w.size()) != w) syntax("unexpected word");
    pos_ += w.size();
  }

  void expect(char c, const char* what) {
    skipBlanks();
    if (pos_ == text_.size() || text_[pos_] != c) syntax(what);
    ++pos_;
  }

  std::vector<Variant> arrayItems(int depth) {
    std::vector<Variant> items;
    skipBlanks();
    if (pos_ < text_.size() && text_[pos_] == ']') {
      ++pos_;
      return items;
    }
    while (true) {
      items.push_back(value(depth));
      skipBlanks();
      if (pos_ < text_.size() && text_[pos_] == ',') {
        ++pos_;
        continue;
      }
      expect(']', "',' or ']' was expected in the list");
      return items;
    }
  }

  // Calls f(key, keyStart) with the reader placed before each member's value, which f reads.
  template <class F>
  void members(F f) {
    skipBlanks();
    if (pos_ < text_.size() && text_[pos_] == '}') {
      ++pos_;
      return;
    }
    while (true) {
      skipBlanks();
      const std::size_t keyStart = pos_;
      if (pos_ == text_.size() || text_[pos_] != '"') syntax("a quoted member name was expected");
      const String key = string();
      expect(':', "':' was expected after the member name");
      f(key, keyStart);
      skipBlanks();
      if (pos_ < text_.size() && text_[pos_] == ',') {
        ++pos_;
        continue;
      }
      expect('}', "',' or '}' was expected in the object");
      return;
    }
  }

  static const Variant* find(const std::vector<std::pair<String, Variant>>& m,
                             std::u16string_view k) {
    const Variant* found = nullptr;
    for (const auto& [key, value] : m) {
      if (key == k) found = &value;  // the last of repeated names counts
    }
    return found;
  }

  Variant taggedObject(int depth) {
    const std::size_t start = pos_ - 1;
    std::vector<std::pair<String, Variant>> m;
    std::optional<std::vector<Variant>> items;  // "items": [...]
    bool itemsNull = false;
    std::string_view handleText;
    members([&](const String& key, std::size_t) {
      skipBlanks();
      const std::size_t valueStart = pos_;
      if (key == u"items") {
        // Only a list or null: a tagged form there would be an array inside the array.
        if (pos_ < text_.size() && text_[pos_] == '[') {
          enter(depth);
          items = arrayItems(depth + 1);
          itemsNull = false;
          return;
        }
        if (text_.substr(pos_, 4) == "null") {
          pos_ += 4;
          items.reset();
          itemsNull = true;
          return;
        }
        (void)value(depth);
        badArgument(R"("items" is a list or null in {"lbound": n, "items": [...]}, got )" +
                    excerpt(text_.substr(valueStart, pos_ - valueStart)));
      }
      m.emplace_back(key, value(depth));
      if (key == u"object") handleText = text_.substr(valueStart, pos_ - valueStart);
    });
    const std::string_view source = text_.substr(start, pos_ - start);
    auto text = [&](const Variant* v, const char* form) -> const String& {
      const auto* s = v->get<String>();
      if (s == nullptr) badArgument(std::string(form) + " takes text, in " + excerpt(source));
      return *s;
    };
    if (const Variant* v = find(m, u"date")) return Variant(parseDate(text(v, "\"date\"")));
    if (const Variant* v = find(m, u"currency")) {
      return Variant(parseCurrency(text(v, "\"currency\"")));
    }
    if (find(m, u"null") != nullptr) return Variant(Null{});
    if (const Variant* v = find(m, u"errorValue")) {
      const auto* code = v->get<std::int32_t>();
      if (code == nullptr) badArgument("\"errorValue\" is a Long, in " + excerpt(source));
      return Variant(ErrorCode{*code});
    }
    if (const Variant* v = find(m, u"object")) {
      if (v->isEmpty()) return Variant(std::shared_ptr<Object>());  // Nothing
      return Variant(objects_.get(handleOf(*v, handleText)));
    }
    std::int32_t lbound = 0;
    if (const Variant* v = find(m, u"lbound")) lbound = lowerBound(*v, source);
    if (const Variant* v = find(m, u"bytes")) {
      return Variant(SafeArray(lbound, hexBytes(text(v, "\"bytes\""), lbound)));
    }
    if (itemsNull) return Variant(SafeArray(VarType::Variant));
    if (items) {
      checkUpperBound(lbound, items->size(), source);
      return Variant(SafeArray(VarType::Variant, lbound, std::move(*items)));
    }
    badArgument("unknown JSON object form: " + excerpt(source));
  }

  std::int64_t handleOf(const Variant& v, std::string_view source) const {
    if (const auto* i = v.get<std::int32_t>()) return *i;
    if (const auto* d = v.get<double>()) {
      if (*d == std::trunc(*d) && std::fabs(*d) < 9.0e15) return static_cast<std::int64_t>(*d);
    }
    badArgument("an object handle is a whole number that orvo gave, got " + excerpt(source));
  }

  static std::int32_t lowerBound(const Variant& v, std::string_view source) {
    if (const auto* i = v.get<std::int32_t>()) return *i;
    if (const auto* d = v.get<double>()) {
      if (*d == std::trunc(*d) && *d >= INT32_MIN && *d <= INT32_MAX) {
        return static_cast<std::int32_t>(*d);
      }
      overflow("an array's lower bound is a whole number within a Long, in " + excerpt(source));
    }
    badArgument("\"lbound\" is a number, in " + excerpt(source));
  }

  static void checkUpperBound(std::int32_t lbound, std::size_t count, std::string_view source) {
    if (static_cast<std::int64_t>(lbound) - 1 + static_cast<std::int64_t>(count) > INT32_MAX ||
        static_cast<std::int64_t>(lbound) - 1 + static_cast<std::int64_t>(count) < INT32_MIN) {
      overflow("an array's upper bound lies beyond a Long, in " + excerpt(source));
    }
  }

  static std::vector<std::uint8_t> hexBytes(const String& hex, std::int32_t lbound) {
    if (hex.size() % 2 != 0) badArgument("byte array hex text has an odd length");
    std::vector<std::uint8_t> bytes(hex.size() / 2);
    auto digit = [&](char16_t c) -> unsigned {
      if (c >= u'0' && c <= u'9') return c - u'0';
      if (c >= u'a' && c <= u'f') return c - u'a' + 10;
      if (c >= u'A' && c <= u'F') return c - u'A' + 10;
      badArgument("byte array hex text is not hexadecimal: " + excerpt(toUtf8(hex)));
    };
    for (std::size_t i = 0; i < bytes.size(); ++i) {
      bytes[i] = static_cast<std::uint8_t>(digit(hex[2 * i]) << 4 | digit(hex[2 * i + 1]));
    }
    checkUpperBound(lbound, bytes.size(), toUtf8(hex.substr(0, 20)));
    return bytes;
  }

  Variant number() {
    const std::size_t start = pos_;
    bool whole = true;
    if (text_[pos_] == '-') ++pos_;
    auto digits = [&] {
      const std::size_t from = pos_;
      while (pos_ < text_.size() && text_[pos_] >= '0' && text_[pos_] <= '9') ++pos_;
      return pos_ - from;
    };
    const std::size_t intStart = pos_;
    const std::size_t n = digits();
    if (n == 0) syntax("a digit was expected");
    if (n > 1 && text_[intStart] == '0') {
      pos_ = intStart + 1;
      syntax("a number does not start with 0");
    }
    if (pos_ < text_.size() && text_[pos_] == '.') {
      ++pos_;
      whole = false;
      if (digits() == 0) syntax("a digit was expected after '.'");
    }
    if (pos_ < text_.size() && (text_[pos_] == 'e' || text_[pos_] == 'E')) {
      ++pos_;
      whole = false;
      if (pos_ < text_.size() && (text_[pos_] == '+' || text_[pos_] == '-')) ++pos_;
      if (digits() == 0) syntax("a digit was expected in the exponent");
    }
    const std::string_view token = text_.substr(start, pos_ - start);
    if (whole && n <= 10) {
      std::int64_t v = 0;
      std::from_chars(token.data(), token.data() + token.size(), v);
      if (v >= INT32_MIN && v <= INT32_MAX) return Variant(static_cast<std::int32_t>(v));
    }
    // Beyond the range of a double the value is infinite, as "1e999" is written for it.
    const std::string copy(token);
    return Variant(strtod_l(copy.c_str(), nullptr, cLocale()));
  }

  // Decodes a JSON string to UTF-16 code units.
  String string() {
    ++pos_;  // the opening quote
    String out;
    // Sized once: a long string grown by doubling would hold two copies at its last step.
    out.reserve(quotedLength());
    while (true) {
      // Plain ASCII runs are copied without looking at each byte twice.
      const std::size_t runStart = pos_;
      while (pos_ < text_.size()) {
        const auto c = static_cast<unsigned char>(text_[pos_]);
        if (c == '"' || c == '\\' || c < 0x20 || c >= 0x80) break;
        ++pos_;
      }
      // Widened in place: appending the byte range would build a temporary string first.
      const std::size_t had = out.size();
      out.resize(had + (pos_ - runStart));
      std::copy(text_.begin() + static_cast<std::ptrdiff_t>(runStart),
                text_.begin() + static_cast<std::ptrdiff_t>(pos_),
                out.begin() + static_cast<std::ptrdiff_t>(had));
      if (pos_ == text_.size()) syntax("the text ends inside a string");
      const auto c = static_cast<unsigned char>(text_[pos_]);
      if (c == '"') {
        ++pos_;
        return out;
      }
      if (c < 0x20) syntax("a control character must be escaped in a string");
      if (c == '\\') {
        escape(out);
        continue;
      }
      utf8(out);
    }
  }

  // Bytes up to the closing quote (or the end of the text): at least the string's length.
  std::size_t quotedLength() const {
    std::size_t at = pos_;
    while (true) {
      at = text_.find('"', at);
      if (at == std::string_view::npos) return text_.size() - pos_;
      std::size_t backslashes = 0;
      while (at - backslashes > pos_ && text_[at - backslashes - 1] == '\\') ++backslashes;
      if (backslashes % 2 == 0) return at - pos_;
      ++at;
    }
  }

  void escape(String& out) {
    ++pos_;
    if (pos_ == text_.size()) syntax("the text ends inside a string");
    const char c = text_[pos_++];
    switch (c) {
      case '"':
      case '\\':
      case '/':
        out += static_cast<char16_t>(c);
        return;
      case 'b':
        out += u'\b';
        return;
      case 'f':
        out += u'\f';
        return;
      case 'n':
        out += u'\n';
        return;
      case 'r':
        out += u'\r';
        return;
      case 't':
        out += u'\t';
        return;
      case 'u': {
        unsigned unit = 0;
        for (int k = 0; k < 4; ++k, ++pos_) {
          if (pos_ == text_.size()) syntax("four hexadecimal digits were expected after \\u");
          const char h = text_[pos_];
          unit <<= 4;
          if (h >= '0' && h <= '9') {
            unit |= static_cast<unsigned>(h - '0');
          } else if (h >= 'a' && h <= 'f') {
            unit |= static_cast<unsigned>(h - 'a' + 10);
          } else if (h >= 'A' && h <= 'F') {
            unit |= static_cast<unsigned>(h - 'A' + 10);
          } else {
            syntax("four hexadecimal digits were expected after \\u");
          }
        }
        // Any code unit, a lone surrogate too: text is UTF-16 units.
        out += static_cast<char16_t>(unit);
        return;
      }
      default:
        --pos_;
        syntax("unknown escape in a string");
    }
  }

  void utf8(String& out) {
    const auto* p = reinterpret_cast<const unsigned char*>(text_.data()) + pos_;
    const std::size_t left = text_.size() - pos_;
    const unsigned c = p[0];
    std::size_t n = 0;
    unsigned cp = 0;
    unsigned min = 0;
    if (c >= 0xC2 && c <= 0xDF) {
      n = 2, cp = c & 0x1F, min = 0x80;
    } else if (c >= 0xE0 && c <= 0xEF) {
      n = 3, cp = c & 0x0F, min = 0x800;
    } else if (c >= 0xF0 && c <= 0xF4) {
      n = 4, cp = c & 0x07, min = 0x10000;
    } else {
      syntax("the text is not UTF-8");
    }
    if (left < n) syntax("the text is not UTF-8");
    for (std::size_t k = 1; k < n; ++k) {
      if ((p[k] & 0xC0) != 0x80) syntax("the text is not UTF-8");
      cp = cp << 6 | (p[k] & 0x3F);
    }
    if (cp < min || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) {
      syntax("the text is not UTF-8");
    }
    if (cp >= 0x10000) {
      out += static_cast<char16_t>(0xD800 + ((cp - 0x10000) >> 10));
      out += static_cast<char16_t>(0xDC00 + ((cp - 0x10000) & 0x3FF));
    } else {
      out += static_cast<char16_t>(cp);
    }
    pos_ += n;
  }

  std::string_view text_;
  const ObjectTable& objects_;
  std::size_t pos_ = 0;
};

}  // namespace

std::int64_t ObjectTable::add(const std::shared_ptr<Object>& object) {
  const auto it = handles_.find(object.get());
  if (it != handles_.end()) return it->second;
  objects_[next_] = object;
  handles_[object.get()] = next_;
  return next_++;
}

std::shared_ptr<Object> ObjectTable::get(std::int64_t handle) const {
  const auto it = objects_.find(handle);
  if (it == objects_.end()) badArgument("no object with handle " + std::to_string(handle));
  return it->second;
}

Variant parseValue(std::string_view text, const ObjectTable& objects) {
  Reader reader(text, objects);
  Variant v = reader.value(0);
  reader.end();
  return v;
}

BatchRequest parseBatchLine(std::string_view line, const ObjectTable& objects) {
  return Reader(line, objects).batchLine();
}

void appendQuoted(std::string& out, std::u16string_view text) {
  out += '"';
  static constexpr char kHex[] = "0123456789ABCDEF";
  auto escaped = [&](char16_t c) {
    out += "\\u";
    for (int shift = 12; shift >= 0; shift -= 4) out += kHex[(c >> shift) & 0xF];
  };
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char16_t c = text[i];
    if (c < 0x80) {
      switch (c) {
        case u'"':
          out += "\\\"";
          break;
        case u'\\':
          out += "\\\\";
          break;
        case u'\n':
          out += "\\n";
          break;
        case u'\r':
          out += "\\r";
          break;
        case u'\t':
          out += "\\t";
          break;
        default:
          if (c < 0x20) {
            escaped(c);
          } else {
            out += static_cast<char>(c);
          }
      }
    } else if (c < 0x800) {
      out += static_cast<char>(0xC0 | (c >> 6));
      out += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c >= 0xD800 && c <= 0xDBFF && i + 1 < text.size() && text[i + 1] >= 0xDC00 &&
               text[i + 1] <= 0xDFFF) {
      const char32_t cp = 0x10000 + ((static_cast<char32_t>(c) - 0xD800) << 10) +
                          (static_cast<char32_t>(text[i + 1]) - 0xDC00);
      out += static_cast<char>(0xF0 | (cp >> 18));
      out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
      out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (cp & 0x3F));
      ++i;
    } else if (c >= 0xD800 && c <= 0xDFFF) {
      escaped(c);
    } else {
      out += static_cast<char>(0xE0 | (c >> 12));
      out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (c & 0x3F));
    }
  }
  out += '"';
}

std::string quote(std::u16string_view text) {
  std::string out;
  appendQuoted(out, text);
  return out;
}

void appendJson(std::string& out, const Variant& v, ObjectTable& objects) {
  if (const SafeArray* a = v.array()) {
    if (!a->dimensioned()) {
      out += R"({"lbound":0,"items":null})";
      return;
    }
    if (a->elementType() == VarType::Byte) {
      static constexpr char kHex[] = "0123456789abcdef";
      out += R"({"bytes":")";
      for (const std::uint8_t b : a->bytes()) {
        out += kHex[b >> 4];
        out += kHex[b & 0xF];
      }
      out += R"(","lbound":)";
      appendInteger(out, a->lowerBound());
      out += '}';
      return;
    }
    const bool plain = a->lowerBound() == 0;
    if (!plain) {
      out += R"({"lbound":)";
      appendInteger(out, a->lowerBound());
      out += R"(,"items":)";
    }
    out += '[';
    a->visit([&](const auto& items) {
      using T = typename std::decay_t<decltype(items)>::value_type;
      for (std::size_t i = 0; i < items.size(); ++i) {
        if (i > 0) out += ',';
        if constexpr (std::is_same_v<T, Variant>) {
          appendJson(out, items[i], objects);
        } else if constexpr (std::is_same_v<T, String>) {
          appendQuoted(out, items[i]);
        } else {
          appendJson(out, Variant(items[i]), objects);
        }
      }
    });
    out += ']';
    if (!plain) out += '}';
    return;
  }
  switch (v.type()) {
    case VarType::Empty:
      out += "null";
      return;
    case VarType::Null:
      out += R"({"null":true})";
      return;
    case VarType::Integer:
      appendInteger(out, *v.get<std::int16_t>());
      return;
    case VarType::Long:
      appendInteger(out, *v.get<std::int32_t>());
      return;
    case VarType::Byte:
      appendInteger(out, *v.get<std::uint8_t>());
      return;
    case VarType::Single:
      appendNumber(out, static_cast<double>(*v.get<float>()));
      return;
    case VarType::Double:
      appendNumber(out, *v.get<double>());
      return;
    case VarType::Currency:
      appendCurrency(out, *v.get<Currency>());
      return;
    case VarType::Date:
      appendDate(out, *v.get<Date>());
      return;
    case VarType::String:
      appendQuoted(out, *v.get<String>());
      return;
    case VarType::Boolean: {
      const VBool b = *v.get<VBool>();
      if (b == VBool::True) {
        out += "true";
      } else if (b == VBool::False) {
        out += "false";
      } else {
        appendInteger(out, value(b));  // a non-canonical boolean shows its number
      }
      return;
    }
    case VarType::Error:
      out += R"({"errorValue":)";
      appendInteger(out, v.get<ErrorCode>()->scode);
      out += '}';
      return;
    case VarType::Object: {
      const auto& object = *v.object();
      if (!object) {
        out += R"({"object":null})";
        return;
      }
      out += R"({"object":)";
      appendInteger(out, objects.add(object));
      out += R"(,"class":)";
      appendQuoted(out, fromUtf8(object->className()));
      out += '}';
      return;
    }
    default:
      out += "null";
  }
}

std::string errorJson(const Error& e) {
  std::string out = R"({"error":{"number":)";
  appendInteger(out, e.number());
  out += R"(,"description":)";
  appendQuoted(out, e.description());
  out += R"(,"source":)";
  appendQuoted(out, e.source());
  return out + "}}";
}

}  // namespace orvo::cli
