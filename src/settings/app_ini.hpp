#pragma once

#include "orvogeneric/types.hpp"

// The application INI file: named after the executable and beside it unless the application
// names another, created with a dated comment on first use.
namespace orvo::settings {

// Whether the INI file of the stem (the application's when empty) exists; INIFile receives its
// path when it does, or with ReturnPathIfMissing when it does not.
VBool FindINI(String& INIFile, const String& FileStem = {}, VBool ShowMsg = VBool::False,
              VBool ReturnPathIfMissing = VBool::False);
// The application INI file's path, creating the file when it is missing.
String sAppINIFile();
void SetAppINIFile(const String& INIFile);
void DisplayINIFileForThisApp();

}  // namespace orvo::settings
