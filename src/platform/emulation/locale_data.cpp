#include <unicode/dcfmtsym.h>
#include <unicode/decimfmt.h>
#include <unicode/dtfmtsym.h>
#include <unicode/dtptngen.h>
#include <unicode/locid.h>
#include <unicode/smpdtfmt.h>
#include <unicode/uloc.h>

#include <cstdlib>
#include <map>
#include <mutex>
#include <string_view>

#include "platform/emulation/windows_locale_facts.hpp"
#include "platform/locale.hpp"
#include "platform/locale_info.hpp"

namespace orvo::platform {

namespace {

String fromIcu(const icu::UnicodeString& s) {
  return String(reinterpret_cast<const char16_t*>(s.getBuffer()),
                static_cast<std::size_t>(s.length()));
}

// Where the platform's own tables differ from CLDR, the platform wins: these are the values a
// Windows user of the locale sees (date pictures, abbreviations without CLDR's periods). An
// empty picture keeps the one derived from CLDR.
struct WindowsOverride {
  std::string_view locale;
  std::u16string_view shortDate;
  std::u16string_view longDate;
  std::u16string_view timeFormat;
};
constexpr WindowsOverride kOverrides[] = {
    {"en_US", u"M/d/yyyy", u"dddd, MMMM d, yyyy", u"h:mm:ss tt"},
    {"en_GB", u"dd/MM/yyyy", u"dd MMMM yyyy", u"HH:mm:ss"},
    {"de_DE", u"dd.MM.yyyy", u"dddd, d. MMMM yyyy", u"HH:mm:ss"},
    {"de_AT", u"dd.MM.yyyy", u"dddd, d. MMMM yyyy", u"HH:mm:ss"},
    {"de_CH", u"dd.MM.yyyy", u"dddd, d. MMMM yyyy", u"HH:mm:ss"},
    {"fr_FR", u"dd/MM/yyyy", u"dddd d MMMM yyyy", u"HH:mm:ss"},
    {"it_IT", u"dd/MM/yyyy", u"dddd d MMMM yyyy", u"HH:mm:ss"},
    {"es_ES", u"dd/MM/yyyy", u"dddd, d' de 'MMMM' de 'yyyy", u"H:mm:ss"},
    {"nl_NL", u"d-M-yyyy", u"dddd d MMMM yyyy", u"HH:mm:ss"},
    {"ja_JP", u"yyyy/MM/dd", u"yyyy'\u5e74'M'\u6708'd'\u65e5'", u"H:mm:ss"},
    {"zh_CN", u"yyyy/M/d", u"yyyy'\u5e74'M'\u6708'd'\u65e5'", u"HH:mm:ss"},
    {"pl_PL", u"dd.MM.yyyy", u"", u""},
    {"ko_KR", u"yyyy-MM-dd", u"", u""},
    {"ru_RU", u"", u"d MMMM yyyy '\u0433.'", u""},
};

// ICU date patterns to the platform's picture strings: "a" is "tt", "EEEE" is "dddd", a lone
// "y" or "yy" year is written with four digits as the platform's defaults do.
String toWindowsPicture(const icu::UnicodeString& icuPattern) {
  const String p = fromIcu(icuPattern);
  String out;
  for (std::size_t i = 0; i < p.size();) {
    const char16_t c = p[i];
    std::size_t run = 1;
    while (i + run < p.size() && p[i + run] == c) ++run;
    if (c == u'\'') {
      const std::size_t end = p.find(u'\'', i + 1);
      const std::size_t stop = end == String::npos ? p.size() : end + 1;
      out.append(p, i, stop - i);
      i = stop;
      continue;
    }
    switch (c) {
      case u'y':
        out.append(u"yyyy");
        break;
      case u'a':
      case u'b':
      case u'B':
        out.append(u"tt");
        break;
      case u'E':
      case u'c':
        out.append(run >= 4 ? u"dddd" : u"ddd");
        break;
      case u'G':
        out.append(u"gg");
        break;
      case u'\u202f':
        // The platform's pictures predate CLDR's narrow no-break space before the AM/PM mark.
        out.append(run, u' ');
        break;
      case u'L':
        out.append(run, u'M');
        break;
      case u'k':
        out.append(run, u'H');
        break;
      case u'K':
        out.append(run, u'h');
        break;
      default:
        out.append(run, c);
        break;
    }
    i += run;
  }
  return out;
}

// The platform numbers currency layouts (positive: 0 "$1", 1 "1$", 2 "$ 1", 3 "1 $"; negative:
// 0 "($1)", 1 "-$1", 5 "-1$", 8 "-1 $", 9 "-$ 1"); ICU describes them as a pattern with the
// currency sign before or after the number, with or without a space.
void setCurrencyModes(RegionalSettings& rs, const String& pattern) {
  const String positive = pattern.substr(0, pattern.find(u';'));
  const auto sign = positive.find(u'\u00a4');
  const auto digit = positive.find_first_of(u"#0");
  if (sign == String::npos || digit == String::npos) return;
  const bool before = sign < digit;
  const String between = before ? positive.substr(sign + 1, digit - sign - 1)
                                : positive.substr(positive.find_last_of(u"#0") + 1,
                                                  sign - positive.find_last_of(u"#0") - 1);
  const bool spaced = between.find_first_of(u" \u00a0\u202f") != String::npos;
  rs.currencyPositiveMode = before ? (spaced ? 2 : 0) : (spaced ? 3 : 1);
  rs.currencyNegativeMode = before ? (spaced ? 9 : 1) : (spaced ? 8 : 5);
  // English (United States) keeps the accounting parentheses.
  if (rs.localeName == "en_US") rs.currencyNegativeMode = 0;
}

std::shared_ptr<const RegionalSettings> build(const std::string& name) {
  auto rs = std::make_shared<RegionalSettings>();
  icu::Locale loc = icu::Locale::createCanonical(name.c_str());
  if (loc.isBogus() || std::string_view(loc.getLanguage()).empty()) loc = icu::Locale("en", "US");
  rs->localeName = loc.getLanguage();
  if (*loc.getCountry() != '\0') rs->localeName += std::string("_") + loc.getCountry();
  rs->lcid = lcidForLocaleName(loc.getName());

  UErrorCode status = U_ZERO_ERROR;
  // The platform's separators are those of the Latin digits it formats with, also where CLDR
  // defaults to native digits (Arabic: "." and "," rather than U+066B and U+066C).
  icu::Locale latin = loc;
  latin.setKeywordValue("numbers", "latn", status);
  status = U_ZERO_ERROR;
  const icu::DecimalFormatSymbols symbols(latin, status);
  if (U_SUCCESS(status)) {
    rs->decimalSeparator =
        fromIcu(symbols.getSymbol(icu::DecimalFormatSymbols::kDecimalSeparatorSymbol));
    rs->thousandSeparator =
        fromIcu(symbols.getSymbol(icu::DecimalFormatSymbols::kGroupingSeparatorSymbol));
    // The platform's tables predate CLDR's narrow no-break space (French, Swiss French and
    // others group with U+00A0).
    if (rs->thousandSeparator == u"\u202f") rs->thousandSeparator = u"\u00a0";
    rs->currencySymbol = fromIcu(symbols.getSymbol(icu::DecimalFormatSymbols::kCurrencySymbol));
  }
  status = U_ZERO_ERROR;
  std::unique_ptr<icu::NumberFormat> currency(
      icu::NumberFormat::createInstance(loc, UNUM_CURRENCY, status));
  if (auto* decimal = dynamic_cast<icu::DecimalFormat*>(currency.get());
      U_SUCCESS(status) && decimal) {
    icu::UnicodeString pattern;
    decimal->toPattern(pattern);
    setCurrencyModes(*rs, fromIcu(pattern));
    rs->currencyDigits = decimal->getMaximumFractionDigits();
  }
  status = U_ZERO_ERROR;
  const icu::DateFormatSymbols dates(loc, status);
  if (U_SUCCESS(status)) {
    using DFS = icu::DateFormatSymbols;
    std::int32_t count = 0;
    const auto* months = dates.getMonths(count, DFS::STANDALONE, DFS::WIDE);
    for (std::int32_t i = 0; i < 12 && i < count; ++i) rs->monthNames[i] = fromIcu(months[i]);
    const auto* shortMonths = dates.getMonths(count, DFS::STANDALONE, DFS::ABBREVIATED);
    for (std::int32_t i = 0; i < 12 && i < count; ++i)
      rs->abbrevMonthNames[i] = fromIcu(shortMonths[i]);
    // ICU's weekday arrays are 1-based (index 0 unused), Sunday first.
    // Weekday names are the forms used inside a date (Finnish "maanantaina", lower-case
    // Latvian "pirmdiena"); month names the stand-alone ones (Russian "Январь").
    const auto* days = dates.getWeekdays(count, DFS::FORMAT, DFS::WIDE);
    for (std::int32_t i = 1; i <= 7 && i < count; ++i) rs->dayNames[i - 1] = fromIcu(days[i]);
    const auto* shortDays = dates.getWeekdays(count, DFS::FORMAT, DFS::ABBREVIATED);
    for (std::int32_t i = 1; i <= 7 && i < count; ++i)
      rs->abbrevDayNames[i - 1] = fromIcu(shortDays[i]);
    const auto* ampm = dates.getAmPmStrings(count);
    if (count >= 2) {
      rs->am = fromIcu(ampm[0]);
      rs->pm = fromIcu(ampm[1]);
    }
  }
  // The platform's pictures are Gregorian ones, also where CLDR's default calendar is not.
  icu::Locale gregorian = loc;
  status = U_ZERO_ERROR;
  gregorian.setKeywordValue("calendar", "gregorian", status);
  auto picture = [&](icu::DateFormat::EStyle dateStyle, icu::DateFormat::EStyle timeStyle) {
    std::unique_ptr<icu::DateFormat> f(
        icu::DateFormat::createDateTimeInstance(dateStyle, timeStyle, gregorian));
    icu::UnicodeString pattern;
    if (auto* simple = dynamic_cast<icu::SimpleDateFormat*>(f.get())) simple->toPattern(pattern);
    return toWindowsPicture(pattern);
  };
  // The platform's short date is the locale's numeric year-month-day form (CLDR's "yMd"),
  // not CLDR's short style, which often has a two-digit year.
  status = U_ZERO_ERROR;
  std::unique_ptr<icu::DateTimePatternGenerator> generator(
      icu::DateTimePatternGenerator::createInstance(gregorian, status));
  if (U_SUCCESS(status)) {
    rs->shortDate = toWindowsPicture(generator->getBestPattern(u"yMd", status));
  }
  if (U_FAILURE(status) || rs->shortDate.empty()) {
    rs->shortDate = picture(icu::DateFormat::kShort, icu::DateFormat::kNone);
  }
  rs->longDate = picture(icu::DateFormat::kFull, icu::DateFormat::kNone);
  rs->timeFormat = picture(icu::DateFormat::kNone, icu::DateFormat::kMedium);
  if (std::string_view(loc.getLanguage()) == "de") {
    // The platform abbreviates German weekdays without CLDR's period ("So", not "So.").
    for (auto& day : rs->abbrevDayNames) {
      if (!day.empty() && day.back() == u'.') day.pop_back();
    }
  }
  for (const auto& o : kOverrides) {
    if (o.locale == rs->localeName) {
      if (!o.shortDate.empty()) rs->shortDate = o.shortDate;
      if (!o.longDate.empty()) rs->longDate = o.longDate;
      if (!o.timeFormat.empty()) rs->timeFormat = o.timeFormat;
    }
  }
  const emulation::WindowsCodePages pages = emulation::windowsCodePages(rs->lcid);
  rs->ansiCodePage = pages.ansi;
  rs->oemCodePage = pages.oem;
  // CLDR has no list separator. Where the platform's table has none either, the platform's
  // habit is to separate lists with ";" wherever "," is the decimal separator.
  rs->listSeparator = emulation::windowsListSeparator(rs->lcid);
  if (rs->listSeparator.empty()) rs->listSeparator = rs->decimalSeparator == u"," ? u";" : u",";
  return rs;
}

}  // namespace

std::shared_ptr<const RegionalSettings> regionalSettingsFor(const std::string& localeName) {
  static std::mutex mutex;
  static std::map<std::string, std::shared_ptr<const RegionalSettings>> cache;
  const std::lock_guard lock(mutex);
  auto& slot = cache[localeName];
  if (!slot) slot = build(localeName);
  return slot;
}

}  // namespace orvo::platform
