#include <cstdlib>
#include <memory>
#include <string>

#include "platform/codepage.hpp"
#include "platform/emulation/windows_locale_facts.hpp"
#include "platform/locale.hpp"
#include "platform/locale_info.hpp"

// Which locale and code page the system and the user have chosen. POSIX says it through the
// environment (LC_ALL, the category variable, LANG); what those locales hold comes from the
// emulated locale data.
namespace orvo::platform {

namespace {

std::uint32_t parseCodePage(const char* text) {
  char* end = nullptr;
  const unsigned long value = std::strtoul(text, &end, 10);
  return end != text && *end == '\0' && value <= 0xFFFFFFFFUL ? static_cast<std::uint32_t>(value)
                                                              : 0;
}

// The pages a system can have as its ANSI code page: the 8-bit ones and UTF-8 (the
// platform's "use UTF-8 for worldwide language support" setting).
bool isAnsiCodePage(std::uint32_t cp) {
  switch (cp) {
    case 874:
    case 932:
    case 936:
    case 949:
    case 950:
    case 65001:
      return true;
    default:
      return cp >= 1250 && cp <= 1258;
  }
}

}  // namespace

std::uint32_t systemAnsiCodePage() {
  if (const char* forced = std::getenv("ORVO_ANSI_CODEPAGE"); forced != nullptr) {
    const std::uint32_t cp = parseCodePage(forced);
    if (isAnsiCodePage(cp)) return cp;
  }
  const std::uint32_t cp = emulation::windowsCodePages(systemDefaultLCID()).ansi;
  // A Unicode-only locale cannot be the platform's system locale; such a user's 8-bit files
  // come from the Western page.
  return cp != 0 ? cp : 1252;
}

std::string userLocaleName(const char* categoryVariable) {
  const char* candidates[] = {"LC_ALL", categoryVariable, "LANG"};
  for (const char* var : candidates) {
    if (var == nullptr) continue;
    const char* value = std::getenv(var);
    if (value == nullptr || *value == '\0') continue;
    std::string name(value);
    if (const auto cut = name.find_first_of(".@"); cut != std::string::npos) name.erase(cut);
    if (name.empty() || name == "C" || name == "POSIX") return "en_US";
    return name;
  }
  return "en_US";
}

std::shared_ptr<const RegionalSettings> userRegionalSettings() {
  return regionalSettingsFor(userLocaleName());
}

std::uint32_t systemDefaultLCID() {
  // Asked for by every conversion in the system's code page: ICU's canonicalisation runs only
  // when the environment names another locale.
  thread_local std::string lastName;
  thread_local std::uint32_t lastLcid = 0;
  std::string name = userLocaleName("LC_CTYPE");
  if (lastLcid == 0 || name != lastName) {
    lastLcid = lcidForLocaleName(name);
    lastName = std::move(name);
  }
  return lastLcid;
}

std::uint32_t userDefaultLCID() { return userRegionalSettings()->lcid; }

}  // namespace orvo::platform
