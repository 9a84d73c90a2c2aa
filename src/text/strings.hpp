#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "orvogeneric/collection.hpp"
#include "orvogeneric/types.hpp"
#include "orvogeneric/variant.hpp"

// The string procedures behind StringUtilities. Other subsystems call them directly: the INI layer
// (bStringToBoolean, LenTrim), the resource manager (ExpandString_Worker), the keypress
// validators (bStrComp) and the file layer (bIsInCollection).
//
// Booleans follow the language's If: any non-zero flag counts as set. "Trim" removes U+0020
// only, and every comparison is on UTF-16 code units; case-insensitive means both sides are
// upper-cased first.
//
// Defined one concept to a file: expand.cpp, quotes.cpp, words.cpp (counting, spacing,
// splitting), ansi_length.cpp, character_sets.cpp (banned and allowed characters), compare.cpp,
// collections.cpp (arrays, collections, Maximum/Minimum) and booleans.cpp.
namespace orvo::text {

inline constexpr char16_t kBannedCharExtender_Allowed[] = u"allowed:";
inline constexpr char16_t kBannedCharExtender_Equals[] = u"equals:";

// Replaces "%k" by the text of argument k (counted from 0 whatever the array's lower bound),
// highest k first, so that "%12" is never taken for "%1" followed by "2". A never-dimensioned
// array is error 9; an argument without a text form (Null, an object) becomes "".
String ExpandString_Worker(const String& Template, const SafeArray& Arguments);
// The same for a caller that holds its arguments in a Variant: anything but an array counts as
// one empty argument.
String ExpandString_Worker(const String& Template, const Variant& Arguments);

// Apostrophes become grave accents; nothing else changes.
String EncodeQuotes(const String& InputString);
String AddQuotesToString(const String& InputString, VBool TrimInput = VBool::False,
                         VBool TrimInsideQuotes = VBool::True,
                         VBool AddSingleQuotes = VBool::False);
// Removes one pair of matching quotes; an unquoted input comes back exactly as given.
String RemoveQuotesFromString(const String& InputString, VBool TrimInput = VBool::True,
                              VBool TrimInsideQuotes = VBool::False);
String AddQuotesToPath(const String& InputString);
String RemoveQuotesFromPath(const String& InputString);

std::int32_t StringCount(const String& StringToSearch, const String& StringToCount);
String ReplaceMultipleSpaces(const String& text);
// A zero-based String array in a Variant; NumWords (when given) receives the element count.
Variant SplitOnSpaces(const String& text, std::int32_t* NumWords = nullptr,
                      VBool TrimFirst = VBool::True);
std::int32_t LenTrim(const String& CharString);
// Bytes of the text in the system's ANSI code page.
std::int32_t LenB_ANSI(const String& CharString);
void CorrectDLLStringForDBCS(String& ToCorrect);

// True when value breaks the rule given by BannedChars (a character list, "allowed:" ranges or
// "equals:" text). Raises the library error for an empty list or, when replacing, for more
// replacement than banned characters.
VBool bStringContainsBannedChars(String& value, const String& BannedChars,
                                 VBool Replace = VBool::False, const String& ReplacementChars = {},
                                 String* Info = nullptr);
// True when every character's ANSI code lies in one of up to five "low,high" ranges.
VBool bStringContainsAllowedChars(const String& value, const String& AllowedAsciiRanges,
                                  String* Info = nullptr);

VBool bStrComp(const String& String1, const String& String2, VBool CaseSensitive = VBool::False,
               VBool TrimWords = VBool::True);
VBool bStringInArray(const String& Find, const Variant& vArray, std::int32_t* Index = nullptr,
                     VBool CaseSensitive = VBool::False, VBool TrimWords = VBool::True);
VBool bIsInCollection(const std::shared_ptr<Collection>& col, const String& Key,
                      VBool TrimKey = VBool::True);
// False for a non-array, a never-dimensioned array and, with bCheckBounds, an array of no
// elements.
VBool IsArrayInitialised(const Variant& vArray, VBool bCheckBounds = VBool::True);

// DefaultUsed (when given) is set true exactly when the text was no keyword and bDefault came
// back.
VBool bStringToBoolean(const String& sValue, VBool bDefault = VBool::False,
                       VBool* DefaultUsed = nullptr);
String sBooleanToString(VBool bValue);

// The first greatest (least) element by the variant ordering.
Variant Maximum_Worker(const SafeArray& Vals);
Variant Minimum_Worker(const SafeArray& Vals);

}  // namespace orvo::text
