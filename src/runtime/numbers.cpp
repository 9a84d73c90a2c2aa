#include "runtime/numbers.hpp"

#include <cfloat>
#include <cmath>
#include <limits>

#include "runtime/decimal.hpp"
#include "runtime/errors.hpp"

namespace orvo::runtime {

namespace {

// What the platform's C runtime spells for values that are not numbers; the applications show
// these when a division by zero slipped through with error trapping off.
String nonFiniteText(double value) {
  if (std::isinf(value)) return value < 0 ? u"-1.#INF" : u"1.#INF";
  return std::signbit(value) ? u"-1.#IND" : u"1.#QNAN";
}

bool isBlank(char16_t c) { return c == u' ' || c == u'\t' || c == u'\n'; }

// Reads the text with blanks skipped wherever they stand, as the language's Val does.
class BlankSkippingReader {
 public:
  explicit BlankSkippingReader(std::u16string_view text) : text_(text) { skip(); }
  [[nodiscard]] bool atEnd() const { return pos_ >= text_.size(); }
  [[nodiscard]] char16_t peek() const { return atEnd() ? u'\0' : text_[pos_]; }
  void advance() {
    ++pos_;
    skip();
  }

 private:
  void skip() {
    while (pos_ < text_.size() && isBlank(text_[pos_])) ++pos_;
  }
  std::u16string_view text_;
  std::size_t pos_ = 0;
};

int hexDigit(char16_t c) {
  if (c >= u'0' && c <= u'9') return c - u'0';
  if (c >= u'a' && c <= u'f') return c - u'a' + 10;
  if (c >= u'A' && c <= u'F') return c - u'A' + 10;
  return -1;
}

// "&H"/"&O" whole numbers follow the typing of the language's literals: a value that fits in 16
// bits is an Integer (&HFFFF is -1), one that fits in 32 bits a Long (&HFFFFFFFF is -1); more is
// an Overflow.
double radixValue(BlankSkippingReader& reader, int radix) {
  std::uint64_t value = 0;
  for (;;) {
    const int digit = hexDigit(reader.peek());
    if (digit < 0 || digit >= radix) break;
    value = value * static_cast<std::uint64_t>(radix) + static_cast<std::uint64_t>(digit);
    if (value > 0xFFFFFFFFULL) raise(errOverflow);
    reader.advance();
  }
  if (value <= 0xFFFFULL) return static_cast<std::int16_t>(static_cast<std::uint16_t>(value));
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(value));
}

}  // namespace

String doubleToText(double value, std::u16string_view decimalSeparator) {
  if (!std::isfinite(value)) return nonFiniteText(value);
  return detail::defaultNumberText(detail::decimalFromDouble(value, 15), 15, decimalSeparator);
}

String singleToText(float value, std::u16string_view decimalSeparator) {
  if (!std::isfinite(value)) return nonFiniteText(value);
  return detail::defaultNumberText(detail::decimalFromDouble(value, 7), 7, decimalSeparator);
}

String currencyToText(Currency value, std::u16string_view decimalSeparator) {
  const detail::Decimal d = detail::decimalFromCurrency(value);
  if (d.isZero()) return u"0";
  String out;
  for (char c : detail::plainText(d)) {
    if (c == '.') {
      out += decimalSeparator;
    } else {
      out += static_cast<char16_t>(c);
    }
  }
  return out;
}

double Val(std::u16string_view text) {
  BlankSkippingReader reader(text);
  if (reader.peek() == u'&') {
    reader.advance();
    const char16_t kind = reader.peek();
    if (kind == u'H' || kind == u'h') {
      reader.advance();
      return radixValue(reader, 16);
    }
    if (kind == u'O' || kind == u'o') {
      reader.advance();
      return radixValue(reader, 8);
    }
    return 0;
  }
  detail::Decimal d;
  if (reader.peek() == u'-' || reader.peek() == u'+') {
    d.negative = reader.peek() == u'-';
    reader.advance();
  }
  bool sawDigit = false;
  bool sawPoint = false;
  int point = 0;
  for (;; reader.advance()) {
    const char16_t c = reader.peek();
    if (c >= u'0' && c <= u'9') {
      sawDigit = true;
      if (d.digits.empty() && c == u'0') {
        // Leading zeros carry no digit; after the point they move the value down.
        if (sawPoint) --point;
        continue;
      }
      d.digits += static_cast<char>(c);
      if (!sawPoint) ++point;
    } else if (c == u'.' && !sawPoint) {
      sawPoint = true;
    } else {
      break;
    }
  }
  if (!sawDigit) return 0;
  const char16_t e = reader.peek();
  if (e == u'E' || e == u'e' || e == u'D' || e == u'd') {
    reader.advance();
    bool negativeExponent = false;
    if (reader.peek() == u'-' || reader.peek() == u'+') {
      negativeExponent = reader.peek() == u'-';
      reader.advance();
    }
    // Saturates far beyond the double range; the digits decide overflow or zero below.
    long exponent = 0;
    while (reader.peek() >= u'0' && reader.peek() <= u'9') {
      if (exponent < 100000) exponent = exponent * 10 + (reader.peek() - u'0');
      reader.advance();
    }
    point += static_cast<int>(negativeExponent ? -exponent : exponent);
  }
  while (!d.digits.empty() && d.digits.back() == '0') d.digits.pop_back();
  if (d.digits.empty()) return 0;
  d.point = point;
  const double value = detail::toDouble(d);
  if (std::isinf(value)) raise(errOverflow);
  return value;
}

std::int16_t CInt(double value) {
  const double r = std::nearbyint(value);
  if (!(r >= -32768.0 && r <= 32767.0)) raise(errOverflow);
  return static_cast<std::int16_t>(r);
}

std::int32_t CLng(double value) {
  const double r = std::nearbyint(value);
  if (!(r >= -2147483648.0 && r <= 2147483647.0)) raise(errOverflow);
  return static_cast<std::int32_t>(r);
}

std::uint8_t CByte(double value) {
  const double r = std::nearbyint(value);
  if (!(r >= 0.0 && r <= 255.0)) raise(errOverflow);
  return static_cast<std::uint8_t>(r);
}

float CSng(double value) {
  if (std::isnan(value)) return std::numeric_limits<float>::quiet_NaN();
  const auto f = static_cast<float>(value);
  if (std::isinf(f)) raise(errOverflow);
  return f;
}

double RoundHalfEven(double value, int decimals) {
  if (decimals < 0) raise(errInvalidProcedureCall);
  if (!std::isfinite(value)) return value;
  // Halves are judged on the 15-digit text, as everywhere else the platform rounds number text:
  // Round(2.675, 2) sees "2.675", a half, and goes to the even 2.68.
  detail::Decimal d = detail::decimalFromDouble(value, 15);
  detail::roundHalfEven(d, decimals);
  if (d.isZero()) return 0.0;
  return detail::toDouble(d);
}

}  // namespace orvo::runtime
