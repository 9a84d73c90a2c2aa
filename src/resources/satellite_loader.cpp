#include "resources/satellite_loader.hpp"

#include <algorithm>
#include <mutex>
#include <string>
#include <unordered_map>

#include "frame/parent_app.hpp"
#include "platform/codepage.hpp"
#include "platform/file.hpp"
#include "platform/locale_info.hpp"

namespace orvo::resources {

namespace {

bool hasSeparator(const String& path) { return path.find_first_of(u"\\/") != String::npos; }

bool isFile(const String& path) {
  const auto attributes = platform::fileAttributes(path);
  return attributes && (*attributes & platform::kAttributeDirectory) == 0;
}

// Loaded satellites by the path they were read from; an entry lives while a handle does.
struct Cache {
  std::mutex mutex;
  std::unordered_map<platform::NativePath, std::weak_ptr<const Satellite>,
                     platform::NativePath::Hash>
      loaded;
};

Cache& cache() {
  static Cache* c = new Cache;  // never destroyed: handles may outlive static destruction
  return *c;
}

// Whether the satellite has string block `block` (ids block*16 .. block*16+15) in a language.
bool hasBlock(const StringTable& table, std::uint16_t language, std::uint32_t block) {
  const auto strings = table.strings(language);
  const auto it =
      std::lower_bound(strings.begin(), strings.end(), block * 16,
                       [](const StringTable::Entry& e, std::uint32_t id) { return e.id < id; });
  return it != strings.end() && it->id < block * 16 + 16;
}

}  // namespace

SatelliteHandle loadSatellite(const String& requested) {
  const std::uint32_t ansi = platform::systemAnsiCodePage();
  String path = platform::multiByteToWide(ansi, platform::wideToMultiByte(ansi, requested));
  if (path.empty()) return nullptr;
  if (!hasSeparator(path)) {
    const String beside = frame::sParentAppPath() + path;
    if (isFile(beside)) path = beside;
  }
  const platform::NativePath key(path);
  Cache& c = cache();
  const std::lock_guard lock(c.mutex);
  if (auto alive = c.loaded[key].lock()) return alive;
  auto result = readPeStringsFile(path);
  if (!result) {
    c.loaded.erase(key);
    return nullptr;
  }
  auto satellite = std::make_shared<Satellite>();
  satellite->table = std::move(*result.table);
  satellite->languages = satellite->table.languages();
  c.loaded[key] = satellite;
  // Entries of released satellites are dropped as the map is used, so it stays small.
  std::erase_if(c.loaded, [](const auto& entry) { return entry.second.expired(); });
  return satellite;
}

std::optional<String> loadSatelliteString(const Satellite& satellite, std::uint16_t id,
                                          std::size_t bufferChars) {
  if (bufferChars == 0 || satellite.languages.empty()) return std::nullopt;
  const std::uint32_t block = id / 16U;
  const auto user = static_cast<std::uint16_t>(platform::userDefaultLCID() & 0xFFFFU);
  const auto system = static_cast<std::uint16_t>(platform::systemDefaultLCID() & 0xFFFFU);
  const std::uint16_t preferred[] = {0x0000,
                                     user,
                                     static_cast<std::uint16_t>(user & 0x3FFU),
                                     system,
                                     static_cast<std::uint16_t>(system & 0x3FFU),
                                     0x0409};
  std::optional<std::uint16_t> language;
  for (const std::uint16_t candidate : preferred) {
    if (std::binary_search(satellite.languages.begin(), satellite.languages.end(), candidate) &&
        hasBlock(satellite.table, candidate, block)) {
      language = candidate;
      break;
    }
  }
  if (!language) {
    for (const std::uint16_t candidate : satellite.languages) {
      if (hasBlock(satellite.table, candidate, block)) {
        language = candidate;
        break;
      }
    }
  }
  if (!language) return std::nullopt;
  const auto text = satellite.table.find(*language, id);
  if (!text) return std::nullopt;
  return String(text->substr(0, bufferChars - 1));
}

}  // namespace orvo::resources
