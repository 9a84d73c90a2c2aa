#include "system/locale_lists.hpp"

#include <memory>
#include <string>

#include "frame/traps.hpp"
#include "platform/locale.hpp"
#include "platform/locale_info.hpp"
#include "runtime/convert.hpp"
#include "system/locale_queries.hpp"
#include "text/numbers.hpp"
#include "text/strings.hpp"

namespace orvo::system {

namespace {

constexpr std::int32_t kEnglishUnitedStates = 1033;

bool contains(const std::shared_ptr<Collection>& list, const String& key) {
  return isTrue(text::bIsInCollection(list, key, VBool::False));
}

// The platform passes eight hexadecimal digits; anything that is not hexadecimal ends the
// number where it starts, as the language's "&H" conversion does.
std::int32_t lcidFromHex(std::string_view hex) {
  std::uint32_t value = 0;
  for (const char c : hex) {
    int digit = -1;
    if (c >= '0' && c <= '9') digit = c - '0';
    if (c >= 'a' && c <= 'f') digit = c - 'a' + 10;
    if (c >= 'A' && c <= 'F') digit = c - 'A' + 10;
    if (digit < 0) break;
    value = value * 16 + static_cast<std::uint32_t>(digit);
  }
  return static_cast<std::int32_t>(value);
}

void addOnce(const std::shared_ptr<Collection>& list, std::string_view lpLocaleString) {
  const std::int32_t lcid = lcidFromHex(lpLocaleString);
  const String key = numberKey(lcid);
  if (!contains(list, key)) list->Add(Variant(lcid), key);
}

}  // namespace

String numberKey(std::int32_t n) { return text::TrimStr(static_cast<double>(n)); }

frame::LocaleLists newLocaleLists() {
  return {std::make_shared<Collection>(), std::make_shared<Collection>(),
          std::make_shared<Collection>(), std::make_shared<Collection>(),
          std::make_shared<Collection>(), std::make_shared<Collection>()};
}

bool EnumSystemLocalesProcInstalled(frame::LocaleLists& lists, std::string_view lpLocaleString) {
  return frame::trap(u"EnumSystemLocalesProcInstalled", [&] {
    addOnce(lists.installed, lpLocaleString);
    return true;
  });
}

bool EnumSystemLocalesProcSupported(frame::LocaleLists& lists, std::string_view lpLocaleString) {
  return frame::trap(u"EnumSystemLocalesProcSupported", [&] {
    addOnce(lists.supported, lpLocaleString);
    return true;
  });
}

void InitialiseLCIDs(frame::LocaleLists& lists) {
  frame::trap(u"InitialiseLCIDs", [&] {
    platform::enumSystemLocales(platform::LocaleSet::Installed, [&](std::string_view hex) {
      return EnumSystemLocalesProcInstalled(lists, hex);
    });
    platform::enumSystemLocales(platform::LocaleSet::Supported, [&](std::string_view hex) {
      return EnumSystemLocalesProcSupported(lists, hex);
    });
  });
}

void InitialiseLCIDCodePageLists_Worker(frame::LocaleLists& lists, std::int32_t LCID) {
  frame::trap(u"InitialiseLCIDCodePageLists_Worker", [&] {
    const String language = GetUserLocaleInfo(0x0001, LCID);  // LOCALE_ILANGUAGE
    if (language.empty()) return;
    const std::int32_t languageId = lcidFromHex(toUtf8(language));
    const String page = GetUserLocaleInfo(0x1004, LCID);  // LOCALE_IDEFAULTANSICODEPAGE
    if (!contains(lists.ansiCodePages, page)) {
      lists.ansiCodePages->Add(Variant(text::ValLng(Variant(page))), page);
      lists.firstLocale->Add(Variant(LCID), page);
      lists.localesPerCodePage->Add(
          Variant(std::shared_ptr<Object>(std::make_shared<Collection>())), page);
    }
    // A primary locale with the default sort stands for its code page; the Unicode-only
    // locales ("0") are represented by the user's own locale instead.
    if (LCID != platform::kLocaleInvariant && LCID == languageId &&
        !contains(lists.representative, page)) {
      const std::int32_t representative = page == u"0" ? GetLCIDUserDefault() : LCID;
      lists.representative->Add(Variant(representative), page);
    }
    const Variant& perPage = lists.localesPerCodePage->Item(Variant(page));
    std::dynamic_pointer_cast<Collection>(*perPage.object())->Add(Variant(LCID), numberKey(LCID));
  });
}

void InitialiseLCIDCodePageLists() {
  frame::trap(u"InitialiseLCIDCodePageLists", [&] {
    frame::StaticGlobals& globals = frame::StaticGlobals::instance();
    if (globals.localeListsBuilt()) return;
    frame::LocaleLists lists = newLocaleLists();
    globals.setLocaleLists(lists);
    InitialiseLCIDs(lists);
    // 1033 goes first so that it is the first locale met for 1252.
    const String english = numberKey(kEnglishUnitedStates);
    if (contains(lists.installed, english)) {
      InitialiseLCIDCodePageLists_Worker(lists, kEnglishUnitedStates);
    }
    for (std::int32_t i = 1; i <= lists.installed->Count(); ++i) {
      const std::int32_t lcid =
          runtime::CLngV(lists.installed->Item(i), *platform::userRegionalSettings());
      if (lcid != kEnglishUnitedStates) InitialiseLCIDCodePageLists_Worker(lists, lcid);
    }
    globals.setLocaleListsBuilt();
  });
}

}  // namespace orvo::system
