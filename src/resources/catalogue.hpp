#pragma once

#include <cstdint>
#include <initializer_list>

#include "orvogeneric/types.hpp"
#include "orvogeneric/variant.hpp"

// The library's own messages, by number: compiled in, never translated, never read from a
// satellite. Placeholders "%0", "%1", ... are filled by ExpandString's rules.
namespace orvo::resources {

// The text of a message as it stands; a number the catalogue does not hold raises run-time error
// 326, as loading an absent resource from the library's own table does.
String LibraryString(std::int32_t number);

// LibraryString of number with its placeholders filled from arguments.
String LibraryMessage(std::int32_t number, const SafeArray& arguments);
String LibraryMessage(std::int32_t number, std::initializer_list<Variant> arguments);

}  // namespace orvo::resources
