#include "desktop/clipboard.hpp"
#include "orvogeneric/classes.hpp"
#include "text/numbers.hpp"
#include "text/paths.hpp"
#include "text/strings.hpp"

namespace orvo {

String StringUtilities::ExpandString(const String& Template, SafeArray& Arguments) {
  return text::ExpandString_Worker(Template, Arguments);
}

String StringUtilities::EncodeQuotes(const String& InputString) {
  return text::EncodeQuotes(InputString);
}

String StringUtilities::AddQuotesToString(const String& InputString, VBool TrimInput,
                                          VBool TrimInsideQuotes, VBool AddSingleQuotes) {
  return text::AddQuotesToString(InputString, TrimInput, TrimInsideQuotes, AddSingleQuotes);
}

String StringUtilities::RemoveQuotesFromString(const String& InputString, VBool TrimInput,
                                               VBool TrimInsideQuotes) {
  return text::RemoveQuotesFromString(InputString, TrimInput, TrimInsideQuotes);
}

String StringUtilities::AddQuotesToPath(const String& InputString) {
  return text::AddQuotesToPath(InputString);
}

String StringUtilities::RemoveQuotesFromPath(const String& InputString) {
  return text::RemoveQuotesFromPath(InputString);
}

std::int32_t StringUtilities::StringCount(const String& StringToSearch,
                                          const String& StringToCount) {
  return text::StringCount(StringToSearch, StringToCount);
}

String StringUtilities::ReplaceMultipleSpaces(const String& text) {
  return text::ReplaceMultipleSpaces(text);
}

Variant StringUtilities::SplitOnSpaces(const String& text, std::int32_t* NumWords,
                                       VBool TrimFirst) {
  return text::SplitOnSpaces(text, NumWords, TrimFirst);
}

std::int32_t StringUtilities::LenTrim(const String& CharString) {
  return text::LenTrim(CharString);
}

std::int32_t StringUtilities::LenB_ANSI(const String& CharString) {
  return text::LenB_ANSI(CharString);
}

void StringUtilities::CorrectDLLStringForDBCS(String& ToCorrect) {
  text::CorrectDLLStringForDBCS(ToCorrect);
}

VBool StringUtilities::StringContainsBannedChars(String& value, const String& BannedChars,
                                                 VBool Replace, const String& ReplacementChars) {
  return text::bStringContainsBannedChars(value, BannedChars, Replace, ReplacementChars);
}

VBool StringUtilities::StringContainsBannedCharsEx(String& value, const String& BannedChars,
                                                   VBool Replace, const String& ReplacementChars,
                                                   String* Info) {
  return text::bStringContainsBannedChars(value, BannedChars, Replace, ReplacementChars, Info);
}

VBool StringUtilities::StringContainsAllowedChars(String& value, const String& AllowedAsciiRanges,
                                                  String* Info) {
  return text::bStringContainsAllowedChars(value, AllowedAsciiRanges, Info);
}

String StringUtilities::BannedCharExtender_Allowed() { return text::kBannedCharExtender_Allowed; }

String StringUtilities::BannedCharExtender_Equals() { return text::kBannedCharExtender_Equals; }

VBool StringUtilities::IsEqualString(const String& String1, const String& String2,
                                     VBool CaseSensitive, VBool TrimWords) {
  return text::bStrComp(String1, String2, CaseSensitive, TrimWords);
}

VBool StringUtilities::IsStringInArray(const String& Find, Variant& vArray, std::int32_t* Index,
                                       VBool CaseSensitive, VBool TrimWords) {
  return text::bStringInArray(Find, vArray, Index, CaseSensitive, TrimWords);
}

VBool StringUtilities::IsInCollection(const std::shared_ptr<Collection>& col, const String& Key,
                                      VBool TrimKey) {
  return text::bIsInCollection(col, Key, TrimKey);
}

VBool StringUtilities::IsArrayInitialised(const Variant& vArray, VBool bCheckBounds) {
  return text::IsArrayInitialised(vArray, bCheckBounds);
}

VBool StringUtilities::IsArrayInitialised_Fast(Variant& vArray, VBool bCheckBounds) {
  return text::IsArrayInitialised(vArray, bCheckBounds);
}

VBool StringUtilities::StringToBoolean(const String& sValue, VBool bDefault) {
  return text::bStringToBoolean(sValue, bDefault);
}

String StringUtilities::BooleanToString(VBool bValue) { return text::sBooleanToString(bValue); }

Variant StringUtilities::Maximum(SafeArray& Vals) { return text::Maximum_Worker(Vals); }

Variant StringUtilities::Minimum(SafeArray& Vals) { return text::Minimum_Worker(Vals); }

String StringUtilities::DPDelimiter() { return text::DPDelimiter(); }

String StringUtilities::FormatNumToRegion(const Variant& Expression, const String& FormatStr) {
  return text::FormatNumToRegion(Expression, FormatStr);
}

String StringUtilities::FormatNumToFORTRAN(const Variant& Expression, const String& FormatStr) {
  return text::FormatNumToFORTRAN(Expression, FormatStr);
}

double StringUtilities::ValDbl(const Variant& Expression) { return text::ValDbl(Expression); }

std::int16_t StringUtilities::ValInt(const Variant& Expression) { return text::ValInt(Expression); }

std::int32_t StringUtilities::ValLng(const Variant& Expression) { return text::ValLng(Expression); }

float StringUtilities::ValSng(const Variant& Expression) { return text::ValSng(Expression); }

String StringUtilities::TrimStr(double Number) { return text::TrimStr(Number); }

void StringUtilities::SplitPath(const String& FullPath, String* Drive, String* Dir, String* Name,
                                String* Extension) {
  text::SplitPath(FullPath, Drive, Dir, Name, Extension);
}

void StringUtilities::MakePath(String& FullPath, const String& Drive, const String& Dir,
                               const String& Name, const String& Extension) {
  text::MakePath(FullPath, Drive, Dir, Name, Extension);
}

String StringUtilities::PathWithBackslash(const String& Path) {
  return text::PathWithBackslash(Path);
}

String StringUtilities::LongDirFix(const String& Path, std::int16_t MaxTotalLength) {
  return text::LongDirFix(Path, MaxTotalLength);
}

String StringUtilities::GetPathFromClipboard(enumGetPathFromClipboardSearch Search) {
  return clipboard::GetPathFromClipboard(Search);
}

String StringUtilities::ClipboardGetText() { return clipboard::ClipboardGetText(); }

void StringUtilities::ClipboardSetText(const String& text) { clipboard::ClipboardSetText(text); }

}  // namespace orvo
