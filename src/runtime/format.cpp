#include "runtime/format.hpp"

#include <unicode/uchar.h>

#include <algorithm>
#include <array>
#include <cmath>

#include "runtime/convert.hpp"
#include "runtime/errors.hpp"
#include "runtime/format_internal.hpp"
#include "runtime/numbers.hpp"
#include "runtime/text_internal.hpp"

namespace orvo::runtime {

namespace detail {

std::vector<std::u16string_view> splitSections(std::u16string_view pattern) {
  std::vector<std::u16string_view> sections;
  std::size_t start = 0;
  bool quoted = false;
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    const char16_t c = pattern[i];
    if (c == u'"') {
      quoted = !quoted;
    } else if (c == u'\\' && !quoted) {
      ++i;
    } else if (c == u';' && !quoted) {
      sections.push_back(pattern.substr(start, i - start));
      start = i + 1;
    }
  }
  sections.push_back(pattern.substr(std::min(start, pattern.size())));
  return sections;
}

PatternKind classifyPattern(std::u16string_view pattern) {
  bool digits = false;
  bool dateTokens = false;
  bool textTokens = false;
  bool caseTokens = false;
  bool quoted = false;
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    const char16_t c = pattern[i];
    if (c == u'"') {
      quoted = !quoted;
      continue;
    }
    if (quoted) continue;
    if (c == u'\\') {
      ++i;
      continue;
    }
    switch (foldCase(c)) {
      case u'0':
      case u'#':
        digits = true;
        break;
      case u'@':
      case u'&':
        textTokens = true;
        break;
      case u'<':
      case u'>':
      case u'!':
        caseTokens = true;
        break;
      case u'd':
      case u'w':
      case u'm':
      case u'q':
      case u'y':
      case u'h':
      case u'n':
      case u's':
      case u't':
      case u'c':
      case u'a':
      case u'/':
      case u':':
        dateTokens = true;
        break;
      default:
        break;
    }
  }
  if (textTokens) return PatternKind::Text;
  if (digits) return PatternKind::Number;
  if (dateTokens) return PatternKind::Date;
  if (caseTokens) return PatternKind::Text;
  return PatternKind::Number;
}

String formatTextPattern(std::u16string_view text, std::u16string_view pattern) {
  const std::vector<std::u16string_view> sections = splitSections(pattern);
  const std::u16string_view section =
      (text.empty() && sections.size() >= 2) ? sections[1] : sections[0];
  struct Piece {
    bool placeholder;
    char16_t kind;  // '@' pads with a blank, '&' with nothing
    String literal;
  };
  std::vector<Piece> pieces;
  int caseMode = 0;  // <0 lower, >0 upper
  bool leftToRight = false;
  int placeholders = 0;
  for (std::size_t i = 0; i < section.size(); ++i) {
    const char16_t c = section[i];
    if (c == u'@' || c == u'&') {
      pieces.push_back({true, c, {}});
      ++placeholders;
    } else if (c == u'<') {
      caseMode = -1;
    } else if (c == u'>') {
      caseMode = 1;
    } else if (c == u'!') {
      leftToRight = true;
    } else if (c == u'"') {
      const std::size_t end = section.find(u'"', i + 1);
      const std::size_t stop = end == std::u16string_view::npos ? section.size() : end;
      pieces.push_back({false, 0, String(section.substr(i + 1, stop - i - 1))});
      i = stop;
    } else if (c == u'\\') {
      if (i + 1 < section.size()) pieces.push_back({false, 0, String(1, section[++i])});
    } else {
      pieces.push_back({false, 0, String(1, c)});
    }
  }
  String source(text);
  for (char16_t& ch : source) {
    if (caseMode < 0) ch = static_cast<char16_t>(u_tolower(ch));
    if (caseMode > 0) ch = static_cast<char16_t>(u_toupper(ch));
  }
  if (placeholders == 0) {
    String out;
    for (const Piece& p : pieces) out += p.literal;
    return out + source;
  }
  // Placeholders take characters from the right unless "!" asks for the left; what is left
  // over stays with the outermost placeholder, so no character is ever lost.
  const auto len = static_cast<int>(source.size());
  const int extra = std::max(0, len - placeholders);
  std::vector<String> fill(static_cast<std::size_t>(placeholders));
  for (int k = 0; k < placeholders; ++k) {
    int from = leftToRight ? k : len - placeholders + k;
    int count = 1;
    if (leftToRight && k == placeholders - 1) count += extra;
    if (!leftToRight && k == 0) {
      from -= extra;
      count += extra;
    }
    if (from >= 0 && from < len) {
      fill[static_cast<std::size_t>(k)] =
          source.substr(static_cast<std::size_t>(from), static_cast<std::size_t>(count));
    }
  }
  String out;
  int k = 0;
  for (const Piece& p : pieces) {
    if (!p.placeholder) {
      out += p.literal;
      continue;
    }
    const String& f = fill[static_cast<std::size_t>(k++)];
    if (!f.empty()) {
      out += f;
    } else if (p.kind == u'@') {
      out += u' ';
    }
  }
  return out;
}

}  // namespace detail

namespace {

using detail::Decimal;
using detail::FormatNumber;

// Yes/No, True/False and On/Off in the user's language.
struct BoolWords {
  std::u16string_view language;
  std::array<std::u16string_view, 6> words;  // yes, no, true, false, on, off
};
constexpr std::array<BoolWords, 2> kBoolWords{{
    {u"en", {u"Yes", u"No", u"True", u"False", u"On", u"Off"}},
    {u"de", {u"Ja", u"Nein", u"Wahr", u"Falsch", u"Ein", u"Aus"}},
}};

const BoolWords& boolWordsFor(const platform::RegionalSettings& rs) {
  for (const BoolWords& w : kBoolWords) {
    if (rs.localeName.size() >= 2 && rs.localeName[0] == static_cast<char>(w.language[0]) &&
        rs.localeName[1] == static_cast<char>(w.language[1])) {
      return w;
    }
  }
  return kBoolWords[0];
}

// The locale's currency picture in Format's own pattern language, e.g. "$#,##0.00;($#,##0.00)"
// or "#,##0.00 €;-#,##0.00 €".
String currencyPattern(const platform::RegionalSettings& rs) {
  String number = u"#,##0";
  if (rs.currencyDigits > 0) {
    number += u'.';
    number.append(static_cast<std::size_t>(rs.currencyDigits), u'0');
  }
  const String sym = u"\"" + rs.currencySymbol + u"\"";
  String positive;
  switch (rs.currencyPositiveMode) {
    case 1:
      positive = number + sym;
      break;
    case 2:
      positive = sym + u" " + number;
      break;
    case 3:
      positive = number + u" " + sym;
      break;
    default:
      positive = sym + number;
      break;
  }
  static constexpr std::array<std::u16string_view, 16> kNegative{
      u"(S#)", u"-S#",  u"S-#",  u"S#-",  u"(#S)", u"-#S",  u"#-S",   u"#S-",
      u"-# S", u"-S #", u"# S-", u"S #-", u"S -#", u"#- S", u"(S #)", u"(# S)"};
  const std::u16string_view shape = kNegative[static_cast<std::size_t>(
      rs.currencyNegativeMode >= 0 && rs.currencyNegativeMode < 16 ? rs.currencyNegativeMode : 0)];
  String negative;
  for (char16_t c : shape) {
    if (c == u'S') {
      negative += sym;
    } else if (c == u'#') {
      negative += number;
    } else {
      negative += c;
    }
  }
  return positive + u";" + negative;
}

// What Format works on, decided by the variant type.
struct Subject {
  enum Kind { Number, Date, Text } kind = Number;
  FormatNumber number;
  double serial = 0;     // Date, and the serial of a number used with a date pattern
  String plain;          // the text of the value for an empty pattern or General Number
  bool boolish = false;  // non-zero for Yes/No and friends
  String text;           // Text
};

Subject numberSubject(Decimal d, double serial, String plain) {
  Subject s;
  s.kind = Subject::Number;
  s.boolish = !d.isZero();
  s.number.value = std::move(d);
  s.serial = serial;
  s.plain = std::move(plain);
  return s;
}

Subject subjectOf(const Variant& value, const platform::RegionalSettings& rs) {
  const String& sep = rs.decimalSeparator;
  switch (value.type()) {
    case VarType::Empty: {
      Subject s = numberSubject({}, 0, {});
      s.number.empty = true;
      return s;
    }
    case VarType::Integer: {
      const auto v = *value.get<std::int16_t>();
      return numberSubject(detail::decimalFromInteger(v), v, detail::widen(std::to_string(v)));
    }
    case VarType::Long: {
      const auto v = *value.get<std::int32_t>();
      return numberSubject(detail::decimalFromInteger(v), v, detail::widen(std::to_string(v)));
    }
    case VarType::Byte: {
      const auto v = *value.get<std::uint8_t>();
      return numberSubject(detail::decimalFromInteger(v), v, detail::widen(std::to_string(v)));
    }
    case VarType::Boolean: {
      const auto v = static_cast<std::int16_t>(*value.get<VBool>());
      return numberSubject(detail::decimalFromInteger(v), v, detail::widen(std::to_string(v)));
    }
    case VarType::Single: {
      const float v = *value.get<float>();
      if (!std::isfinite(v)) raise(errOverflow);
      return numberSubject(detail::decimalFromDouble(v, 7), v, singleToText(v, sep));
    }
    case VarType::Double: {
      const double v = *value.get<double>();
      if (!std::isfinite(v)) raise(errOverflow);
      return numberSubject(detail::decimalFromDouble(v, 15), v, doubleToText(v, sep));
    }
    case VarType::Currency: {
      const Currency v = *value.get<Currency>();
      return numberSubject(detail::decimalFromCurrency(v), v.toDouble(), currencyToText(v, sep));
    }
    case VarType::Date: {
      Subject s;
      s.kind = Subject::Date;
      s.serial = value.get<Date>()->serial;
      s.number.value = detail::decimalFromDouble(s.serial, 15);
      s.boolish = s.serial != 0;
      s.plain = detail::generalDateText(s.serial, rs);
      return s;
    }
    case VarType::String: {
      Subject s;
      s.kind = Subject::Text;
      s.text = *value.get<String>();
      s.plain = s.text;
      return s;
    }
    default:
      raise(errTypeMismatch);
  }
}

String formatNamed(const Subject& s, std::u16string_view name, const platform::RegionalSettings& rs,
                   bool& handled) {
  handled = true;
  using detail::equalsIgnoreCase;
  const bool isDate = s.kind == Subject::Date;
  auto number = [&](std::u16string_view pattern) {
    return detail::formatNumberPattern(s.number, pattern, rs);
  };
  auto date = [&](std::u16string_view pattern) {
    return detail::formatDatePattern(s.serial, pattern, rs);
  };
  auto picture = [&](const String& pic) {
    return detail::formatPicture(pic, splitDate(Date{s.serial}), rs);
  };
  const BoolWords& words = boolWordsFor(rs);
  if (equalsIgnoreCase(name, u"General Number")) {
    return isDate ? doubleToText(s.serial, rs.decimalSeparator) : s.plain;
  }
  if (equalsIgnoreCase(name, u"Currency")) return number(currencyPattern(rs));
  if (equalsIgnoreCase(name, u"Fixed")) return number(u"0.00");
  if (equalsIgnoreCase(name, u"Standard")) return number(u"#,##0.00");
  if (equalsIgnoreCase(name, u"Percent")) return number(u"0.00%");
  if (equalsIgnoreCase(name, u"Scientific")) return number(u"0.00E+00");
  if (equalsIgnoreCase(name, u"Yes/No")) return String(words.words[s.boolish ? 0 : 1]);
  if (equalsIgnoreCase(name, u"True/False")) return String(words.words[s.boolish ? 2 : 3]);
  if (equalsIgnoreCase(name, u"On/Off")) return String(words.words[s.boolish ? 4 : 5]);
  if (equalsIgnoreCase(name, u"General Date")) return detail::generalDateText(s.serial, rs);
  if (equalsIgnoreCase(name, u"Long Date")) return picture(rs.longDate);
  if (equalsIgnoreCase(name, u"Medium Date")) return date(u"dd-mmm-yy");
  if (equalsIgnoreCase(name, u"Short Date")) return picture(rs.shortDate);
  if (equalsIgnoreCase(name, u"Long Time")) return picture(rs.timeFormat);
  if (equalsIgnoreCase(name, u"Medium Time")) return date(u"hh:nn AMPM");
  // A fixed 24-hour clock whatever the locale's own time picture says.
  if (equalsIgnoreCase(name, u"Short Time")) return date(u"hh:nn");
  handled = false;
  return {};
}

bool isNamedFormat(std::u16string_view name) {
  static constexpr std::array<std::u16string_view, 16> kNames{
      u"General Number", u"Currency",     u"Fixed",       u"Standard",
      u"Percent",        u"Scientific",   u"Yes/No",      u"True/False",
      u"On/Off",         u"General Date", u"Long Date",   u"Medium Date",
      u"Short Date",     u"Long Time",    u"Medium Time", u"Short Time"};
  for (auto n : kNames) {
    if (detail::equalsIgnoreCase(name, n)) return true;
  }
  return false;
}

bool isDateName(std::u16string_view name) {
  return detail::equalsIgnoreCase(name.substr(name.size() > 4 ? name.size() - 4 : 0), u"Date") ||
         detail::equalsIgnoreCase(name.substr(name.size() > 4 ? name.size() - 4 : 0), u"Time");
}

}  // namespace

String Format(const Variant& value, std::u16string_view pattern,
              const platform::RegionalSettings& rs) {
  if (value.isNull()) return {};
  if (value.isArray() || value.object() != nullptr || value.type() == VarType::Error) {
    raise(errTypeMismatch);
  }
  Subject s = subjectOf(value, rs);
  if (pattern.empty()) return s.plain;

  const bool named = isNamedFormat(pattern);
  const detail::PatternKind kind =
      named ? (isDateName(pattern) ? detail::PatternKind::Date : detail::PatternKind::Number)
            : detail::classifyPattern(pattern);

  if (kind == detail::PatternKind::Text) return detail::formatTextPattern(s.plain, pattern);

  if (s.kind == Subject::Text) {
    // Text is read as a number, or for date patterns first as a date, in the user's settings;
    // text that is neither comes back unchanged.
    std::optional<double> serial;
    if (kind == detail::PatternKind::Date) serial = detail::parseDateText(s.text, rs);
    detail::ParsedNumber parsed = detail::parseNumber(s.text, rs);
    if (serial) {
      Subject d;
      d.kind = Subject::Date;
      d.serial = *serial;
      d.boolish = *serial != 0;
      d.number.value = detail::decimalFromDouble(*serial, 15);
      s = std::move(d);
    } else if (parsed.status == detail::ParseStatus::ok) {
      const double v = detail::toDouble(parsed.value);
      Decimal digits = detail::decimalFromDouble(v, 15);
      s = numberSubject(std::move(digits), v, doubleToText(v, rs.decimalSeparator));
    } else {
      return s.text;
    }
  }

  if (named) {
    bool handled = false;
    String out = formatNamed(s, pattern, rs, handled);
    if (handled) return out;
  }
  if (kind == detail::PatternKind::Date) {
    return detail::formatDatePattern(s.number.empty ? 0.0 : s.serial, pattern, rs);
  }
  return detail::formatNumberPattern(s.number, pattern, rs);
}

}  // namespace orvo::runtime
