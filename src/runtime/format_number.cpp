#include <algorithm>
#include <cstdlib>

#include "runtime/format_internal.hpp"

namespace orvo::runtime::detail {

namespace {

enum class Region { Integer, Fraction, Exponent };

struct NumToken {
  enum Kind { Zero, Hash, Point, Comma, Percent, Exp, Literal } kind;
  Region region = Region::Integer;
  String text;           // Literal: the text; Exp: the letter as written
  bool expPlus = false;  // Exp: "E+" (always signed) rather than "E-"
};

struct NumberSection {
  std::vector<NumToken> tokens;
  int integerPlaceholders = 0;
  int fractionPlaceholders = 0;
  int exponentZeros = 0;
  int firstIntegerZero = -1;  // index among the integer placeholders of the first "0"
  int percents = 0;
  int scaleCommas = 0;
  bool grouping = false;
  bool scientific = false;
};

NumberSection parseSection(std::u16string_view s) {
  NumberSection sec;
  Region region = Region::Integer;
  auto literal = [&](String text) {
    if (!sec.tokens.empty() && sec.tokens.back().kind == NumToken::Literal) {
      sec.tokens.back().text += text;
    } else {
      sec.tokens.push_back({NumToken::Literal, region, std::move(text), false});
    }
  };
  for (std::size_t i = 0; i < s.size(); ++i) {
    const char16_t c = s[i];
    switch (c) {
      case u'"': {
        const std::size_t end = s.find(u'"', i + 1);
        const std::size_t stop = end == std::u16string_view::npos ? s.size() : end;
        literal(String(s.substr(i + 1, stop - i - 1)));
        i = stop;
        break;
      }
      case u'\\':
        if (i + 1 < s.size()) literal(String(1, s[++i]));
        break;
      case u'0':
      case u'#':
        sec.tokens.push_back({c == u'0' ? NumToken::Zero : NumToken::Hash, region, {}, false});
        if (region == Region::Integer) {
          if (c == u'0' && sec.firstIntegerZero < 0) {
            sec.firstIntegerZero = sec.integerPlaceholders;
          }
          ++sec.integerPlaceholders;
        } else if (region == Region::Fraction) {
          ++sec.fractionPlaceholders;
        } else if (c == u'0') {
          ++sec.exponentZeros;
        }
        break;
      case u'.':
        if (region == Region::Integer) {
          sec.tokens.push_back({NumToken::Point, region, {}, false});
          region = Region::Fraction;
        } else {
          literal(u".");
        }
        break;
      case u',':
        sec.tokens.push_back({NumToken::Comma, region, {}, false});
        break;
      case u'%':
        sec.tokens.push_back({NumToken::Percent, region, {}, false});
        ++sec.percents;
        break;
      case u'E':
      case u'e':
        if (!sec.scientific && i + 1 < s.size() && (s[i + 1] == u'+' || s[i + 1] == u'-')) {
          sec.tokens.push_back({NumToken::Exp, region, String(1, c), s[i + 1] == u'+'});
          sec.scientific = true;
          region = Region::Exponent;
          ++i;
        } else {
          literal(String(1, c));
        }
        break;
      default:
        literal(String(1, c));
        break;
    }
  }
  // A comma between integer placeholders groups the digits; commas after the last integer
  // placeholder divide by a thousand each ("#," shows thousands, "0,," millions).
  bool seenDigit = false;
  int pendingCommas = 0;
  for (const NumToken& t : sec.tokens) {
    if (t.region != Region::Integer) break;
    if (t.kind == NumToken::Zero || t.kind == NumToken::Hash) {
      if (pendingCommas > 0 && seenDigit) sec.grouping = true;
      pendingCommas = 0;
      seenDigit = true;
    } else if (t.kind == NumToken::Comma && seenDigit) {
      ++pendingCommas;
    }
  }
  sec.scaleCommas = pendingCommas;
  return sec;
}

class Writer {
 public:
  explicit Writer(const platform::RegionalSettings& rs) : rs_(rs) {}
  void text(std::u16string_view s) { out_ += s; }
  void ch(char16_t c) { out_ += c; }
  void digit(char c) { out_ += static_cast<char16_t>(c); }
  void point() { out_ += rs_.decimalSeparator; }
  void group() { out_ += rs_.thousandSeparator; }
  String take() { return std::move(out_); }

 private:
  const platform::RegionalSettings& rs_;
  String out_;
};

// Integer digits of a rounded decimal, most significant first ("" below one).
std::string integerDigits(const Decimal& d) {
  std::string out;
  for (int power = d.point - 1; power >= 0; --power) out += d.digitAt(power);
  return out;
}

String formatFixed(const NumberSection& sec, Decimal d, bool empty,
                   const platform::RegionalSettings& rs) {
  roundHalfAway(d, sec.fractionPlaceholders);
  const std::string digits = empty ? std::string() : integerDigits(d);
  const int n = sec.integerPlaceholders;
  // Digits shown left of the point: the number's own, or more where "0" placeholders ask.
  int shown = static_cast<int>(digits.size());
  if (!empty && sec.firstIntegerZero >= 0) shown = std::max(shown, n - sec.firstIntegerZero);
  int fractionShown = 0;  // fraction digits up to the last significant one
  for (int j = 0; j < sec.fractionPlaceholders; ++j) {
    if (d.digitAt(-1 - j) != '0') fractionShown = j + 1;
  }
  const int groupSize = rs.groupSize > 0 ? rs.groupSize : 3;

  Writer w(rs);
  auto emitIntegerDigit = [&](int fromRight) {
    const int len = static_cast<int>(digits.size());
    w.digit(fromRight < len ? digits[static_cast<std::size_t>(len - 1 - fromRight)] : '0');
    if (sec.grouping && fromRight > 0 && fromRight % groupSize == 0) w.group();
  };
  int integerIndex = 0;
  int fractionIndex = 0;
  for (const NumToken& t : sec.tokens) {
    switch (t.kind) {
      case NumToken::Zero:
      case NumToken::Hash:
        if (t.region == Region::Integer) {
          const int fromRight = n - 1 - integerIndex;
          if (integerIndex == 0) {
            // Digits beyond the placeholders all go where the first one stands.
            for (int r = shown - 1; r > fromRight; --r) emitIntegerDigit(r);
          }
          if (fromRight < shown) emitIntegerDigit(fromRight);
          ++integerIndex;
        } else {
          if (fractionIndex < fractionShown || t.kind == NumToken::Zero) {
            w.digit(d.digitAt(-1 - fractionIndex));
          }
          ++fractionIndex;
        }
        break;
      case NumToken::Point:
        if (n == 0 && shown > 0) {
          for (int r = shown - 1; r >= 0; --r) emitIntegerDigit(r);
        }
        w.point();
        break;
      case NumToken::Percent:
        w.ch(u'%');
        break;
      case NumToken::Literal:
        w.text(t.text);
        break;
      case NumToken::Comma:
      case NumToken::Exp:
        break;
    }
  }
  return w.take();
}

String formatScientific(const NumberSection& sec, Decimal d, bool empty,
                        const platform::RegionalSettings& rs) {
  const int k = sec.integerPlaceholders;
  const int significant = std::max(1, k + sec.fractionPlaceholders);
  if (!d.isZero()) roundHalfAway(d, significant - d.point);
  // Zero scales as if it were a one: all integer placeholders filled, exponent 1 - k.
  const int point = d.isZero() ? 1 : d.point;
  const int exponent = empty ? 0 : point - k;
  auto mantissaDigit = [&](int index) {
    return index < static_cast<int>(d.digits.size()) ? d.digits[static_cast<std::size_t>(index)]
                                                     : '0';
  };
  int fractionShown = 0;
  for (int j = 0; j < sec.fractionPlaceholders; ++j) {
    if (mantissaDigit(k + j) != '0') fractionShown = j + 1;
  }
  String exponentDigits = widen(std::to_string(std::abs(exponent)));
  if (static_cast<int>(exponentDigits.size()) < sec.exponentZeros) {
    exponentDigits.insert(0, static_cast<std::size_t>(sec.exponentZeros) - exponentDigits.size(),
                          u'0');
  }

  Writer w(rs);
  int integerIndex = 0;
  int fractionIndex = 0;
  bool exponentWritten = false;
  for (const NumToken& t : sec.tokens) {
    switch (t.kind) {
      case NumToken::Zero:
      case NumToken::Hash:
        if (t.region == Region::Integer) {
          if (!empty) w.digit(mantissaDigit(integerIndex));
          ++integerIndex;
        } else if (t.region == Region::Fraction) {
          if (fractionIndex < fractionShown || t.kind == NumToken::Zero) {
            w.digit(mantissaDigit(k + fractionIndex));
          }
          ++fractionIndex;
        } else if (!exponentWritten) {
          w.text(exponentDigits);
          exponentWritten = true;
        }
        break;
      case NumToken::Point:
        w.point();
        break;
      case NumToken::Percent:
        w.ch(u'%');
        break;
      case NumToken::Exp:
        w.text(t.text);
        if (exponent < 0) {
          w.ch(u'-');
        } else if (t.expPlus) {
          w.ch(u'+');
        }
        break;
      case NumToken::Literal:
        w.text(t.text);
        break;
      case NumToken::Comma:
        break;
    }
  }
  return w.take();
}

}  // namespace

String formatNumberPattern(const FormatNumber& number, std::u16string_view pattern,
                           const platform::RegionalSettings& rs) {
  const std::vector<std::u16string_view> sections = splitSections(pattern);
  const Decimal& value = number.value;
  std::u16string_view chosen = sections[0];
  bool signed_ = value.negative;
  if (!number.empty) {
    if (value.negative && sections.size() >= 2 && !sections[1].empty()) {
      chosen = sections[1];
      signed_ = false;  // the negative section writes its own sign, if any
    } else if (value.isZero() && sections.size() >= 3 && !sections[2].empty()) {
      chosen = sections[2];
    }
  }
  const NumberSection sec = parseSection(chosen);
  Decimal d = value;
  d.negative = false;
  if (!d.isZero()) d.point += 2 * sec.percents - 3 * sec.scaleCommas;
  String body = sec.scientific ? formatScientific(sec, d, number.empty, rs)
                               : formatFixed(sec, d, number.empty, rs);
  // The sign leads the whole result, literals included: -1 with "$0.00" is "-$1.00". It stays
  // when the digits round away to zero, so -0.4 with "0" gives "-0".
  if (signed_) body.insert(body.begin(), u'-');
  return body;
}

}  // namespace orvo::runtime::detail
