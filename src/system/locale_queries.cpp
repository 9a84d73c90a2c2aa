#include "system/locale_queries.hpp"

#include <string>

#include "frame/state.hpp"
#include "frame/traps.hpp"
#include "platform/codepage.hpp"
#include "platform/locale.hpp"
#include "platform/locale_info.hpp"
#include "runtime/convert.hpp"
#include "runtime/errors.hpp"
#include "runtime/strings.hpp"
#include "system/locale_lists.hpp"
#include "text/numbers.hpp"
#include "text/strings.hpp"

namespace orvo::system {

namespace {

constexpr std::int32_t kDefaultAnsiCodePage = 0x1004;

// The lists as the start-up procedure left them; a list asked for before it exists is the
// language's "object variable not set".
std::shared_ptr<Collection> existing(std::shared_ptr<Collection> list) {
  if (!list) runtime::raise(runtime::errObjectNotSet);
  return list;
}

frame::LocaleLists lists() {
  frame::ensureLocaleLists();
  return frame::StaticGlobals::instance().localeLists();
}

}  // namespace

String GetUserLocaleInfo(std::int32_t LCType, std::int32_t LCID) {
  return frame::trap(u"GetUserLocaleInfo", [&]() -> String {
    const auto lcid = static_cast<std::uint32_t>(LCID);
    const auto type = static_cast<std::uint32_t>(LCType);
    const int needed = platform::getLocaleInfoA(lcid, type, nullptr, 0);
    if (needed == 0) return {};
    std::string buffer(static_cast<std::size_t>(needed), ' ');
    const int n = platform::getLocaleInfoA(lcid, type, buffer.data(), needed);
    if (n == 0) return {};
    // The host turns the whole buffer back into text with the system's code page. Where that
    // is a double-byte page the text is shorter than the byte count, and the first n - 1
    // characters then take in the terminating NUL too; kept, as callers saw it.
    const String text = platform::multiByteToWide(platform::systemAnsiCodePage(), buffer);
    return runtime::Left(text, n - 1);
  });
}

String GetUserLocaleInfoEx(std::int32_t LCType, const String& LocaleName) {
  return frame::trap(u"GetUserLocaleInfoEx", [&]() -> String {
    String buffer(256, u' ');
    const String name = LocaleName + u'\0';
    const int n = platform::getLocaleInfoEx(LocaleName == u"0" ? nullptr : name.c_str(),
                                            static_cast<std::uint32_t>(LCType), buffer.data(), 255);
    if (n > 0) return buffer.substr(0, static_cast<std::size_t>(n - 1));
    return {};
  });
}

String GetDecimalSeparator() {
  return frame::trap(u"GetDecimalSeparator",
                     [] { return GetUserLocaleInfo(kDecimalSeparator, 1024); });
}

String GetListSeparator() {
  return frame::trap(u"GetListSeparator", [] { return GetUserLocaleInfo(kListSeparator, 1024); });
}

String GetThousandSeparator() {
  return frame::trap(u"GetThousandSeparator",
                     [] { return GetUserLocaleInfo(kThousandSeparator, 1024); });
}

std::int32_t GetLCIDSystemDefault() {
  return frame::trap(u"GetLCIDSystemDefault",
                     [] { return static_cast<std::int32_t>(platform::systemDefaultLCID()); });
}

std::int32_t GetLCIDUserDefault() {
  return frame::trap(u"GetLCIDUserDefault",
                     [] { return static_cast<std::int32_t>(platform::userDefaultLCID()); });
}

std::int32_t GetWindowsCodePage() {
  return static_cast<std::int32_t>(platform::systemAnsiCodePage());
}

std::int32_t LCIDToCodePage(std::int32_t LCID) {
  return frame::trap(u"LCIDToCodePage", [&]() -> std::int32_t {
    const String page = GetUserLocaleInfo(kDefaultAnsiCodePage, LCID);
    return page.empty() ? 0 : text::ValLng(Variant(page));
  });
}

std::int32_t CodePageToLCID(std::int32_t CP) {
  return frame::trap(u"CodePageToLCID", [&]() -> std::int32_t {
    const auto representative = existing(lists().representative);
    const String key = numberKey(CP);
    if (!isTrue(text::bIsInCollection(representative, key, VBool::False))) return 0;
    return runtime::CLngV(representative->Item(Variant(key)), *platform::userRegionalSettings());
  });
}

std::shared_ptr<Collection> LCIDsForCodePage(std::int32_t CP) {
  return frame::trap(u"LCIDsForCodePage", [&]() -> std::shared_ptr<Collection> {
    const auto perPage = existing(lists().localesPerCodePage);
    const String key = numberKey(CP);
    if (!isTrue(text::bIsInCollection(perPage, key, VBool::False))) return nullptr;
    const Variant& item = perPage->Item(Variant(key));
    const auto* object = item.object();
    return object != nullptr ? std::dynamic_pointer_cast<Collection>(*object) : nullptr;
  });
}

std::shared_ptr<Collection> AvailableLCIDs() {
  return frame::trap(u"AvailableLCIDs", [] { return existing(lists().installed); });
}

std::shared_ptr<Collection> AvailableANSICodePages() {
  return frame::trap(u"AvailableANSICodePages", [] { return existing(lists().ansiCodePages); });
}

}  // namespace orvo::system
