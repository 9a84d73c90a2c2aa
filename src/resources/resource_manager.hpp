#pragma once

#include <cstdint>

#include "orvogeneric/classes.hpp"
#include "orvogeneric/types.hpp"
#include "resources/satellite_loader.hpp"

// The resource manager's non-public side: its set-up by the factories and the naming rules of
// satellite files.
namespace orvo::resources {

// The resource manager's error numbers, raised with the library's source.
inline constexpr std::uint32_t kErrorSatelliteNotLoaded = 0x8004F138;  // or none loaded at all
inline constexpr std::uint32_t kErrorNoSearchDirectory = 0x8004F13C;
inline constexpr std::uint32_t kErrorResourceIDOutOfRange = 0x8004F141;
inline constexpr std::uint32_t kErrorNoFileStub = 0x8004F143;
inline constexpr std::uint32_t kErrorStringNotFound = 0x8004F144;

// The locale whose satellite stands in for one that cannot be loaded (1028 -> 2052,
// 1033 -> 2057; every other locale is its own).
std::int32_t fallbackLocale(std::int32_t lcid);

// stub + the LCID in upper-case hexadecimal without leading zeros + ".dll" (AppRes809.dll).
String satelliteFileName(const String& stub, std::int32_t lcid);

// The set-up the factory runs once on a new manager: the search directory, the stub, the
// British English fallback satellite and the locale (-1: the thread's, not strict).
void Initialise(ResourceManager& manager, const String& fileStub, const String& searchDirectory,
                std::int32_t localeID);

}  // namespace orvo::resources
