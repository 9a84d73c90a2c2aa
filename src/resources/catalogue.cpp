#include "resources/catalogue.hpp"

#include <algorithm>
#include <array>
#include <string>
#include <utility>
#include <vector>

#include "orvogeneric/error.hpp"
#include "runtime/errors.hpp"
#include "runtime/strings.hpp"
#include "text/strings.hpp"

namespace orvo::resources {

namespace {

struct Message {
  std::int32_t number;
  std::u16string_view text;
};

// Ascending by number. The spelling is the library's own, odd spots included ("sAppINIFIle", two
// blanks before "in"): hosts and their users' scripts match these texts.
constexpr std::array<Message, 33> kCatalogue{{
    {101, u"Not a valid number"},
    {102, u"Number too large"},
    {103,
     u"You have entered a number%0below the allowed minimum%0%0Input Value%1%2%0Limiting "
     u"Value%1%3"},
    {104,
     u"You have entered a number%0above the allowed maximum%0%0Input Value%1%2%0Limiting "
     u"Value%1%3"},
    {105, u"Invalid character"},
    {201, u"Error"},
    {202, u"OK"},
    {203, u"&System Info..."},
    {204, u"&Copy"},
    {205, u"&Print..."},
    {206, u"&Email"},
    {207, u"An unexpected error has occurred."},
    {208, u"Details"},
    {210, u"&Less <<"},
    {211, u"&More >>"},
    {301, u"A fatal error has occurred"},
    {302, u"Application name invalid - cannot be '%0'"},
    {303, u"Cannot locate language support file '%0'"},
    {304, u"Cannot load language support file '%0'"},
    {314, u"Minimum must be a blank string or a number, not '%0'"},
    {315, u"Maximum must be a blank string or a number, not '%0'"},
    {316, u"Minimum cannot be greater than maximum"},
    {317, u"Directory '%0' does not exist"},
    {318, u"Illegal value for input type"},
    {319, u"Expected a form not a '%0'"},
    {320, u"Section cannot be blank - cannot access setting"},
    {321, u"Key cannot be blank - cannot access setting"},
    {322, u"Attempted to load resource with illegal number (%0)"},
    {323, u"Internal error - unhandled registry key value type: '%0'"},
    {324, u"No resource DLL filename stub has been given"},
    {325, u"No string located for resource number %0  in %1"},
    {326, u"Unexpected error (sAppINIFIle): failed to write to the INI file%0%1"},
    {0, u""},  // sentinel, never found: keeps the table's size honest when a message is added
}};

constexpr bool ascending() {
  for (std::size_t i = 1; i + 1 < kCatalogue.size(); ++i) {
    if (kCatalogue[i - 1].number >= kCatalogue[i].number) return false;
  }
  return true;
}
static_assert(ascending(), "the catalogue is searched by halves");

}  // namespace

String LibraryString(std::int32_t number) {
  const auto end = kCatalogue.end() - 1;
  const auto it = std::lower_bound(kCatalogue.begin(), end, number,
                                   [](const Message& m, std::int32_t n) { return m.number < n; });
  if (it == end || it->number != number) {
    throw Error(runtime::errResourceNotFound,
                u"Resource with identifier '" + runtime::DecimalText(number) + u"' not found");
  }
  return String(it->text);
}

String LibraryMessage(std::int32_t number, const SafeArray& arguments) {
  return text::ExpandString_Worker(LibraryString(number), arguments);
}

String LibraryMessage(std::int32_t number, std::initializer_list<Variant> arguments) {
  return LibraryMessage(number, SafeArray(VarType::Variant, 0, std::vector<Variant>(arguments)));
}

}  // namespace orvo::resources
