#include "json_scalars.hpp"

#include <algorithm>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>

#include "orvogeneric/calendar.hpp"
#include "orvogeneric/error.hpp"

namespace orvo::cli::json {

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
  const auto days = static_cast<double>(daysFromCivil(y, mo, d));
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
  int y = 0;
  int m = 0;
  int d = 0;
  civilFromDays(static_cast<std::int64_t>(whole), y, m, d);
  char buf[80];
  std::snprintf(buf, sizeof buf, R"({"date":"%04d-%02d-%02dT%02lld:%02lld:%02lld"})", y, m, d,
                static_cast<long long>(seconds / 3600), static_cast<long long>(seconds / 60 % 60),
                static_cast<long long>(seconds % 60));
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

double parseNumber(std::string_view token) {
  constexpr std::int64_t kExponentCap = 1'000'000'000;
  double value = 0;
  const auto [unused, ec] = std::from_chars(token.data(), token.data() + token.size(), value);
  if (ec != std::errc::result_out_of_range) return value;
  // Out of range means the value rounds to infinity or to zero; which of the two follows from
  // the decimal exponent of the first significant digit.
  const bool negative = token.front() == '-';
  std::int64_t integerDigits = 0;  // from the first non-zero one
  std::int64_t fractionZeros = 0;  // before the first non-zero digit, when the integer part is 0
  bool fraction = false;
  bool significant = false;
  std::size_t i = negative ? 1 : 0;
  for (; i < token.size() && token[i] != 'e' && token[i] != 'E'; ++i) {
    if (token[i] == '.') {
      fraction = true;
    } else if (!fraction) {
      significant = significant || token[i] != '0';
      integerDigits += significant ? 1 : 0;
    } else if (!significant) {
      significant = token[i] != '0';
      fractionZeros += significant ? 0 : 1;
    }
  }
  const std::int64_t lead = integerDigits > 0 ? integerDigits - 1 : -(fractionZeros + 1);
  std::int64_t exponent = 0;
  if (i < token.size()) {
    ++i;
    const bool down = token[i] == '-';
    if (token[i] == '+' || token[i] == '-') ++i;
    // Saturated: a thousand-digit exponent means the same as a ten-digit one.
    for (; i < token.size(); ++i) {
      exponent = std::min<std::int64_t>(exponent * 10 + (token[i] - '0'), kExponentCap);
    }
    if (down) exponent = -exponent;
  }
  const double magnitude = lead + exponent > 0 ? HUGE_VAL : 0.0;
  return negative ? -magnitude : magnitude;
}

}  // namespace orvo::cli::json
