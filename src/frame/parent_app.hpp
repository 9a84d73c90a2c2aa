#pragma once

#include "orvogeneric/types.hpp"

// The parent application's directory, executable name and title: told once by the application,
// or derived from the running executable on first need.
namespace orvo::frame {

// The first initialisation wins; a path that is not an existing directory, or an empty name,
// stores nothing.
void InitialiseParentAppProperties(const String& AppPath, const String& AppEXEName);
void CheckParentAppInitialised();
// Derives the properties from an executable's full path; a development environment's own
// executable is refused with the programmer-error box.
void deriveParentAppProperties(const String& modulePath);
void SetAppTitle(const String& AppTitle);

String sParentAppEXEName();
String sParentAppPath();  // with a trailing separator
String sParentAppPathAndEXEName();
String sParentAppTitle();
String sParentGetModulePathName();

// The "GENERIC DLL" block written when the application initialises the properties.
void writeLibraryInformationBlock();

}  // namespace orvo::frame
