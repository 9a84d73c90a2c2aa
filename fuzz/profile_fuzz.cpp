// The settings-file engine on any file content: reading never crashes or over-reads, and a
// write of a new key keeps every byte of the file and reads back. The first input byte picks
// the ANSI code page (western or Shift-JIS, whose trail bytes include "[" and "]").
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

#include "settings/profile.hpp"

namespace {

std::string readBack(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace orvo::settings::privateprofile;
  if (size == 0) return 0;
  ::setenv("ORVO_ANSI_CODEPAGE", (data[0] & 1) != 0 ? "932" : "1252", 1);
  const std::string original(reinterpret_cast<const char*>(data) + 1, size - 1);
  static const std::string path = "/tmp/orvo_profile_fuzz_" + std::to_string(::getpid()) + ".ini";
  std::ofstream(path, std::ios::binary | std::ios::trunc) << original;
  const orvo::String file = orvo::fromUtf8(path);

  for (const char16_t* section : {u"", u"S", u"s", u"[", u"\u30bd"}) {
    for (const char16_t* key : {u"", u"k", u"K", u";c", u"="}) {
      for (const std::size_t buffer : {0, 1, 2, 2048}) {
        const orvo::String value =
            GetPrivateProfileString(section, key, u"d", buffer, file, ProfileForm::Wide);
        if (buffer > 0 && value.size() >= buffer) __builtin_trap();
      }
    }
  }

  bool present = false;
  (void)GetPrivateProfileString(u"Fz", u"fz", u"", 2048, file, ProfileForm::Wide, &present);
  const orvo::String section = u"Fz";
  const orvo::String key = u"fz";
  const orvo::String value = u"1";
  if (!WritePrivateProfileString(&section, &key, &value, file, ProfileForm::Wide)) {
    __builtin_trap();
  }
  const std::string after = readBack(path);
  const bool oddUnicode = original.size() % 2 == 1 && (original.rfind("\xFF\xFE", 0) == 0 ||
                                                       original.rfind("\xFE\xFF", 0) == 0);
  if (!present && !oddUnicode) {
    // An insertion: the old bytes are a prefix and a suffix of the new file.
    std::size_t prefix = 0;
    while (prefix < original.size() && original[prefix] == after[prefix]) ++prefix;
    std::size_t suffix = 0;
    while (suffix < original.size() - prefix &&
           original[original.size() - 1 - suffix] == after[after.size() - 1 - suffix]) {
      ++suffix;
    }
    if (prefix + suffix != original.size() || after.size() <= original.size()) __builtin_trap();
    if (GetPrivateProfileString(u"fz", u"FZ", u"", 2048, file, ProfileForm::Wide) != u"1") {
      __builtin_trap();
    }
  }
  return 0;
}
