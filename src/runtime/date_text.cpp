#include <unicode/uchar.h>

#include <array>
#include <cmath>
#include <vector>

#include "runtime/date_internal.hpp"
#include "runtime/decimal.hpp"
#include "runtime/text_internal.hpp"

namespace orvo::runtime::detail {

namespace {

String number(int value, int minDigits) {
  String digits = widen(std::to_string(value < 0 ? -value : value));
  String out;
  if (value < 0) out += u'-';
  if (static_cast<int>(digits.size()) < minDigits) {
    out.append(static_cast<std::size_t>(minDigits) - digits.size(), u'0');
  }
  return out + digits;
}

bool isAsciiLetter(char16_t c) { return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z'); }

std::size_t runLength(std::u16string_view s, std::size_t i) {
  std::size_t j = i;
  while (j < s.size() && s[j] == s[i]) ++j;
  return j - i;
}

// The separator that follows the first field of one of the locale's pictures.
String separatorOf(std::u16string_view picture, std::u16string_view fieldLetters,
                   std::u16string_view fallback) {
  std::size_t i = 0;
  while (i < picture.size() && fieldLetters.find(picture[i]) == std::u16string_view::npos) ++i;
  while (i < picture.size() && fieldLetters.find(picture[i]) != std::u16string_view::npos) ++i;
  String sep;
  while (i < picture.size() && !isAsciiLetter(picture[i]) && picture[i] != u'\'') {
    sep += picture[i];
    ++i;
  }
  return sep.empty() ? String(fallback) : sep;
}

// --- reading dates ---------------------------------------------------------------------------

struct Token {
  enum Kind { Number, Word, Sep } kind;
  String text;
  int value = 0;
};

bool isDigit(char16_t c) { return c >= u'0' && c <= u'9'; }

std::vector<Token> tokenize(std::u16string_view s) {
  std::vector<Token> tokens;
  std::size_t i = 0;
  while (i < s.size()) {
    const char16_t c = s[i];
    if (isDigit(c)) {
      std::size_t j = i;
      long v = 0;
      while (j < s.size() && isDigit(s[j])) {
        if (v < 100000) v = v * 10 + (s[j] - u'0');
        ++j;
      }
      tokens.push_back({Token::Number, String(s.substr(i, j - i)), static_cast<int>(v)});
      i = j;
    } else if (u_isalpha(c)) {
      std::size_t j = i;
      while (j < s.size() && (u_isalpha(s[j]) || s[j] == u'.')) ++j;
      String word(s.substr(i, j - i));
      while (!word.empty() && word.back() == u'.') word.pop_back();
      tokens.push_back({Token::Word, word, 0});
      i = j;
    } else if (c == u' ' || c == u'\t' || c == u'\u00A0') {
      ++i;
    } else {
      tokens.push_back({Token::Sep, String(1, c), 0});
      ++i;
    }
  }
  return tokens;
}

constexpr std::array<std::u16string_view, 12> kEnglishMonths{
    u"january", u"february", u"march",     u"april",   u"may",      u"june",
    u"july",    u"august",   u"september", u"october", u"november", u"december"};

// 1..12 for a month name or its abbreviation (the locale's, then English), 0 otherwise.
int monthOf(std::u16string_view word, const platform::RegionalSettings& rs) {
  for (int m = 0; m < 12; ++m) {
    String abbrev = rs.abbrevMonthNames[static_cast<std::size_t>(m)];
    while (!abbrev.empty() && abbrev.back() == u'.') abbrev.pop_back();
    if (equalsIgnoreCase(word, rs.monthNames[static_cast<std::size_t>(m)]) ||
        (!abbrev.empty() && equalsIgnoreCase(word, abbrev))) {
      return m + 1;
    }
  }
  for (int m = 0; m < 12; ++m) {
    const std::u16string_view name = kEnglishMonths[static_cast<std::size_t>(m)];
    if (word.size() >= 3 && word.size() <= name.size() &&
        equalsIgnoreCase(word, name.substr(0, word.size()))) {
      return m + 1;
    }
  }
  return 0;
}

bool isDayName(std::u16string_view word, const platform::RegionalSettings& rs) {
  for (std::size_t d = 0; d < 7; ++d) {
    String abbrev = rs.abbrevDayNames[d];
    while (!abbrev.empty() && abbrev.back() == u'.') abbrev.pop_back();
    if (equalsIgnoreCase(word, rs.dayNames[d]) ||
        (!abbrev.empty() && equalsIgnoreCase(word, abbrev))) {
      return true;
    }
  }
  static constexpr std::array<std::u16string_view, 7> kDays{
      u"sunday", u"monday", u"tuesday", u"wednesday", u"thursday", u"friday", u"saturday"};
  for (auto name : kDays) {
    if (word.size() >= 3 && word.size() <= name.size() &&
        equalsIgnoreCase(word, name.substr(0, word.size()))) {
      return true;
    }
  }
  return false;
}

// +1 for a PM designator, -1 for AM, 0 for neither.
int meridiemOf(std::u16string_view word, const platform::RegionalSettings& rs) {
  if ((!rs.pm.empty() && equalsIgnoreCase(word, rs.pm)) || equalsIgnoreCase(word, u"PM") ||
      equalsIgnoreCase(word, u"P")) {
    return 1;
  }
  if ((!rs.am.empty() && equalsIgnoreCase(word, rs.am)) || equalsIgnoreCase(word, u"AM") ||
      equalsIgnoreCase(word, u"A")) {
    return -1;
  }
  return 0;
}

// The order of day, month and year in the short date picture, e.g. "MDY".
std::string fieldOrder(std::u16string_view picture) {
  std::string order;
  for (char16_t c : picture) {
    char f = 0;
    if (c == u'd') f = 'D';
    if (c == u'M') f = 'M';
    if (c == u'y') f = 'Y';
    if (f != 0 && order.find(f) == std::string::npos) order += f;
  }
  return order.size() == 3 ? order : "MDY";
}

int windowYear(const Token& t) {
  // Two-digit years pivot at 30, as DateSerial does.
  if (t.text.size() <= 2) return t.value < 30 ? 2000 + t.value : 1900 + t.value;
  return t.value;
}

int currentYear() {
  int y = 0;
  int m = 0;
  int d = 0;
  civilFromDays(static_cast<std::int64_t>(std::floor(Now().serial)), y, m, d);
  return y;
}

bool validDate(int y, int m, int d) {
  if (y < kMinYear || y > kMaxYear || m < 1 || m > 12 || d < 1) return false;
  int yy = 0;
  int mm = 0;
  int dd = 0;
  civilFromDays(daysFromCivil(y, m, d), yy, mm, dd);
  return mm == m && dd == d;
}

}  // namespace

char16_t foldCase(char16_t c) noexcept {
  if (c < 0x80) return (c >= u'A' && c <= u'Z') ? static_cast<char16_t>(c + 32) : c;
  return static_cast<char16_t>(u_foldCase(c, U_FOLD_CASE_DEFAULT));
}

bool equalsIgnoreCase(std::u16string_view a, std::u16string_view b) noexcept {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (foldCase(a[i]) != foldCase(b[i])) return false;
  }
  return true;
}

String dateSeparator(const platform::RegionalSettings& rs) {
  return separatorOf(rs.shortDate, u"dMyg", u"/");
}

String timeSeparator(const platform::RegionalSettings& rs) {
  return separatorOf(rs.timeFormat, u"hH", u":");
}

String formatPicture(std::u16string_view picture, const DateParts& parts,
                     const platform::RegionalSettings& rs) {
  String out;
  std::size_t i = 0;
  while (i < picture.size()) {
    const char16_t c = picture[i];
    if (c == u'\'') {
      // Quoted literal; two quotes stand for one.
      std::size_t j = i + 1;
      while (j < picture.size()) {
        if (picture[j] == u'\'') {
          if (j + 1 < picture.size() && picture[j + 1] == u'\'') {
            out += u'\'';
            j += 2;
            continue;
          }
          break;
        }
        out += picture[j++];
      }
      i = j + 1;
      continue;
    }
    const std::size_t n = runLength(picture, i);
    const int hour12 = parts.hour % 12 == 0 ? 12 : parts.hour % 12;
    const String& designator = parts.hour < 12 ? rs.am : rs.pm;
    switch (c) {
      case u'd':
        if (n <= 2) {
          out += number(parts.day, static_cast<int>(n));
        } else {
          const auto wd = static_cast<std::size_t>(parts.weekday - 1);
          out += n == 3 ? rs.abbrevDayNames[wd] : rs.dayNames[wd];
        }
        break;
      case u'M':
        if (n <= 2) {
          out += number(parts.month, static_cast<int>(n));
        } else {
          const auto m = static_cast<std::size_t>(parts.month - 1);
          out += n == 3 ? rs.abbrevMonthNames[m] : rs.monthNames[m];
        }
        break;
      case u'y':
        if (n <= 2) {
          out += number(parts.year % 100, static_cast<int>(n));
        } else {
          out += number(parts.year, 1);
        }
        break;
      case u'g':
        // The era of the Gregorian calendar is not written by any of the supported locales'
        // pictures; an explicit "g" gets the Western era name.
        out += u"A.D.";
        break;
      case u'h':
        out += number(hour12, n >= 2 ? 2 : 1);
        break;
      case u'H':
        out += number(parts.hour, n >= 2 ? 2 : 1);
        break;
      case u'm':
        out += number(parts.minute, n >= 2 ? 2 : 1);
        break;
      case u's':
        out += number(parts.second, n >= 2 ? 2 : 1);
        break;
      case u't':
        if (n == 1) {
          if (!designator.empty()) out += designator[0];
        } else {
          out += designator;
        }
        break;
      default:
        out.append(n, c);
        break;
    }
    i += n;
  }
  return out;
}

String generalDateText(double serial, const platform::RegionalSettings& rs) {
  const DateParts parts = splitDate(Date{serial});
  // Which parts show is decided on the stored serial, not on the rounded one: 0.99999999 is
  // still a pure time although it prints as 12:00:00 AM.
  const double day = std::trunc(serial);
  const bool hasDate = day != 0;
  const bool hasTime = serial != day;
  if (!hasDate) return formatPicture(rs.timeFormat, parts, rs);
  String out = formatPicture(rs.shortDate, parts, rs);
  if (hasTime) {
    out += u' ';
    out += formatPicture(rs.timeFormat, parts, rs);
  }
  return out;
}

std::optional<double> parseDateText(std::u16string_view text,
                                    const platform::RegionalSettings& rs) {
  const std::vector<Token> tokens = tokenize(text);
  if (tokens.empty()) return std::nullopt;

  std::vector<Token> dateNumbers;
  int month = 0;
  bool haveTime = false;
  int hour = 0;
  int minute = 0;
  int second = 0;
  int meridiem = 0;
  const String dateSep = dateSeparator(rs);
  const String timeSep = timeSeparator(rs);

  for (std::size_t i = 0; i < tokens.size(); ++i) {
    const Token& t = tokens[i];
    const bool startsTime = t.kind == Token::Number && i + 1 < tokens.size() &&
                            tokens[i + 1].kind == Token::Sep &&
                            (tokens[i + 1].text == u":" || tokens[i + 1].text == timeSep);
    if (startsTime) {
      if (haveTime) return std::nullopt;
      haveTime = true;
      hour = t.value;
      std::array<int*, 2> rest{&minute, &second};
      std::size_t j = i + 1;
      for (int* field : rest) {
        if (j + 1 < tokens.size() && tokens[j].kind == Token::Sep &&
            (tokens[j].text == u":" || tokens[j].text == timeSep) &&
            tokens[j + 1].kind == Token::Number) {
          *field = tokens[j + 1].value;
          j += 2;
        } else {
          break;
        }
      }
      i = j - 1;
      continue;
    }
    if (t.kind == Token::Number) {
      dateNumbers.push_back(t);
    } else if (t.kind == Token::Word) {
      if (const int mer = meridiemOf(t.text, rs); mer != 0 && meridiem == 0) {
        meridiem = mer;
      } else if (const int m = monthOf(t.text, rs); m != 0 && month == 0) {
        month = m;
      } else if (!isDayName(t.text, rs) && !equalsIgnoreCase(t.text, u"T")) {
        return std::nullopt;
      }
    } else if (t.text != u"/" && t.text != u"-" && t.text != u"." && t.text != u"," &&
               t.text != dateSep) {
      return std::nullopt;
    }
  }

  // A lone number with a designator is an hour: "4 PM".
  if (!haveTime && meridiem != 0 && dateNumbers.size() == 1 && month == 0) {
    haveTime = true;
    hour = dateNumbers[0].value;
    dateNumbers.clear();
  }
  if (meridiem != 0 && !haveTime) return std::nullopt;
  if (haveTime) {
    if (meridiem != 0) {
      if (hour < 1 || hour > 12) return std::nullopt;
      hour = hour % 12 + (meridiem > 0 ? 12 : 0);
    }
    if (hour > 23 || minute > 59 || second > 59) return std::nullopt;
  }

  double day = 0;
  const bool haveDate = month != 0 || !dateNumbers.empty();
  if (haveDate) {
    int y = 0;
    int m = month;
    int d = 0;
    const std::string order = fieldOrder(rs.shortDate);
    if (month != 0) {
      if (dateNumbers.size() == 2) {
        const bool yearFirst = dateNumbers[0].text.size() >= 3 || dateNumbers[0].value > 31;
        d = yearFirst ? dateNumbers[1].value : dateNumbers[0].value;
        y = windowYear(yearFirst ? dateNumbers[0] : dateNumbers[1]);
      } else if (dateNumbers.size() == 1) {
        if (dateNumbers[0].text.size() >= 3 || dateNumbers[0].value > 31) {
          y = windowYear(dateNumbers[0]);
          d = 1;
        } else {
          d = dateNumbers[0].value;
          y = currentYear();
        }
      } else {
        return std::nullopt;
      }
    } else if (dateNumbers.size() == 3) {
      std::array<const Token*, 3> byField{};
      if (dateNumbers[0].text.size() >= 3) {
        byField = {&dateNumbers[0], &dateNumbers[1], &dateNumbers[2]};  // Y M D
      } else {
        for (std::size_t k = 0; k < 3; ++k) {
          const std::size_t slot = order[k] == 'Y' ? 0 : order[k] == 'M' ? 1 : 2;
          byField[slot] = &dateNumbers[k];
        }
      }
      y = windowYear(*byField[0]);
      m = byField[1]->value;
      d = byField[2]->value;
      // A month beyond 12 that would make a valid day is read the other way round.
      if (m > 12 && d <= 12) std::swap(m, d);
    } else if (dateNumbers.size() == 2) {
      const Token& a = dateNumbers[0];
      const Token& b = dateNumbers[1];
      if (b.text.size() >= 3 || b.value > 31) {
        m = a.value;
        y = windowYear(b);
        d = 1;
      } else if (a.text.size() >= 3 || a.value > 31) {
        y = windowYear(a);
        m = b.value;
        d = 1;
      } else {
        const bool dayFirst = order.find('D') < order.find('M');
        m = dayFirst ? b.value : a.value;
        d = dayFirst ? a.value : b.value;
        if (m > 12 && d <= 12) std::swap(m, d);
        y = currentYear();
      }
    } else {
      return std::nullopt;
    }
    if (!validDate(y, m, d)) return std::nullopt;
    day = static_cast<double>(daysFromCivil(y, m, d));
  }
  const double time = (hour * 3600.0 + minute * 60.0 + second) / 86400.0;
  return day < 0 ? day - time : day + time;
}

}  // namespace orvo::runtime::detail
