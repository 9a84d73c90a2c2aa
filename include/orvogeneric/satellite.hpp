#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "orvogeneric/export.hpp"
#include "orvogeneric/types.hpp"

// The string tables of a satellite library (a per-language resource DLL), read from the file's
// bytes: nothing is loaded or run, on any platform. For tools and hosts that show or check a
// satellite; the resource manager reads satellites through the same reader.
namespace orvo {

struct SatelliteString {
  std::uint16_t language = 0;  // the LANGID the table was compiled for (2057 = 0x0809)
  std::uint16_t id = 0;
  String text;  // as compiled: "%n" and every other character unchanged
};

// Every string of every language, ordered by language then id; nullopt when the file cannot be
// read, is not a PE image, is cut short or malformed, or has no resource section, with the
// reason ("not a PE image: no MZ header") in failure.
ORVO_API std::optional<std::vector<SatelliteString>> SatelliteStrings(const String& file,
                                                                      String* failure = nullptr);

}  // namespace orvo
