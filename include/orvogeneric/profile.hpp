#pragma once

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "orvogeneric/export.hpp"
#include "orvogeneric/system_errors.hpp"
#include "orvogeneric/types.hpp"

// Settings files beyond the typed one-value calls of the INI class, for tools and hosts that
// show or edit a whole file: the sections and keys as the platform's enumerations list them,
// and writes and deletions that say why they failed. Each goes through the same engine as the
// INI class (same parsing, same in-place edits, same locking).
namespace orvo {

// The section names in file order, duplicates included; empty for a missing file.
ORVO_API std::vector<String> ProfileSectionNames(const String& file);

// The keys of the first section of that name with their values as a read returns them
// (quotes stripped), in file order; nullopt when the file or the section is missing.
ORVO_API std::optional<std::vector<std::pair<String, String>>> ProfileSection(
    const String& file, const String& section);

// The value of a key as a read returns it (quotes stripped); nullopt when the file, the section
// or the key is missing, which a read's default cannot tell from an empty value.
ORVO_API std::optional<String> ProfileValue(const String& file, const String& section,
                                            const String& key);
// Writes one value as it is given (no quoting added); with key null deletes the section, with
// value null the key. False with a Windows error number (system_errors.hpp) when it cannot.
ORVO_API bool ProfileWrite(const String& file, const String& section, const String* key,
                           const String* value, std::uint32_t* lastError = nullptr);

}  // namespace orvo
