#include "runtime/errors.hpp"

#include <algorithm>
#include <array>
#include <utility>

namespace orvo::runtime {

namespace {

// The language's standard run-time error texts, as its users have seen them for decades.
constexpr std::array<std::pair<std::int32_t, std::u16string_view>, 65> kTexts{{
    {3, u"Return without GoSub"},
    {5, u"Invalid procedure call or argument"},
    {6, u"Overflow"},
    {7, u"Out of memory"},
    {9, u"Subscript out of range"},
    {10, u"This array is fixed or temporarily locked"},
    {11, u"Division by zero"},
    {13, u"Type mismatch"},
    {14, u"Out of string space"},
    {16, u"Expression too complex"},
    {17, u"Can't perform requested operation"},
    {18, u"User interrupt occurred"},
    {20, u"Resume without error"},
    {28, u"Out of stack space"},
    {35, u"Sub or Function not defined"},
    {47, u"Too many DLL application clients"},
    {48, u"Error in loading DLL"},
    {49, u"Bad DLL calling convention"},
    {51, u"Internal error"},
    {52, u"Bad file name or number"},
    {53, u"File not found"},
    {54, u"Bad file mode"},
    {55, u"File already open"},
    {57, u"Device I/O error"},
    {58, u"File already exists"},
    {59, u"Bad record length"},
    {61, u"Disk full"},
    {62, u"Input past end of file"},
    {63, u"Bad record number"},
    {67, u"Too many files"},
    {68, u"Device unavailable"},
    {70, u"Permission denied"},
    {71, u"Disk not ready"},
    {74, u"Can't rename with different drive"},
    {75, u"Path/File access error"},
    {76, u"Path not found"},
    {91, u"Object variable or With block variable not set"},
    {92, u"For loop not initialized"},
    {93, u"Invalid pattern string"},
    {94, u"Invalid use of Null"},
    {97, u"Can not call friend function on object which is not an instance of defining class"},
    {98,
     u"A property or method call cannot include a reference to a private object, either as "
     u"an argument or as a return value"},
    {321, u"Invalid file format"},
    {322, u"Can't create necessary temporary file"},
    {325, u"Invalid format in resource file"},
    {380, u"Invalid property value"},
    {381, u"Invalid property array index"},
    {423, u"Property or method not found"},
    {424, u"Object required"},
    {429, u"ActiveX component can't create object"},
    {430, u"Class does not support Automation or does not support expected interface"},
    {432, u"File name or class name not found during Automation operation"},
    {438, u"Object doesn't support this property or method"},
    {440, u"Automation error"},
    {445, u"Object doesn't support this action"},
    {446, u"Object doesn't support named arguments"},
    {447, u"Object doesn't support current locale setting"},
    {448, u"Named argument not found"},
    {449, u"Argument not optional"},
    {450, u"Wrong number of arguments or invalid property assignment"},
    {451,
     u"Property let procedure not defined and property get procedure did not return an "
     u"object"},
    {457, u"This key is already associated with an element of this collection"},
    {462, u"The remote server machine does not exist or is unavailable"},
    {482, u"Printer error"},
    {521, u"Can't open Clipboard"},
}};

constexpr std::u16string_view kDefaultText = u"Application-defined or object-defined error";

const std::u16string_view* lookup(std::int32_t number) noexcept {
  const auto* it =
      std::lower_bound(kTexts.begin(), kTexts.end(), number,
                       [](const auto& entry, std::int32_t n) { return entry.first < n; });
  return it != kTexts.end() && it->first == number ? &it->second : nullptr;
}

}  // namespace

std::u16string_view standardErrorText(std::int32_t number) noexcept {
  const auto* text = lookup(number);
  return text != nullptr ? *text : kDefaultText;
}

bool hasStandardText(std::int32_t number) noexcept { return lookup(number) != nullptr; }

void raise(std::int32_t number) { throw Error(number, String(standardErrorText(number))); }

}  // namespace orvo::runtime
