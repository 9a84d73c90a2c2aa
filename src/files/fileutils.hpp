#pragma once

#include <cstdint>

#include "orvogeneric/types.hpp"
#include "orvogeneric/variant.hpp"

// Small file-system services: existence tests that never raise, copies and numbered backups,
// safe deletion, the temporary and Windows directories, opening a document with its program,
// the "%InstallDir%" placeholder and recursive file lists.
namespace orvo::files {

// The message flags of the existence tests are accepted and have no effect: the tests are
// called where a missing file is an expected answer, and no message for them is documented.
std::int32_t GetAttributes(const String& Path, VBool DisplayMsg = VBool::False);
VBool FileExists(const String& FileName, VBool ShowMsg = VBool::False);
VBool DirExists(const String& DirPath);
VBool PathExists(const String& TestPath, String& ExistingDirPath);
String PathWithoutBackslash(const String& TestPath, VBool AlwaysRemove = VBool::False);
VBool FileReadOnly(const String& File);
String FileShortName(const String& LongFileName);

void SafeKill(const String& File);
VBool bFileCopy(const String& FileFrom, const String& FileTo, VBool Overwrite = VBool::True);
String FileBackup(const String& FileName, const String& NamePostfix = u"",
                  const String& ExtPrefix = u"");
VBool IsEqualFile(const String& Path1, const String& Path2);

String TempDir();
String WinDir();

// The shell's answers to opening a document: any value from kShellFirstSuccess up is success;
// below it an error code, of which kShellNoAssociation (no program for the document's type) is
// the one whose text depends on the document.
inline constexpr std::int32_t kShellFirstSuccess = 33;
inline constexpr std::int32_t kShellNoAssociation = 31;

void OpenDocument(const String& Document, std::int32_t hwnd, VBool& Success, String& Error);
// The Error text for a shell error code.
String shellErrorText(std::int32_t code, const String& Document);
void AutocompleteFilePaths(std::int32_t hwnd);

inline constexpr std::u16string_view gsINSTALL_DIR = u"%InstallDir%";
String ExpandInstallDir(const String& Path, const String& InstallDir = u"");

void ListFiles(const String& StartDir, SafeArray& Files, std::int32_t& NumFiles,
               VBool Recurse = VBool::True, const String& FileFilter = u"*.*");

}  // namespace orvo::files
