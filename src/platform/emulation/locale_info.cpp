#include "platform/locale_info.hpp"

#include <unicode/locid.h>
#include <unicode/uloc.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/codepage.hpp"
#include "platform/emulation/windows_locale_facts.hpp"
#include "platform/locale.hpp"

namespace orvo::platform {

namespace {

// LCTypes the platform answers; the others fail as an unknown type does. The currency
// layout and the AM/PM designators are left out: CLDR's differ from the platform's too often
// to be offered as its answers.
enum : std::uint32_t {
  kILanguage = 0x0001,
  kSLanguage = 0x0002,
  kSAbbrevLangName = 0x0003,
  kIDefaultCodePage = 0x000B,
  kSList = 0x000C,
  kSDecimal = 0x000E,
  kSThousand = 0x000F,
  kICurrDigits = 0x0019,
  kSShortDate = 0x001F,
  kSLongDate = 0x0020,
  kSDayName1 = 0x002A,          // Monday; ..0x0030 Sunday
  kSAbbrevDayName1 = 0x0031,    // ..0x0037
  kSMonthName1 = 0x0038,        // ..0x0043
  kSAbbrevMonthName1 = 0x0044,  // ..0x004F
  kSName = 0x005C,
  kSEngLanguage = 0x1001,
  kSEngCountry = 0x1002,
  kSTimeFormat = 0x1003,
  kIDefaultAnsiCodePage = 0x1004,
};
constexpr std::uint32_t kFlagMask = kLocaleNoUserOverride | kLocaleUseCpAcp;
constexpr std::uint32_t kLocaleCustomDefault = 0x0C00;
constexpr std::uint32_t kLocaleCustomUiDefault = 0x1400;

String fromIcu(const icu::UnicodeString& s) {
  return String(reinterpret_cast<const char16_t*>(s.getBuffer()),
                static_cast<std::size_t>(s.length()));
}

String ascii(std::string_view s) { return String(s.begin(), s.end()); }

std::string part(const char* name, int32_t (*get)(const char*, char*, int32_t, UErrorCode*)) {
  char buffer[ULOC_FULLNAME_CAPACITY] = "";
  UErrorCode status = U_ZERO_ERROR;
  get(name, buffer, sizeof buffer, &status);
  return U_SUCCESS(status) ? std::string(buffer) : std::string();
}

std::string country(const char* name) { return part(name, uloc_getCountry); }
std::string script(const char* name) { return part(name, uloc_getScript); }
std::string maximized(const char* name) { return part(name, uloc_addLikelySubtags); }
std::string minimized(const char* name) { return part(name, uloc_minimizeSubtags); }
std::string localeForLcid(std::uint32_t lcid) {
  char buffer[ULOC_FULLNAME_CAPACITY] = "";
  UErrorCode status = U_ZERO_ERROR;
  uloc_getLocaleForLCID(lcid, buffer, sizeof buffer, &status);
  return U_SUCCESS(status) ? std::string(buffer) : std::string();
}

constexpr bool isNeutral(std::uint32_t lcid) { return (lcid >> 10) == 0; }

// An LCID that names one country's locale: ICU maps a region it has no LCID for to the
// language alone (en_AE -> 0x0009), and to script-only identifiers (sr_Latn -> 0x701A);
// neither is a locale the platform enumerates, nor is an LCID it never assigned.
std::uint32_t specificLcid(const std::string& icuName) {
  if (icuName.empty() || country(icuName.c_str()).empty()) return 0;
  const std::uint32_t lcid = uloc_getLCID(icuName.c_str());
  if (lcid == 0 || isNeutral(lcid) || lcid > 0xFFFF || !emulation::isWindowsLocale(lcid)) return 0;
  return country(localeForLcid(lcid).c_str()).empty() ? 0 : lcid;
}

// One locale as the platform describes it.
struct LocaleRecord {
  std::uint32_t lcid = 0;
  std::string dataName;     // the ICU locale the regional data comes from ("zh_Hans_CN")
  std::string windowsName;  // LOCALE_SNAME ("zh-CN")
  std::string namesFrom;    // the ICU locale whose English names the platform shows
};

// The platform's names where ICU's differ: it leaves the script out of the Chinese names and
// keeps its own language codes for Fulah (Nigeria), Central Kurdish, Dari and Quechua.
struct NameCorrection {
  std::uint32_t lcid;
  std::string_view windowsName;
};
constexpr NameCorrection kWindowsNames[] = {
    {0x0404, "zh-TW"},      {0x0C04, "zh-HK"},      {0x1004, "zh-SG"},  {0x1404, "zh-MO"},
    {0x0467, "ff-Latn-NG"}, {0x0492, "ku-Arab-IQ"}, {0x048C, "prs-AF"}, {0x046B, "quz-BO"},
    {0x086B, "quz-EC"},     {0x0C6B, "quz-PE"},
};

// English country names where the platform's differ from CLDR's short forms.
struct CountryCorrection {
  std::string_view region;
  std::u16string_view name;
};
constexpr CountryCorrection kCountryNames[] = {
    {"BA", u"Bosnia and Herzegovina"},
    {"HK", u"Hong Kong SAR"},
    {"KR", u"Korea"},
    {"MO", u"Macao SAR"},
};

LocaleRecord makeRecord(std::uint32_t lcid, const std::string& dataName) {
  LocaleRecord r;
  r.lcid = lcid;
  r.dataName = dataName;
  const std::string lcidName = localeForLcid(lcid);
  // The names are those of ICU's name for the LCID (en_029 "Caribbean", where the data comes
  // from en_VI), with the script of the data locale when that name leaves it implicit
  // (zh_CN is "Chinese (Simplified, China)").
  r.namesFrom = lcidName.empty() ? dataName : lcidName;
  const std::string dataScript = script(dataName.c_str());
  if (!lcidName.empty() && script(lcidName.c_str()).empty() && !dataScript.empty()) {
    r.namesFrom = std::string(icu::Locale(lcidName.c_str()).getLanguage()) + "_" + dataScript +
                  "_" + country(lcidName.c_str());
  }
  char tag[ULOC_FULLNAME_CAPACITY] = "";
  UErrorCode status = U_ZERO_ERROR;
  uloc_toLanguageTag(lcidName.empty() ? dataName.c_str() : lcidName.c_str(), tag, sizeof tag, false,
                     &status);
  r.windowsName = U_SUCCESS(status) ? tag : "";
  for (const auto& c : kWindowsNames) {
    if (c.lcid == lcid) r.windowsName = c.windowsName;
  }
  return r;
}

struct LocaleTable {
  std::vector<LocaleRecord> records;  // enumeration order
  std::map<std::uint32_t, std::size_t> byLcid;
};

// ICU's locales with a country, each taken to its LCID directly or through its likely
// subtags (ha_NG is ha_Latn_NG, 0x0468). Where several ICU locales give one LCID, the data
// comes from the one that ICU itself names for the LCID (en_US rather than en_AS for 0x0409).
LocaleTable buildTable() {
  struct Candidate {
    std::int32_t order;
    std::string name;
  };
  std::map<std::uint32_t, std::vector<Candidate>> candidates;
  const std::int32_t count = uloc_countAvailable();
  for (std::int32_t i = 0; i < count; ++i) {
    const std::string name = uloc_getAvailable(i);
    if (country(name.c_str()).empty()) continue;
    for (const std::string& form : {name, maximized(name.c_str()), minimized(name.c_str())}) {
      if (const std::uint32_t lcid = specificLcid(form)) {
        candidates[lcid].push_back({i, name});
        break;
      }
    }
  }
  std::vector<std::pair<std::int32_t, LocaleRecord>> ordered;
  for (const auto& [lcid, list] : candidates) {
    const std::string own = maximized(localeForLcid(lcid).c_str());
    const auto best = std::find_if(list.begin(), list.end(), [&](const Candidate& c) {
      return maximized(c.name.c_str()) == own;
    });
    const Candidate& chosen = best != list.end() ? *best : list.front();
    ordered.emplace_back(chosen.order, makeRecord(lcid, chosen.name));
  }
  std::sort(ordered.begin(), ordered.end(),
            [](const auto& a, const auto& b) { return a.first < b.first; });
  LocaleTable table;
  for (auto& [order, record] : ordered) {
    table.byLcid[record.lcid] = table.records.size();
    table.records.push_back(std::move(record));
  }
  return table;
}

const LocaleTable& localeTable() {
  static const LocaleTable table = buildTable();
  return table;
}

const LocaleRecord* installed(std::uint32_t lcid) {
  const LocaleTable& t = localeTable();
  const auto it = t.byLcid.find(lcid);
  return it == t.byLcid.end() ? nullptr : &t.records[it->second];
}

// A locale an answer is given for: an installed one, the user's (whose regional data is the
// process locale's own, as the platform applies the user's overrides to the user locale),
// or the invariant locale.
struct Resolved {
  LocaleRecord record;
  bool invariant = false;
  bool userSettings = false;
};

std::optional<Resolved> resolve(std::uint32_t lcid, bool noUserOverride) {
  switch (lcid) {
    case 0:  // LANG_NEUTRAL: the platform takes it as the user default
    case kLocaleUserDefault:
    case kLocaleCustomDefault:
    case kLocaleCustomUiDefault:
      lcid = userDefaultLCID();
      break;
    case kLocaleSystemDefault:
      lcid = systemDefaultLCID();
      break;
    case kLocaleInvariant: {
      Resolved r;
      r.record.lcid = kLocaleInvariant;
      r.invariant = true;
      return r;
    }
    default:
      break;
  }
  const bool user = !noUserOverride && lcid == userDefaultLCID();
  if (const LocaleRecord* record = installed(lcid)) return Resolved{*record, false, user};
  if (user) return Resolved{makeRecord(lcid, userLocaleName()), false, true};
  // An alternate sort answers as its locale in everything a query here reads.
  if (const std::uint32_t base = emulation::alternateSortBase(lcid)) {
    return resolve(base, noUserOverride);
  }
  // A locale the platform has that ICU has no country data for (Spanish with the traditional
  // sort, Sami of several countries, ...) still answers the platform's own facts; its
  // regional data is ICU's nearest.
  if (emulation::isWindowsLocale(lcid)) {
    const std::string icuName = localeForLcid(lcid);
    return Resolved{makeRecord(lcid, icuName.empty() ? "en_US" : icuName), false, false};
  }
  return std::nullopt;
}

String englishCountry(const std::string& icuName) {
  const icu::Locale locale(icuName.c_str());
  for (const auto& c : kCountryNames) {
    if (c.region == locale.getCountry()) return String(c.name);
  }
  icu::UnicodeString text;
  return fromIcu(locale.getDisplayCountry(icu::Locale::getEnglish(), text));
}

// "Serbian (Latin)": the language, with its script where the locale names one.
String englishLanguage(const std::string& icuName) {
  const icu::Locale locale(icuName.c_str());
  std::string languageAndScript = locale.getLanguage();
  if (*locale.getScript() != '\0') languageAndScript += std::string("_") + locale.getScript();
  icu::UnicodeString text;
  return fromIcu(
      icu::Locale(languageAndScript.c_str()).getDisplayName(icu::Locale::getEnglish(), text));
}

// "Serbian (Latin, Serbia)". The country goes in by hand rather than through ICU's display
// name, which writes a country name that has parentheses of its own with brackets.
String englishLocaleName(const std::string& icuName) {
  String name = englishLanguage(icuName);
  const String country = englishCountry(icuName);
  if (!name.empty() && name.back() == u')') {
    name.insert(name.size() - 1, u", " + country);
    return name;
  }
  return name + u" (" + country + u")";
}

String number(std::int64_t n) { return ascii(std::to_string(n)); }

// The invariant locale's own values; its month and day names are the English ones.
std::optional<String> invariantValue(std::uint32_t type) {
  switch (type) {
    case kILanguage:
      return u"007f";
    case kSLanguage:
      return u"Invariant Language (Invariant Country)";
    case kSAbbrevLangName:
      return u"IVL";
    case kIDefaultCodePage:
      return u"437";
    case kSList:
    case kSThousand:
      return u",";
    case kSDecimal:
      return u".";
    case kICurrDigits:
      return u"2";
    case kSShortDate:
      return u"MM/dd/yyyy";
    case kSLongDate:
      return u"dddd, dd MMMM yyyy";
    case kSName:
      return u"";
    case kSEngLanguage:
      return u"Invariant Language";
    case kSEngCountry:
      return u"Invariant Country";
    case kSTimeFormat:
      return u"HH:mm:ss";
    case kIDefaultAnsiCodePage:
      return u"1252";
    default:
      break;
  }
  return std::nullopt;
}

std::optional<String> regionalValue(const RegionalSettings& rs, std::uint32_t type) {
  if (type >= kSDayName1 && type < kSDayName1 + 7) {
    return rs.dayNames[(type - kSDayName1 + 1) % 7];  // the platform counts from Monday
  }
  if (type >= kSAbbrevDayName1 && type < kSAbbrevDayName1 + 7) {
    return rs.abbrevDayNames[(type - kSAbbrevDayName1 + 1) % 7];
  }
  if (type >= kSMonthName1 && type < kSMonthName1 + 12) return rs.monthNames[type - kSMonthName1];
  if (type >= kSAbbrevMonthName1 && type < kSAbbrevMonthName1 + 12) {
    return rs.abbrevMonthNames[type - kSAbbrevMonthName1];
  }
  switch (type) {
    case kSList:
      return rs.listSeparator;
    case kSDecimal:
      return rs.decimalSeparator;
    case kSThousand:
      return rs.thousandSeparator;
    case kICurrDigits:
      return number(rs.currencyDigits);
    case kSShortDate:
      return rs.shortDate;
    case kSLongDate:
      return rs.longDate;
    case kSTimeFormat:
      return rs.timeFormat;
    default:
      return std::nullopt;
  }
}

std::optional<String> valueOf(const Resolved& r, std::uint32_t type) {
  if (r.invariant) {
    if (auto v = invariantValue(type)) return v;
    return regionalValue(*regionalSettingsFor("en_US"), type);
  }
  const std::uint32_t lcid = r.record.lcid;
  switch (type) {
    case kILanguage: {
      char hex[8];
      std::snprintf(hex, sizeof hex, "%04x", static_cast<unsigned>(lcid & 0xFFFFU));
      return ascii(hex);
    }
    case kSLanguage:
      return englishLocaleName(r.record.namesFrom);
    case kSAbbrevLangName:
      return String(emulation::windowsLanguageAbbreviation(lcid));
    case kIDefaultCodePage:
      return number(emulation::windowsCodePages(lcid).oem);
    case kIDefaultAnsiCodePage:
      return number(emulation::windowsCodePages(lcid).ansi);
    case kSName:
      return ascii(r.record.windowsName);
    case kSEngLanguage:
      return englishLanguage(r.record.namesFrom);
    case kSEngCountry:
      return englishCountry(r.record.namesFrom);
    default:
      break;
  }
  const auto rs = r.userSettings ? userRegionalSettings() : regionalSettingsFor(r.record.dataName);
  return regionalValue(*rs, type);
}

std::optional<std::pair<Resolved, std::uint32_t>> lookup(std::uint32_t lcid, std::uint32_t lcType) {
  const std::uint32_t type = lcType & ~kFlagMask;
  if (type > 0xFFFF) return std::nullopt;  // number and genitive forms are not offered
  auto r = resolve(lcid, (lcType & kLocaleNoUserOverride) != 0);
  if (!r) return std::nullopt;
  return std::make_pair(std::move(*r), type);
}

template <class Char>
int copyOut(const std::basic_string<Char>& value, Char* buffer, int size) {
  const int needed = static_cast<int>(value.size()) + 1;
  if (size == 0) return needed;
  if (size < needed || buffer == nullptr) return 0;
  std::copy(value.begin(), value.end(), buffer);
  buffer[value.size()] = Char{};
  return needed;
}

bool equalsNoCase(std::u16string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    const char16_t x = a[i] < 0x80 ? static_cast<char16_t>(std::tolower(a[i])) : a[i];
    const char16_t y = static_cast<char16_t>(std::tolower(static_cast<unsigned char>(b[i])));
    if (x != y) return false;
  }
  return true;
}

}  // namespace

void enumSystemLocales(LocaleSet /*which*/, const std::function<bool(std::string_view)>& callback) {
  for (const LocaleRecord& r : localeTable().records) {
    char hex[12];
    std::snprintf(hex, sizeof hex, "%08X", static_cast<unsigned>(r.lcid));
    if (!callback(hex)) return;
  }
}

std::optional<String> localeInfo(std::uint32_t lcid, std::uint32_t lcType) {
  const auto found = lookup(lcid, lcType);
  if (!found) return std::nullopt;
  return valueOf(found->first, found->second);
}

int getLocaleInfoA(std::uint32_t lcid, std::uint32_t lcType, char* buffer, int size) {
  const auto found = lookup(lcid, lcType);
  if (!found) return 0;
  const auto value = valueOf(found->first, found->second);
  if (!value) return 0;
  std::uint32_t codePage = 0;
  if ((lcType & kLocaleUseCpAcp) == 0) {
    codePage =
        found->first.invariant ? 1252 : emulation::windowsCodePages(found->first.record.lcid).ansi;
  }
  if (codePage == 0) codePage = systemAnsiCodePage();
  return copyOut(wideToMultiByte(codePage, *value), buffer, size);
}

int getLocaleInfoEx(const char16_t* localeName, std::uint32_t lcType, char16_t* buffer, int size) {
  std::uint32_t lcid = 0;
  if (localeName == nullptr) {
    lcid = kLocaleUserDefault;
  } else {
    const std::u16string_view name(localeName);
    if (name.empty()) {
      lcid = kLocaleInvariant;
    } else if (name == u"!x-sys-default-locale") {
      lcid = kLocaleSystemDefault;
    } else {
      for (const LocaleRecord& r : localeTable().records) {
        if (equalsNoCase(name, r.windowsName)) lcid = r.lcid;
      }
      if (lcid == 0) return 0;
    }
  }
  const auto value = localeInfo(lcid, lcType);
  return value ? copyOut(*value, buffer, size) : 0;
}

std::uint32_t lcidForLocaleName(std::string_view localeName) {
  const std::string name(localeName);
  const icu::Locale canonical = icu::Locale::createCanonical(name.c_str());
  if (canonical.isBogus() || *canonical.getLanguage() == '\0') return 0x0409;
  const std::string base = canonical.getName();
  for (const std::string& form : {base, maximized(base.c_str())}) {
    if (const std::uint32_t lcid = specificLcid(form)) return lcid;
  }
  // The language's own country: what the platform picks for a language-only name.
  const std::string language = maximized(canonical.getLanguage());
  if (const std::uint32_t lcid = specificLcid(language)) return lcid;
  return 0x0409;
}

}  // namespace orvo::platform
