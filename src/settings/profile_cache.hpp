#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/change_monitor.hpp"
#include "platform/whole_file.hpp"
#include "settings/profile_document.hpp"

// Parsed settings files kept between calls, keyed by the path the system opens: a file is
// parsed again only when it may have changed, so that a program reading fifty values pays for
// one parse while another process's change is still seen by the next call.
namespace orvo::settings::privateprofile {

// Whether a document read in one ANSI code page reads the same in the current one.
bool stillValid(const detail::Document& document);
// The parsed file, from the cache while its stamp is unchanged; null when it cannot be read.
// exists (when given) tells whether a file of that name was there to read.
std::shared_ptr<const detail::Document> loadDocument(const platform::NativePath& path,
                                                     bool* exists = nullptr);
// The last parse of the file whatever its stamp (a writer compares bytes with it); may be null.
std::shared_ptr<const detail::Document> cachedDocument(const platform::NativePath& path);
// Drops the file's parse, if any.
void forgetDocument(const platform::NativePath& path);
// A file's change watch (null when it has none) and its count when it was taken.
struct WatchedSince {
  std::shared_ptr<const platform::FileWatch> watch;
  std::uint64_t seenChanges = 0;
};
// Watches the file from now on: take it before reading the bytes a parse will stand for.
WatchedSince watchSettingsFile(const platform::NativePath& path);
// Records the parse of bytes known to be the file's at readAtNs, watched since before then.
void rememberDocument(const platform::NativePath& path, const platform::FileVersion& version,
                      std::shared_ptr<const detail::Document> document, std::int64_t readAtNs,
                      WatchedSince watched);

}  // namespace orvo::settings::privateprofile
