#include "platform/system_paths.hpp"

#include <dlfcn.h>
#include <link.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

namespace orvo::platform {

namespace {

String environment(const char* name) {
  const char* value = std::getenv(name);  // NOLINT(concurrency-mt-unsafe): read-only use
  return value == nullptr ? String() : fromSystemBytes(value);
}

}  // namespace

String temporaryDirectory() {
  // $TMPDIR plays the part of the TMP and TEMP variables; without it /tmp is the system's own.
  String dir = environment("TMPDIR");
  if (dir.empty()) dir = u"/tmp/";
  if (dir.back() != u'/' && dir.back() != u'\\')
    dir.push_back(dir.find(u'/') != String::npos ? u'/' : u'\\');
  // The platform fills nothing and reports the size it needs when the buffer is too small.
  constexpr std::size_t kBuffer = 512;
  return dir.size() < kBuffer ? dir : String();
}

String windowsDirectory() {
  // There is no Windows directory here: $ORVO_WINDIR names the folder that holds what the
  // applications expect there (ORVO.INI), and /etc is the system's own configuration folder.
  String dir = environment("ORVO_WINDIR");
  if (dir.empty()) dir = u"/etc";
  constexpr std::size_t kBuffer = 260;
  return dir.size() < kBuffer ? dir : String();
}

String executablePath() {
  std::string buffer(4096, '\0');
  const ssize_t n = ::readlink("/proc/self/exe", buffer.data(), buffer.size());
  if (n <= 0) return {};
  buffer.resize(static_cast<std::size_t>(n));
  String path = fromSystemBytes(buffer);
  // A name longer than the buffer comes back cut to the buffer, its last place taken by the
  // terminating zero that the returned length still counts.
  constexpr std::size_t kBuffer = 260;
  if (path.size() >= kBuffer) {
    path.resize(kBuffer);
    path.back() = u'\0';
  }
  return path;
}

String libraryModulePath() {
  Dl_info info{};
  link_map* map = nullptr;
  if (dladdr1(reinterpret_cast<void*>(&libraryModulePath), &info, reinterpret_cast<void**>(&map),
              RTLD_DL_LINKMAP) == 0 ||
      info.dli_fname == nullptr || *info.dli_fname == '\0') {
    return {};
  }
  // Linked into the program itself: the loader knows it by the name it was started with,
  // relative to a working directory that may have changed since.
  if (map != nullptr && (map->l_name == nullptr || *map->l_name == '\0')) {
    return executablePath();
  }
  // The loader reports the name it was given, which may be relative; the library is asked for
  // its directory, so the name is made absolute.
  char* resolved = ::realpath(info.dli_fname, nullptr);
  if (resolved == nullptr) return fromSystemBytes(info.dli_fname);
  String path = fromSystemBytes(resolved);
  std::free(resolved);  // NOLINT(cppcoreguidelines-no-malloc): realpath allocates with malloc
  return path;
}

}  // namespace orvo::platform
