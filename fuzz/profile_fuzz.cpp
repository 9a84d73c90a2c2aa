// The settings-file engine on any file content: reading never crashes or over-reads, and a
// write of a new key keeps every byte of the file and reads back. The first input byte picks
// the ANSI code page (western or Shift-JIS, whose trail bytes include "[" and "]"), whether the
// file's name is UTF-8 or not (a Latin-1 byte, which must reach the file system as it is), and
// whether a FIFO stands beside it, which reads and writes must refuse at once.
#include <sys/stat.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

#include "settings/profile.hpp"
#include "settings/profile_cache.hpp"

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
  const std::string stem = "/tmp/orvo_profile_fuzz_" + std::to_string(::getpid());
  const std::string path = stem + ((data[0] & 2) != 0 ? "_caf\xe9.ini" : ".ini");
  std::ofstream(path, std::ios::binary | std::ios::trunc) << original;
  const orvo::String file = orvo::fromSystemBytes(path);

  if ((data[0] & 4) != 0) {
    // Opened without waiting for a writer, refused as no file, and the writers' lock released.
    const std::string fifo = stem + ".fifo";
    ::unlink(fifo.c_str());
    if (::mkfifo(fifo.c_str(), 0600) != 0) __builtin_trap();
    const orvo::String fifoFile = orvo::fromSystemBytes(fifo);
    if (GetPrivateProfileString(u"S", u"k", u"d", 2048, fifoFile, ProfileForm::Wide) != u"d") {
      __builtin_trap();
    }
    const orvo::String s = u"S";
    const orvo::String k = u"k";
    std::uint32_t error = 0;
    if (WritePrivateProfileString(&s, &k, &k, fifoFile, ProfileForm::Wide, &error) || error != 5) {
      __builtin_trap();
    }
    ::unlink(fifo.c_str());
  }

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
  // The parse the writer kept (its index moved along where it could) answers as a fresh one.
  if (const auto kept = cachedDocument(orvo::platform::NativePath(file))) {
    const detail::Document fresh(after, kept->ansiCodePage());
    if (kept->raw() != after) __builtin_trap();
    for (const char16_t* name : {u"S", u"FZ", u"[", u"\u30bd"}) {
      const auto a = kept->findSection(name);
      const auto b = fresh.findSection(name);
      if (a.has_value() != b.has_value()) __builtin_trap();
      if (!a) continue;
      for (const char16_t* key : {u"K", u"FZ", u"="}) {
        const auto x = kept->findKey(*a, key);
        const auto y = fresh.findKey(*b, key);
        if (x.has_value() != y.has_value()) __builtin_trap();
        if (x && kept->text(x->valueBegin, x->valueEnd) != fresh.text(y->valueBegin, y->valueEnd)) {
          __builtin_trap();
        }
      }
    }
  }
  if (!present) {
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
  ::unlink(path.c_str());
  return 0;
}
