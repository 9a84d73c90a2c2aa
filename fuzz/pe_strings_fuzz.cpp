// The satellite string-table reader on any bytes: a table or a reason, never a crash or a read
// past the input; a table is ordered, free of duplicates and empty strings, no bigger than the
// input could hold, and every listed string is found again by its language and id. The loader's
// choice of language then gives, for every listed id, a string of that id in some language of
// the table, cut to the buffer.
#include <cstddef>
#include <cstdint>
#include <span>

#include "resources/pe_strings.hpp"
#include "resources/satellite_loader.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace orvo::resources;
  const auto result = readPeStrings(std::span(data, size));
  if (!result) {
    if (result.detail.empty()) __builtin_trap();
    return 0;
  }
  const StringTable& table = *result.table;
  std::size_t units = 0;
  const StringTable::Entry* previous = nullptr;
  for (const auto& e : table.entries()) {
    if (e.length == 0) __builtin_trap();
    if (previous != nullptr && (previous->language > e.language ||
                                (previous->language == e.language && previous->id >= e.id))) {
      __builtin_trap();
    }
    const auto found = table.find(e.language, e.id);
    if (!found || found->data() != table.text(e).data() || found->size() != e.length) {
      __builtin_trap();
    }
    units += e.length;
    previous = &e;
  }
  if (units > size / 2) __builtin_trap();
  std::size_t listed = 0;
  for (const std::uint16_t language : table.languages()) listed += table.strings(language).size();
  if (listed != table.entries().size()) __builtin_trap();

  Satellite satellite{table, table.languages()};
  for (const auto& e : table.entries()) {
    const auto text = loadSatelliteString(satellite, e.id, 8);
    if (!text) continue;  // the chosen language has the block but not this id
    if (text->empty() || text->size() > 7) __builtin_trap();
    bool inSomeLanguage = false;
    for (const std::uint16_t language : satellite.languages) {
      const auto candidate = table.find(language, e.id);
      inSomeLanguage |= candidate && candidate->substr(0, 7) == *text;
    }
    if (!inSomeLanguage) __builtin_trap();
  }
  return 0;
}
