#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "orvogeneric/types.hpp"
#include "resources/pe_strings.hpp"

// What loading a satellite library and asking it for a string mean here: the library is read
// as data by our own PE reader, never mapped or run, so a satellite compiled for Windows (32- or
// 64-bit) serves on any platform.
namespace orvo::resources {

struct Satellite {
  StringTable table;
  std::vector<std::uint16_t> languages;  // ascending
};

// Stands where a module handle stood: null is the handle 0 of a failed load. The same file
// loaded twice is the same satellite while either is held, as a module is loaded once.
using SatelliteHandle = std::shared_ptr<const Satellite>;

// Loads the satellite at path. The path goes through the system's ANSI code page first, as the
// byte-string loader took it, so a character the page lacks becomes "?" and the file is not
// found. A bare file name is looked for in the parent application's directory, then in the
// current directory. Null when the file is missing, unreadable, not a PE image or has no
// resource section.
SatelliteHandle loadSatellite(const String& path);

// String id of a satellite, at most bufferChars - 1 characters of it (the rest is cut, as a
// buffer of bufferChars with its terminator holds no more); nullopt when absent or empty.
//
// A satellite may hold one string block in several languages. As the platform does for a
// lookup that names no language, the first of these that has the block is taken: language
// neutral; the thread's (user default) language; that language with the neutral sublanguage;
// the system default language and its neutral form; English (United States); then the lowest
// language that has the block. A string missing from the chosen block is missing: no other
// language is tried.
std::optional<String> loadSatelliteString(const Satellite& satellite, std::uint16_t id,
                                          std::size_t bufferChars);

}  // namespace orvo::resources
