#include "settings/profile_cache.hpp"

#include <mutex>
#include <string>
#include <unordered_map>

#include "platform/codepage.hpp"
#include "settings/profile.hpp"

namespace orvo::settings::privateprofile {

namespace {

using detail::Document;

struct CacheEntry {
  platform::FileVersion version;
  std::shared_ptr<const Document> document;
  std::int64_t readAtNs = 0;  // when the document's bytes were last known to be the file's
};

std::mutex& cacheMutex() {
  static std::mutex m;
  return m;
}
std::unordered_map<platform::NativePath, CacheEntry, platform::NativePath::Hash>& cache() {
  static std::unordered_map<platform::NativePath, CacheEntry, platform::NativePath::Hash> c;
  return c;
}
constexpr std::size_t kCacheLimit = 64;

}  // namespace

bool stillValid(const Document& document) {
  return !document.dependsOnCodePage() || document.ansiCodePage() == platform::systemAnsiCodePage();
}

std::shared_ptr<const Document> cachedDocument(const platform::NativePath& path) {
  const std::lock_guard lock(cacheMutex());
  const auto it = cache().find(path);
  return it == cache().end() ? nullptr : it->second.document;
}

void forgetDocument(const platform::NativePath& path) {
  const std::lock_guard lock(cacheMutex());
  cache().erase(path);
}

void rememberDocument(const platform::NativePath& path, const platform::FileVersion& version,
                      std::shared_ptr<const Document> document, std::int64_t readAtNs) {
  const std::lock_guard lock(cacheMutex());
  if (cache().size() >= kCacheLimit && cache().count(path) == 0) cache().clear();
  cache()[path] = {version, std::move(document), readAtNs};
}

// The parsed file, from the cache while its stamp is unchanged (one stat per call, so that a
// change by another process is seen by the next call); null when it cannot be read.
std::shared_ptr<const Document> loadDocument(const platform::NativePath& path, bool* exists) {
  const auto version = platform::fileVersion(path);
  if (exists != nullptr) *exists = version.has_value();
  if (!version) return nullptr;
  std::shared_ptr<const Document> known;
  {
    const std::lock_guard lock(cacheMutex());
    const auto it = cache().find(path);
    if (it != cache().end() && stillValid(*it->second.document)) {
      if (it->second.version == *version &&
          platform::stampIsConclusive(*version, it->second.readAtNs)) {
        return it->second.document;
      }
      known = it->second.document;
    }
  }
  const std::int64_t readAt = platform::stampClockNs();
  platform::FileVersion read{};
  std::uint32_t error = 0;
  auto bytes = platform::readWholeFile(path, &read, error);
  if (!bytes || bytes->size() >= detail::kLargestFile) return nullptr;
  auto document =
      known != nullptr && known->raw() == *bytes
          ? known
          : std::make_shared<const Document>(std::move(*bytes), platform::systemAnsiCodePage());
  rememberDocument(path, read, document, readAt);
  return document;
}

void clearProfileCache() {
  const std::lock_guard lock(cacheMutex());
  cache().clear();
}

}  // namespace orvo::settings::privateprofile
