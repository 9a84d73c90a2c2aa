#pragma once

#include <chrono>
#include <cstdint>
#include <memory>

#include "orvogeneric/classes.hpp"
#include "orvogeneric/types.hpp"
#include "orvogeneric/variant.hpp"

// Launching the spreadsheet program and opening delimited files in it. Excel's automation does
// not exist here: LibreOffice Calc plays its part, with Excel's window states and arguments.
namespace orvo::system {

// Excel's window states.
constexpr std::int32_t xlNormal = -4143;
constexpr std::int32_t xlMinimized = -4140;
constexpr std::int32_t xlMaximized = -4137;
constexpr std::int32_t xlTextQualifierNone = -4142;

// OpenText's named arguments, as OpenInExcel sets them.
struct DelimitedImport {
  bool consecutiveDelimiter = false;
  bool tab = false;
  bool semicolon = false;
  bool comma = false;
  bool space = false;
  bool other = false;
  String otherChar;
  std::int32_t textQualifier = 1;
  String decimalSeparator = u".";
  String thousandsSeparator = u",";
};

// The delimiter flags of OpenInExcel's FieldDelimiter, tested in the order tab, ";", ",", " ".
DelimitedImport delimiterFlags(const Variant& fieldDelimiter);

// Calc's CSV import options for the file: its delimiters, qualifier, character set (from the
// file's encoding) and a language whose numbers use those separators.
String calcImportOptions(const DelimitedImport& import, enumFileEncoding encoding);

// Makes the object stand for this user's running Calc, waiting up to the time given for it and
// its main window to appear; false when there is none.
bool attachCalc(SpreadsheetApplication& app,
                std::chrono::milliseconds wait = std::chrono::milliseconds(0));
// The title of its main window.
String calcCaption(const SpreadsheetApplication& app);

VBool RunOrRestoreExcel(std::shared_ptr<Object>* objExcel, VBool SuppressWarning, VBool UseINIFile,
                        std::int32_t WindowState);
void OpenInExcel(const String& File, const Variant& FieldDelimiter, VBool USFormat,
                 VBool SuppressWarning, VBool UseINIFile, std::int32_t WindowState);
void SafeAppActivate(const String& Title);

}  // namespace orvo::system
