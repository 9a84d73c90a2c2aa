#pragma once

#include <cstdint>
#include <string_view>

#include "frame/state.hpp"
#include "orvogeneric/types.hpp"

// The lists of installed locales and their ANSI code pages, built once by the start-up
// procedure and answered from by the locale queries.
namespace orvo::system {

// Creates the six lists and fills them, unless they are built already.
void InitialiseLCIDCodePageLists();

// Both platform enumerations into the installed and supported lists.
void InitialiseLCIDs(frame::LocaleLists& lists);

// One locale into the code-page lists.
void InitialiseLCIDCodePageLists_Worker(frame::LocaleLists& lists, std::int32_t LCID);

// The enumeration callbacks: the platform passes each locale as hexadecimal text. They
// always ask for the enumeration to go on.
bool EnumSystemLocalesProcInstalled(frame::LocaleLists& lists, std::string_view lpLocaleString);
bool EnumSystemLocalesProcSupported(frame::LocaleLists& lists, std::string_view lpLocaleString);

// Six new empty lists.
frame::LocaleLists newLocaleLists();

// The key of a number in the lists: its decimal text as TrimStr writes it.
String numberKey(std::int32_t n);

}  // namespace orvo::system
