#pragma once

#include <string_view>
#include <vector>

#include "orvogeneric/types.hpp"
#include "platform/locale.hpp"
#include "runtime/decimal.hpp"

// The three engines behind Format: number patterns, date patterns and text patterns.
namespace orvo::runtime::detail {

// Splits a pattern at the ";" that are not quoted or escaped.
std::vector<std::u16string_view> splitSections(std::u16string_view pattern);

enum class PatternKind { Number, Date, Text };
PatternKind classifyPattern(std::u16string_view pattern);

// A number to format. An Empty value has no digits at all: its integer placeholders print
// nothing, while "0" placeholders after the point still print zeros (".00").
struct FormatNumber {
  Decimal value;
  bool empty = false;
};
String formatNumberPattern(const FormatNumber& number, std::u16string_view pattern,
                           const platform::RegionalSettings& rs);

String formatDatePattern(double serial, std::u16string_view pattern,
                         const platform::RegionalSettings& rs);

// "@", "&", "<", ">", "!" patterns applied to text; `text` empty selects the second section.
String formatTextPattern(std::u16string_view text, std::u16string_view pattern);

}  // namespace orvo::runtime::detail
