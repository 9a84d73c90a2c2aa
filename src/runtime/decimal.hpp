#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "orvogeneric/types.hpp"

// Numbers as decimal digit strings. The platform decides every rounding of number text on the
// decimal digits it printed, not on the binary value: 1.005 is stored as 1.00499999999999989...
// yet formats as 1.01 with two decimals, because its 15-digit text is "1.005".
namespace orvo::runtime::detail {

struct Decimal {
  bool negative = false;
  // Significant digits, no leading or trailing zeros; empty means zero.
  std::string digits;
  // value = 0.digits x 10^point (so 123.45 is "12345" with point 3, 0.005 is "5" with point -2).
  int point = 0;

  [[nodiscard]] bool isZero() const noexcept { return digits.empty(); }
  // The digit at the given power of ten ('0' outside the stored digits).
  [[nodiscard]] char digitAt(int power) const noexcept;
};

// Correctly rounded to the given number of significant digits (1..17). Zero has no sign.
// The value must be finite.
Decimal decimalFromDouble(double value, int significant);
Decimal decimalFromInteger(std::int64_t value);
Decimal decimalFromCurrency(Currency value);

// Keeps `decimals` digits after the point (negative: rounds to tens, hundreds...), halves away
// from zero. The sign survives a result of zero, so -0.4 can print as "-0".
void roundHalfAway(Decimal& d, int decimals);
// The same with halves to the even digit.
void roundHalfEven(Decimal& d, int decimals);

// Plain ASCII text such as "-123.45" or "0.005" (no exponent, '.' as the point).
std::string plainText(const Decimal& d);
// The double nearest to the decimal (infinite when beyond the range).
double toDouble(const Decimal& d);

// Text in the platform's default number form: `significant` digits, plain notation for decimal
// exponents from -4 to significant-1, otherwise d.dddE+XX; `separator` as the decimal point.
String defaultNumberText(const Decimal& d, int significant, std::u16string_view separator);

// ASCII to UTF-16 (the digits and signs that number text is made of).
String widen(std::string_view ascii);

}  // namespace orvo::runtime::detail
