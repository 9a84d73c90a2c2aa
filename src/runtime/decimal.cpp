#include "runtime/decimal.hpp"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <limits>

namespace orvo::runtime::detail {

namespace {

void stripTrailingZeros(Decimal& d) {
  while (!d.digits.empty() && d.digits.back() == '0') d.digits.pop_back();
}

// Drops everything below 10^-decimals; `up` says whether the kept part moves one unit away from
// zero. Shared by both rounding rules so that carries and the sign of zero behave alike.
void truncateAt(Decimal& d, int decimals, bool up) {
  const int keep = d.point + decimals;  // digits that stay
  if (keep <= 0) {
    d.digits.clear();
    if (up) {
      d.digits = "1";
      d.point = 1 - decimals;
    }
    return;
  }
  d.digits.resize(static_cast<std::size_t>(keep));
  if (up) {
    int i = keep - 1;
    while (i >= 0 && d.digits[static_cast<std::size_t>(i)] == '9') {
      d.digits[static_cast<std::size_t>(i)] = '0';
      --i;
    }
    if (i < 0) {
      d.digits.insert(d.digits.begin(), '1');
      ++d.point;
    } else {
      ++d.digits[static_cast<std::size_t>(i)];
    }
  }
  stripTrailingZeros(d);
}

}  // namespace

char Decimal::digitAt(int power) const noexcept {
  // The first digit stands for 10^(point-1).
  const int index = point - 1 - power;
  if (index < 0 || index >= static_cast<int>(digits.size())) return '0';
  return digits[static_cast<std::size_t>(index)];
}

namespace {

// Whether |value| lies exactly halfway between two numbers of `significant` digits. Only then
// does the platform's rounding differ from to_chars' (it goes away from zero, not to even), so
// the exact expansion is only written out when three more digits read "500".
bool isExactTie(double magnitude, int significant) {
  std::array<char, 64> near{};
  const auto r = std::to_chars(near.data(), near.data() + near.size(), magnitude,
                               std::chars_format::scientific, significant + 2);
  // d.ddd...e+x: the digits after the first `significant` ones sit before the 'e'.
  const std::string_view text(near.data(), static_cast<std::size_t>(r.ptr - near.data()));
  if (text.substr(text.find('e') - 3, 3) != "500") return false;
  // A double's exact decimal expansion has at most 767 significant digits.
  std::array<char, 800> exact{};
  const auto x = std::to_chars(exact.data(), exact.data() + exact.size(), magnitude,
                               std::chars_format::scientific, 780);
  const std::string_view all(exact.data(), static_cast<std::size_t>(x.ptr - exact.data()));
  const std::size_t e = all.find('e');
  const std::size_t half = static_cast<std::size_t>(significant) + 1;  // past "d."
  return all[half] == '5' && all.find_first_not_of('0', half + 1) == e;
}

}  // namespace

Decimal decimalFromDouble(double value, int significant) {
  Decimal d;
  if (value == 0 || !std::isfinite(value)) return d;
  // to_chars is correctly rounded and, unlike printf, never looks at the C locale.
  const double magnitude = std::fabs(value);
  const bool tie = isExactTie(magnitude, significant);
  std::array<char, 64> buf{};
  // A tie is written with one digit more, "...5", and then rounded up by hand below.
  const auto res = std::to_chars(buf.data(), buf.data() + buf.size(), magnitude,
                                 std::chars_format::scientific, significant - (tie ? 0 : 1));
  const std::string_view text(buf.data(), static_cast<std::size_t>(res.ptr - buf.data()));
  const std::size_t e = text.find('e');
  for (std::size_t i = 0; i < e; ++i) {
    if (text[i] != '.') d.digits += text[i];
  }
  int exponent = 0;
  std::from_chars(text.data() + e + (text[e + 1] == '+' ? 2 : 1), text.data() + text.size(),
                  exponent);
  d.point = exponent + 1;
  if (tie) {
    d.digits.pop_back();  // the 5
    std::size_t i = d.digits.size();
    while (i > 0 && d.digits[i - 1] == '9') d.digits[--i] = '0';
    if (i == 0) {
      d.digits.insert(d.digits.begin(), '1');
      d.digits.pop_back();
      ++d.point;
    } else {
      ++d.digits[i - 1];
    }
  }
  d.negative = value < 0;
  stripTrailingZeros(d);
  return d;
}

Decimal decimalFromInteger(std::int64_t value) {
  Decimal d;
  if (value == 0) return d;
  d.negative = value < 0;
  // Through the unsigned magnitude so that the most negative value has one.
  std::uint64_t magnitude =
      d.negative ? ~static_cast<std::uint64_t>(value) + 1 : static_cast<std::uint64_t>(value);
  std::array<char, 24> buf{};
  const auto res = std::to_chars(buf.data(), buf.data() + buf.size(), magnitude);
  d.digits.assign(buf.data(), res.ptr);
  d.point = static_cast<int>(d.digits.size());
  stripTrailingZeros(d);
  return d;
}

Decimal decimalFromCurrency(Currency value) {
  Decimal d = decimalFromInteger(value.scaled);
  if (!d.isZero()) d.point -= 4;
  return d;
}

void roundHalfAway(Decimal& d, int decimals) {
  const int keep = d.point + decimals;
  if (keep >= static_cast<int>(d.digits.size())) return;
  truncateAt(d, decimals, keep >= 0 && d.digits[static_cast<std::size_t>(keep)] >= '5');
}

void roundHalfEven(Decimal& d, int decimals) {
  const int keep = d.point + decimals;
  if (keep >= static_cast<int>(d.digits.size())) return;
  bool up = false;
  if (keep >= 0) {
    const char first = d.digits[static_cast<std::size_t>(keep)];
    const bool exactHalf = first == '5' && static_cast<std::size_t>(keep) + 1 == d.digits.size();
    if (first > '5' || (first == '5' && !exactHalf)) {
      up = true;
    } else if (exactHalf) {
      const char previous = keep > 0 ? d.digits[static_cast<std::size_t>(keep - 1)] : '0';
      up = ((previous - '0') % 2) == 1;
    }
  }
  truncateAt(d, decimals, up);
}

std::string plainText(const Decimal& d) {
  if (d.isZero()) return d.negative ? "-0" : "0";
  std::string out;
  if (d.negative) out += '-';
  const int n = static_cast<int>(d.digits.size());
  if (d.point <= 0) {
    out += "0.";
    out.append(static_cast<std::size_t>(-d.point), '0');
    out += d.digits;
  } else if (d.point >= n) {
    out += d.digits;
    out.append(static_cast<std::size_t>(d.point - n), '0');
  } else {
    out.append(d.digits, 0, static_cast<std::size_t>(d.point));
    out += '.';
    out.append(d.digits, static_cast<std::size_t>(d.point), std::string::npos);
  }
  return out;
}

double toDouble(const Decimal& d) {
  if (d.isZero()) return 0.0;
  // "0.DIGITSe<point>" is exactly the stored value; from_chars rounds it correctly.
  std::string text = "0." + d.digits + "e" + std::to_string(d.point);
  double value = 0;
  const auto res = std::from_chars(text.data(), text.data() + text.size(), value);
  if (res.ec == std::errc::result_out_of_range) {
    value = d.point > 0 ? std::numeric_limits<double>::infinity() : 0.0;
  }
  return d.negative ? -value : value;
}

String defaultNumberText(const Decimal& d, int significant, std::u16string_view separator) {
  if (d.isZero()) return u"0";
  const int exponent = d.point - 1;
  String out;
  if (d.negative) out += u'-';
  if (exponent >= -4 && exponent < significant) {
    Decimal magnitude = d;
    magnitude.negative = false;
    const std::string plain = plainText(magnitude);
    for (char c : plain) {
      if (c == '.') {
        out += separator;
      } else {
        out += static_cast<char16_t>(c);
      }
    }
    return out;
  }
  out += static_cast<char16_t>(d.digits[0]);
  if (d.digits.size() > 1) {
    out += separator;
    out += widen(std::string_view(d.digits).substr(1));
  }
  out += u'E';
  out += exponent < 0 ? u'-' : u'+';
  const int magnitude = std::abs(exponent);
  if (magnitude < 10) out += u'0';
  out += widen(std::to_string(magnitude));
  return out;
}

String widen(std::string_view ascii) {
  String out;
  out.reserve(ascii.size());
  for (char c : ascii) out += static_cast<char16_t>(static_cast<unsigned char>(c));
  return out;
}

}  // namespace orvo::runtime::detail
