#include "runtime/convert.hpp"

#include <cmath>
#include <limits>

#include "runtime/date_internal.hpp"
#include "runtime/errors.hpp"
#include "runtime/numbers.hpp"
#include "runtime/text_internal.hpp"

namespace orvo::runtime {

namespace detail {

namespace {

bool isSpace(char16_t c) { return c == u' ' || c == u'\t' || c == u'\r' || c == u'\n'; }

bool startsWith(std::u16string_view s, std::size_t i, std::u16string_view what) {
  return !what.empty() && s.size() - i >= what.size() && s.substr(i, what.size()) == what;
}

int radixDigit(char16_t c) {
  if (c >= u'0' && c <= u'9') return c - u'0';
  if (c >= u'a' && c <= u'f') return c - u'a' + 10;
  if (c >= u'A' && c <= u'F') return c - u'A' + 10;
  return -1;
}

}  // namespace

ParsedNumber parseNumber(std::u16string_view s, const platform::RegionalSettings& rs) {
  ParsedNumber result;
  std::size_t i = 0;
  const std::size_t n = s.size();
  auto skipSpace = [&] {
    while (i < n && isSpace(s[i])) ++i;
  };
  bool negative = false;
  bool sign = false;
  bool paren = false;
  bool closed = false;
  bool currency = false;

  // A sign, a parenthesis and the currency symbol may stand before and after the digits, in any
  // order, each at most once; before the digits the parenthesis opens, after them it closes.
  auto decorations = [&](bool afterDigits) {
    skipSpace();
    for (;;) {
      if (i < n && (s[i] == u'-' || s[i] == u'+') && !sign) {
        sign = true;
        negative = s[i] == u'-';
        ++i;
      } else if (!afterDigits && i < n && s[i] == u'(' && !paren) {
        paren = true;
        ++i;
      } else if (afterDigits && i < n && s[i] == u')' && paren && !closed) {
        closed = true;
        ++i;
      } else if (!currency && startsWith(s, i, rs.currencySymbol)) {
        currency = true;
        i += rs.currencySymbol.size();
      } else {
        break;
      }
      skipSpace();
    }
  };
  decorations(false);

  Decimal d;
  if (i + 1 < n && s[i] == u'&' && !paren) {
    const char16_t kind = s[i + 1];
    const int radix = (kind == u'H' || kind == u'h') ? 16 : (kind == u'O' || kind == u'o') ? 8 : 0;
    if (radix == 0) return result;
    i += 2;
    std::uint64_t value = 0;
    bool any = false;
    while (i < n && radixDigit(s[i]) >= 0 && radixDigit(s[i]) < radix) {
      const auto digit = static_cast<std::uint64_t>(radixDigit(s[i]));
      if (value >
          (std::numeric_limits<std::uint64_t>::max() - digit) / static_cast<std::uint64_t>(radix)) {
        result.status = ParseStatus::overflow;
        return result;
      }
      value = value * static_cast<std::uint64_t>(radix) + digit;
      any = true;
      ++i;
    }
    skipSpace();
    if (!any || i != n) return result;
    d.digits = std::to_string(value);
    d.point = static_cast<int>(d.digits.size());
    while (!d.digits.empty() && d.digits.back() == '0') d.digits.pop_back();
    d.negative = negative && !d.isZero();
    if (d.isZero()) d.point = 0;
    result.status = ParseStatus::ok;
    result.value = std::move(d);
    return result;
  }

  bool anyDigit = false;
  bool seenPoint = false;
  int point = 0;
  for (; i < n; ++i) {
    const char16_t c = s[i];
    if (c >= u'0' && c <= u'9') {
      anyDigit = true;
      if (d.digits.empty() && c == u'0') {
        if (seenPoint) --point;
        continue;
      }
      d.digits += static_cast<char>(c);
      if (!seenPoint) ++point;
    } else if (!seenPoint && startsWith(s, i, rs.decimalSeparator)) {
      seenPoint = true;
      i += rs.decimalSeparator.size() - 1;
    } else if (anyDigit && startsWith(s, i, rs.thousandSeparator)) {
      // Grouping marks are taken wherever they stand between digits, even after the decimal
      // separator: "1,234.5" under German settings reads as 1.2345.
      i += rs.thousandSeparator.size() - 1;
    } else {
      break;
    }
  }
  if (!anyDigit) return result;
  if (i < n && (s[i] == u'E' || s[i] == u'e' || s[i] == u'D' || s[i] == u'd')) {
    ++i;
    bool negativeExponent = false;
    if (i < n && (s[i] == u'+' || s[i] == u'-')) {
      negativeExponent = s[i] == u'-';
      ++i;
    }
    if (i >= n || s[i] < u'0' || s[i] > u'9') return result;
    long exponent = 0;
    while (i < n && s[i] >= u'0' && s[i] <= u'9') {
      if (exponent < 100000) exponent = exponent * 10 + (s[i] - u'0');
      ++i;
    }
    point += static_cast<int>(negativeExponent ? -exponent : exponent);
  }

  decorations(true);
  // Parentheses are a sign of their own: both, or one without the other, is not a number.
  if (i != n || paren != closed || (paren && sign)) return result;
  if (paren) negative = true;

  while (!d.digits.empty() && d.digits.back() == '0') d.digits.pop_back();
  d.point = d.digits.empty() ? 0 : point;
  d.negative = negative && !d.digits.empty();
  if (!d.digits.empty() && std::isinf(toDouble(d))) {
    result.status = ParseStatus::overflow;
    return result;
  }
  result.status = ParseStatus::ok;
  result.value = std::move(d);
  return result;
}

}  // namespace detail

namespace {

[[noreturn]] void typeMismatch() { raise(errTypeMismatch); }

void rejectNonValues(const Variant& value) {
  if (value.isNull()) raise(errInvalidUseOfNull);
  if (value.isArray() || value.object() != nullptr || value.type() == VarType::Error) {
    typeMismatch();
  }
}

detail::Decimal parsedOrRaise(std::u16string_view text, const platform::RegionalSettings& rs) {
  detail::ParsedNumber parsed = detail::parseNumber(text, rs);
  if (parsed.status == detail::ParseStatus::overflow) raise(errOverflow);
  if (parsed.status != detail::ParseStatus::ok) typeMismatch();
  return std::move(parsed.value);
}

String integerText(std::int64_t v) { return detail::widen(std::to_string(v)); }

}  // namespace

String CStr(const Variant& value, const platform::RegionalSettings& rs) {
  rejectNonValues(value);
  const String& sep = rs.decimalSeparator;
  switch (value.type()) {
    case VarType::Empty:
      return {};
    case VarType::Integer:
      return integerText(*value.get<std::int16_t>());
    case VarType::Long:
      return integerText(*value.get<std::int32_t>());
    case VarType::Byte:
      return integerText(*value.get<std::uint8_t>());
    case VarType::Single:
      return singleToText(*value.get<float>(), sep);
    case VarType::Double:
      return doubleToText(*value.get<double>(), sep);
    case VarType::Currency:
      return currencyToText(*value.get<Currency>(), sep);
    case VarType::Date:
      return detail::generalDateText(value.get<Date>()->serial, rs);
    case VarType::Boolean:
      return nonZero(*value.get<VBool>()) ? u"True" : u"False";
    case VarType::String:
      return *value.get<String>();
    default:
      typeMismatch();
  }
}

double CDbl(const Variant& value, const platform::RegionalSettings& rs) {
  rejectNonValues(value);
  switch (value.type()) {
    case VarType::Empty:
      return 0;
    case VarType::Integer:
      return *value.get<std::int16_t>();
    case VarType::Long:
      return *value.get<std::int32_t>();
    case VarType::Byte:
      return *value.get<std::uint8_t>();
    case VarType::Single:
      return *value.get<float>();
    case VarType::Double:
      return *value.get<double>();
    case VarType::Currency:
      return value.get<Currency>()->toDouble();
    case VarType::Date:
      return value.get<Date>()->serial;
    case VarType::Boolean:
      return static_cast<std::int16_t>(*value.get<VBool>());
    case VarType::String:
      return detail::toDouble(parsedOrRaise(*value.get<String>(), rs));
    default:
      typeMismatch();
  }
}

std::int16_t CIntV(const Variant& value, const platform::RegionalSettings& rs) {
  return CInt(CDbl(value, rs));
}

std::int32_t CLngV(const Variant& value, const platform::RegionalSettings& rs) {
  return CLng(CDbl(value, rs));
}

float CSngV(const Variant& value, const platform::RegionalSettings& rs) {
  return CSng(CDbl(value, rs));
}

std::uint8_t CByteV(const Variant& value, const platform::RegionalSettings& rs) {
  return CByte(CDbl(value, rs));
}

Currency CCur(const Variant& value, const platform::RegionalSettings& rs) {
  rejectNonValues(value);
  if (const Currency* c = value.get<Currency>()) return *c;
  if (const String* s = value.get<String>()) {
    // Text keeps all its digits: "922337203685477.5807" is exact, which a trip through a
    // double could not be.
    detail::Decimal d = parsedOrRaise(*s, rs);
    detail::roundHalfEven(d, 4);
    if (d.isZero()) return Currency{0};
    if (d.point > 15) raise(errOverflow);
    std::uint64_t magnitude = 0;
    for (int power = d.point - 1; power >= -4; --power) {
      magnitude = magnitude * 10 + static_cast<std::uint64_t>(d.digitAt(power) - '0');
    }
    const std::uint64_t limit = d.negative ? 9223372036854775808ULL : 9223372036854775807ULL;
    if (magnitude > limit) raise(errOverflow);
    return Currency{d.negative ? static_cast<std::int64_t>(~magnitude + 1)
                               : static_cast<std::int64_t>(magnitude)};
  }
  return Currency::fromDouble(CDbl(value, rs));
}

Date CDate(const Variant& value, const platform::RegionalSettings& rs) {
  rejectNonValues(value);
  if (const Date* d = value.get<Date>()) return *d;
  if (const String* s = value.get<String>()) {
    const std::optional<double> serial = detail::parseDateText(*s, rs);
    if (!serial) typeMismatch();
    return Date{*serial};
  }
  const double serial = CDbl(value, rs);
  if (!std::isfinite(serial) || !detail::isValidSerial(serial)) raise(errOverflow);
  return Date{serial};
}

VBool CBool(const Variant& value, const platform::RegionalSettings& rs) {
  rejectNonValues(value);
  if (const VBool* b = value.get<VBool>()) return nonZero(*b) ? VBool::True : VBool::False;
  if (const String* s = value.get<String>()) {
    const std::u16string_view trimmed = *s;
    if (detail::equalsIgnoreCase(trimmed, u"True")) return VBool::True;
    if (detail::equalsIgnoreCase(trimmed, u"False")) return VBool::False;
    return toVBool(!parsedOrRaise(*s, rs).isZero());
  }
  return toVBool(CDbl(value, rs) != 0);
}

bool IsNumeric(const Variant& value, const platform::RegionalSettings& rs) {
  switch (value.type()) {
    case VarType::Empty:
    case VarType::Integer:
    case VarType::Long:
    case VarType::Byte:
    case VarType::Single:
    case VarType::Double:
    case VarType::Currency:
    case VarType::Boolean:
      return !value.isArray();
    case VarType::String:
      return detail::parseNumber(*value.get<String>(), rs).status == detail::ParseStatus::ok;
    default:
      return false;
  }
}

int compareVariants(const Variant& a, const Variant& b, const platform::RegionalSettings& rs) {
  if (a.isNull() || b.isNull()) raise(errInvalidUseOfNull);
  rejectNonValues(a);
  rejectNonValues(b);
  const String* sa = a.get<String>();
  const String* sb = b.get<String>();
  auto compareNumbers = [](double x, double y) { return x < y ? -1 : (x > y ? 1 : 0); };
  auto compareText = [](std::u16string_view x, std::u16string_view y) {
    const int c = x.compare(y);
    return c < 0 ? -1 : (c > 0 ? 1 : 0);
  };
  if (sa != nullptr && sb != nullptr) return compareText(*sa, *sb);
  // Empty is the empty string next to text and zero next to a number.
  if (sa != nullptr && b.isEmpty()) return compareText(*sa, u"");
  if (sb != nullptr && a.isEmpty()) return compareText(u"", *sb);
  if (sa != nullptr || sb != nullptr) {
    // A number against text: by value when the text reads as a number, otherwise the number
    // sorts first.
    const String& text = sa != nullptr ? *sa : *sb;
    const detail::ParsedNumber parsed = detail::parseNumber(text, rs);
    if (parsed.status != detail::ParseStatus::ok) return sa != nullptr ? 1 : -1;
    const double textValue = detail::toDouble(parsed.value);
    return sa != nullptr ? compareNumbers(textValue, CDbl(b, rs))
                         : compareNumbers(CDbl(a, rs), textValue);
  }
  return compareNumbers(CDbl(a, rs), CDbl(b, rs));
}

}  // namespace orvo::runtime
