#include <cmath>

#include "runtime/date_internal.hpp"
#include "runtime/dates.hpp"
#include "runtime/format_internal.hpp"
#include "runtime/text_internal.hpp"

namespace orvo::runtime::detail {

namespace {

struct DateToken {
  enum Kind {
    Literal,
    DateSep,
    TimeSep,
    General,    // c
    Day,        // d, dd
    DayName,    // ddd, dddd
    ShortDate,  // ddddd
    LongDate,   // dddddd
    Weekday,    // w
    Week,       // ww
    MonthOrMinute,
    MonthName,  // mmm, mmmm
    Quarter,    // q
    DayOfYear,  // y
    Year2,      // yy
    Year4,      // yyyy
    Hour,       // h, hh
    Minute,     // n, nn
    Second,     // s, ss
    LongTime,   // ttttt
    AmPm,       // AM/PM, am/pm, A/P, a/p: the halves as written
    LocaleAmPm  // AMPM: the locale's designators
  } kind;
  int width = 1;  // 2 for the zero-padded forms; 3/4 for short/long names
  String text;    // Literal text; AmPm: the AM half
  String text2;   // AmPm: the PM half
};

std::size_t runOf(std::u16string_view s, std::size_t i, char16_t lower) {
  std::size_t j = i;
  while (j < s.size() && foldCase(s[j]) == lower) ++j;
  return j - i;
}

bool startsWithFolded(std::u16string_view s, std::size_t i, std::u16string_view what) {
  if (s.size() - i < what.size()) return false;
  for (std::size_t k = 0; k < what.size(); ++k) {
    if (foldCase(s[i + k]) != what[k]) return false;
  }
  return true;
}

std::vector<DateToken> parseDatePattern(std::u16string_view s) {
  std::vector<DateToken> tokens;
  auto literal = [&](std::u16string_view text) {
    if (!tokens.empty() && tokens.back().kind == DateToken::Literal) {
      tokens.back().text += text;
    } else {
      tokens.push_back({DateToken::Literal, 1, String(text), {}});
    }
  };
  std::size_t i = 0;
  while (i < s.size()) {
    const char16_t c = s[i];
    const char16_t f = foldCase(c);
    if (c == u'"') {
      const std::size_t end = s.find(u'"', i + 1);
      const std::size_t stop = end == std::u16string_view::npos ? s.size() : end;
      literal(s.substr(i + 1, stop - i - 1));
      i = stop + 1;
      continue;
    }
    if (c == u'\\') {
      if (i + 1 < s.size()) literal(s.substr(i + 1, 1));
      i += 2;
      continue;
    }
    if (startsWithFolded(s, i, u"am/pm")) {
      tokens.push_back({DateToken::AmPm, 1, String(s.substr(i, 2)), String(s.substr(i + 3, 2))});
      i += 5;
      continue;
    }
    if (startsWithFolded(s, i, u"a/p")) {
      tokens.push_back({DateToken::AmPm, 1, String(s.substr(i, 1)), String(s.substr(i + 2, 1))});
      i += 3;
      continue;
    }
    if (startsWithFolded(s, i, u"ampm")) {
      tokens.push_back({DateToken::LocaleAmPm, 1, {}, {}});
      i += 4;
      continue;
    }
    std::size_t n = 1;
    switch (f) {
      case u'/':
        tokens.push_back({DateToken::DateSep, 1, {}, {}});
        break;
      case u':':
        tokens.push_back({DateToken::TimeSep, 1, {}, {}});
        break;
      case u'c':
        tokens.push_back({DateToken::General, 1, {}, {}});
        break;
      case u'd':
        n = std::min<std::size_t>(runOf(s, i, u'd'), 6);
        if (n <= 2) {
          tokens.push_back({DateToken::Day, static_cast<int>(n), {}, {}});
        } else if (n <= 4) {
          tokens.push_back({DateToken::DayName, static_cast<int>(n), {}, {}});
        } else {
          tokens.push_back({n == 5 ? DateToken::ShortDate : DateToken::LongDate, 1, {}, {}});
        }
        break;
      case u'w':
        n = std::min<std::size_t>(runOf(s, i, u'w'), 2);
        tokens.push_back({n == 1 ? DateToken::Weekday : DateToken::Week, 1, {}, {}});
        break;
      case u'm':
        n = std::min<std::size_t>(runOf(s, i, u'm'), 4);
        tokens.push_back({n <= 2 ? DateToken::MonthOrMinute : DateToken::MonthName,
                          static_cast<int>(n),
                          {},
                          {}});
        break;
      case u'q':
        tokens.push_back({DateToken::Quarter, 1, {}, {}});
        break;
      case u'y': {
        const std::size_t run = runOf(s, i, u'y');
        // "yyy" reads as "yy" followed by "y".
        n = run >= 4 ? 4 : run >= 2 ? 2 : 1;
        tokens.push_back({n == 4   ? DateToken::Year4
                          : n == 2 ? DateToken::Year2
                                   : DateToken::DayOfYear,
                          1,
                          {},
                          {}});
        break;
      }
      case u'h':
        n = std::min<std::size_t>(runOf(s, i, u'h'), 2);
        tokens.push_back({DateToken::Hour, static_cast<int>(n), {}, {}});
        break;
      case u'n':
        n = std::min<std::size_t>(runOf(s, i, u'n'), 2);
        tokens.push_back({DateToken::Minute, static_cast<int>(n), {}, {}});
        break;
      case u's':
        n = std::min<std::size_t>(runOf(s, i, u's'), 2);
        tokens.push_back({DateToken::Second, static_cast<int>(n), {}, {}});
        break;
      case u't':
        if (runOf(s, i, u't') >= 5) {
          n = 5;
          tokens.push_back({DateToken::LongTime, 1, {}, {}});
        } else {
          literal(s.substr(i, 1));
        }
        break;
      default:
        literal(s.substr(i, 1));
        break;
    }
    i += n;
  }
  // "m" and "mm" right after an hour are minutes.
  const DateToken* previous = nullptr;
  for (DateToken& t : tokens) {
    if (t.kind == DateToken::Literal || t.kind == DateToken::DateSep ||
        t.kind == DateToken::TimeSep) {
      continue;
    }
    if (t.kind == DateToken::MonthOrMinute && previous != nullptr &&
        previous->kind == DateToken::Hour) {
      t.kind = DateToken::Minute;
    }
    previous = &t;
  }
  return tokens;
}

String padded(int value, int width) {
  String digits = widen(std::to_string(value));
  if (static_cast<int>(digits.size()) < width) {
    digits.insert(0, static_cast<std::size_t>(width) - digits.size(), u'0');
  }
  return digits;
}

// Week of the year with weeks starting on Sunday and week 1 the one holding 1 January, so a
// year has 53 or 54 of them.
int weekOfYear(const DateParts& p) {
  const int jan1Weekday = ((p.weekday - 1 - (p.dayOfYear - 1)) % 7 + 7) % 7;  // 0 = Sunday
  return (p.dayOfYear - 1 + jan1Weekday) / 7 + 1;
}

}  // namespace

String formatDatePattern(double serial, std::u16string_view pattern,
                         const platform::RegionalSettings& rs) {
  const DateParts p = splitDate(Date{serial});
  const std::vector<DateToken> tokens = parseDatePattern(splitSections(pattern)[0]);
  bool twelveHour = false;
  for (const DateToken& t : tokens) {
    if (t.kind == DateToken::AmPm || t.kind == DateToken::LocaleAmPm) twelveHour = true;
  }
  const bool pm = p.hour >= 12;
  String out;
  for (const DateToken& t : tokens) {
    switch (t.kind) {
      case DateToken::Literal:
        out += t.text;
        break;
      case DateToken::DateSep:
        out += dateSeparator(rs);
        break;
      case DateToken::TimeSep:
        out += timeSeparator(rs);
        break;
      case DateToken::General:
        out += generalDateText(serial, rs);
        break;
      case DateToken::Day:
        out += padded(p.day, t.width);
        break;
      case DateToken::DayName: {
        const auto wd = static_cast<std::size_t>(p.weekday - 1);
        out += t.width == 3 ? rs.abbrevDayNames[wd] : rs.dayNames[wd];
        break;
      }
      case DateToken::ShortDate:
        out += formatPicture(rs.shortDate, p, rs);
        break;
      case DateToken::LongDate:
        out += formatPicture(rs.longDate, p, rs);
        break;
      case DateToken::Weekday:
        out += padded(p.weekday, 1);
        break;
      case DateToken::Week:
        out += padded(weekOfYear(p), 1);
        break;
      case DateToken::MonthOrMinute:
        out += padded(p.month, t.width);
        break;
      case DateToken::MonthName: {
        const auto m = static_cast<std::size_t>(p.month - 1);
        out += t.width == 3 ? rs.abbrevMonthNames[m] : rs.monthNames[m];
        break;
      }
      case DateToken::Quarter:
        out += padded((p.month - 1) / 3 + 1, 1);
        break;
      case DateToken::DayOfYear:
        out += padded(p.dayOfYear, 1);
        break;
      case DateToken::Year2:
        out += padded(p.year % 100, 2);
        break;
      case DateToken::Year4:
        out += padded(p.year, 1);
        break;
      case DateToken::Hour: {
        const int hour = twelveHour ? (p.hour % 12 == 0 ? 12 : p.hour % 12) : p.hour;
        out += padded(hour, t.width);
        break;
      }
      case DateToken::Minute:
        out += padded(p.minute, t.width);
        break;
      case DateToken::Second:
        out += padded(p.second, t.width);
        break;
      case DateToken::LongTime:
        out += formatPicture(rs.timeFormat, p, rs);
        break;
      case DateToken::AmPm:
        out += pm ? t.text2 : t.text;
        break;
      case DateToken::LocaleAmPm:
        out += pm ? rs.pm : rs.am;
        break;
    }
  }
  return out;
}

}  // namespace orvo::runtime::detail
