#pragma once

#include <cstdint>

#include "orvogeneric/classes.hpp"
#include "orvogeneric/types.hpp"
#include "resources/satellite_loader.hpp"

// The resource manager's non-public side: its set-up by the factories and the naming rules of
// satellite files.
namespace orvo::resources {

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
