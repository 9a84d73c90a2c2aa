#pragma once

#include <cctype>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "frame/state.hpp"
#include "orvogeneric/types.hpp"

namespace orvo::fuzz {

// Raw bytes as UTF-16 code units, little-endian pairs: any unit sequence is reachable, unpaired
// surrogates and nulls included. An odd last byte is dropped.
inline String unitsOf(const std::uint8_t* data, std::size_t size) {
  String out;
  out.reserve(size / 2);
  for (std::size_t i = 0; i + 1 < size; i += 2) {
    out.push_back(static_cast<char16_t>(data[i] | (data[i + 1] << 8)));
  }
  return out;
}

// Switches the regional settings between a few locales that differ in their separators and code
// pages, changing the environment only when the choice changes.
inline void chooseLocale(std::uint8_t selector) {
  static const char* const kLocales[] = {"en_US.UTF-8", "de_DE.UTF-8", "fr_FR.UTF-8",
                                         "ja_JP.UTF-8"};
  static int current = -1;
  const int wanted = selector % 4;
  if (wanted == current) return;
  current = wanted;
  ::setenv("LC_ALL", kLocales[wanted], 1);
  frame::StaticGlobals::instance().setDecimalSeparatorCache({});
}

// Members that write, copy or delete files take whatever path the input names; they are left
// to their own tests rather than let loose on the machine's files.
inline bool touchesFiles(std::string_view input) {
  std::string lower(input);
  for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return lower.find("filesubs") != std::string::npos;
}

}  // namespace orvo::fuzz
