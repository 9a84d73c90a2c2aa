#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "orvogeneric/types.hpp"

// Settings files read and written one value at a time, as the platform's private-profile
// functions do it, with three promises the platform does not make: a write changes only the
// bytes of the line it replaces, adds or removes; a file is replaced whole, so that no reader
// and no crash ever sees half of it; and writers in several processes are serialised.
namespace orvo::settings::privateprofile {

// The two forms of the platform functions: the wide form takes the text as it is, the 8-bit
// form first converts every argument to the system's ANSI code page and its answer back,
// which loses what that page cannot hold.
enum class ProfileForm { Wide, Ansi };

// One value, as GetPrivateProfileString answers it into a buffer of bufferSize characters:
// at most bufferSize - 1 characters of the value (one pair of enclosing quotes removed), or
// the default with its trailing blanks removed when the file, section or key is missing.
// found (when given) tells which.
String GetPrivateProfileString(const String& section, const String& key, const String& defaultText,
                               std::size_t bufferSize, const String& file, ProfileForm form,
                               bool* found = nullptr);
// The same with the form chosen by the caller once it is known whether the file exists, so that
// one look at the file serves both the choice and the freshness of the parse.
String GetPrivateProfileString(const String& section, const String& key, const String& defaultText,
                               std::size_t bufferSize, const String& file,
                               const std::function<ProfileForm(bool exists)>& formOf,
                               bool* found = nullptr);

// WritePrivateProfileString: sets the key, or deletes it when value is null, or deletes the
// whole section when key is null. False with a Windows error number in lastError (when given)
// when the file cannot be written: 2 no section named, 3 no such directory, 5 access denied.
bool WritePrivateProfileString(const String* section, const String* key, const String* value,
                               const String& file, ProfileForm form,
                               std::uint32_t* lastError = nullptr);

namespace detail {
class Document;
}

// A settings file parsed once (or taken from the cache), for a caller that reads many values
// in one go without asking the file system about changes for each.
class ProfileSnapshot {
 public:
  // Nullopt when the file is missing or unreadable.
  static std::optional<ProfileSnapshot> read(const String& file);
  // The value as the wide GetPrivateProfileString returns it, without a buffer limit; nullopt
  // when the section or key is missing.
  [[nodiscard]] std::optional<String> value(std::u16string_view section,
                                            std::u16string_view key) const;
  // Every section header's name in file order, duplicates included.
  [[nodiscard]] std::vector<String> sectionNames() const;
  // The key lines of the first section of that name: names and values as a read returns them.
  [[nodiscard]] std::optional<std::vector<std::pair<String, String>>> section(
      std::u16string_view name) const;

 private:
  explicit ProfileSnapshot(std::shared_ptr<const detail::Document> document)
      : document_(std::move(document)) {}
  std::shared_ptr<const detail::Document> document_;
};

// Forgets every parsed file; the next call reads from the disk.
void clearProfileCache();

}  // namespace orvo::settings::privateprofile
