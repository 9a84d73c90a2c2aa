#include "settings/profile_cache.hpp"

#include <atomic>
#include <mutex>
#include <string>
#include <unordered_map>

#include "platform/change_monitor.hpp"
#include "platform/codepage.hpp"
#include "settings/profile.hpp"

namespace orvo::settings::privateprofile {

namespace {

using detail::Document;

struct CacheEntry {
  platform::FileVersion version;
  std::shared_ptr<const Document> document;
  std::int64_t readAtNs = 0;  // when the document's bytes were last known to be the file's
  // While the watch's count stays at seenChanges, nothing has touched the file since its bytes
  // were known; without a watch the stamp is asked at every call.
  std::shared_ptr<const platform::FileWatch> watch;
  std::uint64_t seenChanges = 0;
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

// Moves on whenever an entry is added, replaced or dropped (under the cache's lock).
std::atomic<std::uint64_t> generation{0};

// The last file this thread looked up, while the cache has not changed since: a program
// reading many values from one file is answered without the lock or the map. The parse is
// only pointed at, so that a parse the cache has let go is not kept alive here.
struct LastLookup {
  platform::NativePath path;
  std::weak_ptr<const Document> document;
  std::shared_ptr<const platform::FileWatch> watch;
  std::uint64_t seenChanges = 0;
  std::uint64_t generation = 0;
};
LastLookup& lastLookup() {
  thread_local LastLookup last;
  return last;
}

void noteLastLookup(const platform::NativePath& path, const CacheEntry& entry,
                    std::uint64_t atGeneration) {
  LastLookup& last = lastLookup();
  if (entry.watch == nullptr) {
    last.document.reset();
    return;
  }
  if (last.path != path) last.path = path;
  last.document = entry.document;
  last.watch = entry.watch;
  last.seenChanges = entry.seenChanges;
  last.generation = atGeneration;
}

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
  generation.fetch_add(1, std::memory_order_acq_rel);
}

WatchedSince watchSettingsFile(const platform::NativePath& path) {
  auto watch = platform::watchFile(path);
  const std::uint64_t seen = watch != nullptr ? watch->changes() : 0;
  return {std::move(watch), seen};
}

void rememberDocument(const platform::NativePath& path, const platform::FileVersion& version,
                      std::shared_ptr<const Document> document, std::int64_t readAtNs,
                      WatchedSince watched) {
  const std::lock_guard lock(cacheMutex());
  if (cache().size() >= kCacheLimit && cache().count(path) == 0) cache().clear();
  cache()[path] = {version, std::move(document), readAtNs, std::move(watched.watch),
                   watched.seenChanges};
  generation.fetch_add(1, std::memory_order_acq_rel);
}

// The parsed file, from the cache while nothing has changed it; null when it cannot be read.
// A watched file costs one look at the process's change notifications, shared by all files;
// any other costs a stat. Either way another process's change is seen by the next call.
std::shared_ptr<const Document> loadDocument(const platform::NativePath& path, bool* exists) {
  platform::collectChanges();
  if (LastLookup& last = lastLookup();
      last.generation == generation.load(std::memory_order_acquire) && last.path == path &&
      last.watch != nullptr && last.watch->changes() == last.seenChanges) {
    if (auto document = last.document.lock(); document != nullptr && stillValid(*document)) {
      if (exists != nullptr) *exists = true;
      return document;
    }
  }
  std::shared_ptr<const Document> known;
  platform::FileVersion knownVersion{};
  std::int64_t knownReadAt = 0;
  {
    const std::lock_guard lock(cacheMutex());
    const auto it = cache().find(path);
    if (it != cache().end() && stillValid(*it->second.document)) {
      const CacheEntry& entry = it->second;
      if (entry.watch != nullptr && entry.watch->changes() == entry.seenChanges) {
        if (exists != nullptr) *exists = true;
        noteLastLookup(path, entry, generation.load(std::memory_order_acquire));
        return entry.document;
      }
      known = entry.document;
      knownVersion = entry.version;
      knownReadAt = entry.readAtNs;
    }
  }
  // The watch comes first: a change after it is counted, whatever this call reads.
  WatchedSince watched = watchSettingsFile(path);
  const auto version = platform::fileVersion(path);
  if (exists != nullptr) *exists = version.has_value();
  if (!version) return nullptr;
  if (known != nullptr && knownVersion == *version &&
      platform::stampIsConclusive(*version, knownReadAt)) {
    rememberDocument(path, *version, known, knownReadAt, std::move(watched));
    return known;
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
  rememberDocument(path, read, document, readAt, std::move(watched));
  return document;
}

void clearProfileCache() {
  const std::lock_guard lock(cacheMutex());
  cache().clear();
  generation.fetch_add(1, std::memory_order_acq_rel);
}

}  // namespace orvo::settings::privateprofile
