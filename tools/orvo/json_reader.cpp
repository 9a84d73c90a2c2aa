#include <algorithm>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "json_bridge.hpp"
#include "json_scalars.hpp"
#include "orvogeneric/rect_record.hpp"
#include "orvogeneric/types.hpp"

namespace orvo::cli {

namespace {

using json::badArgument;
using json::excerpt;
using json::overflow;
using json::parseCurrency;
using json::parseDate;

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
    const Variant* left = find(m, u"Left");
    const Variant* top = find(m, u"Top");
    const Variant* right = find(m, u"Right");
    const Variant* bottom = find(m, u"Bottom");
    if (left != nullptr && top != nullptr && right != nullptr && bottom != nullptr) {
      return Variant(std::shared_ptr<Object>(
          std::make_shared<RectRecord>(RECT{field(*left, source), field(*top, source),
                                            field(*right, source), field(*bottom, source)})));
    }
    badArgument("unknown JSON object form: " + excerpt(source));
  }

  // A RECT's field: a whole number of 32 bits.
  static std::int32_t field(const Variant& v, std::string_view source) {
    if (const auto* i = v.get<std::int32_t>()) return *i;
    badArgument("a RECT's Left, Top, Right and Bottom are 32-bit whole numbers, in " +
                excerpt(source));
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
    return Variant(json::parseNumber(token));
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

}  // namespace orvo::cli
