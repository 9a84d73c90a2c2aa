// ExpandString_Worker with a template and a few arguments taken from the input. The pieces are
// separated by U+0000; an argument's first unit may pick a non-text value. Arguments are kept
// short because substituted text is searched again for lower placeholders, so long arguments
// full of placeholders grow the result geometrically, which is the documented behaviour and not
// what this target looks for.
#include <cstddef>
#include <cstdint>
#include <vector>

#include "fuzz_input.hpp"
#include "orvogeneric/error.hpp"
#include "orvogeneric/variant.hpp"
#include "text/strings.hpp"

namespace {

constexpr std::size_t kMaxArguments = 13;
constexpr std::size_t kMaxArgumentLength = 6;

orvo::Variant argumentFrom(const orvo::String& piece) {
  using orvo::Variant;
  if (piece.empty()) return Variant(piece);
  switch (piece[0]) {
    case 1:
      return Variant(orvo::Null{});
    case 2:
      return Variant(
          static_cast<double>(static_cast<std::int16_t>(piece.size() > 1 ? piece[1] : 0)) / 8.0);
    case 3:
      return Variant(orvo::VBool::True);
    case 4:
      return Variant(orvo::SafeArray());
    default:
      return Variant(piece.substr(0, kMaxArgumentLength));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 1) return 0;
  orvo::fuzz::chooseLocale(data[0]);
  const orvo::String units = orvo::fuzz::unitsOf(data + 1, size - 1);
  std::vector<orvo::String> pieces;
  std::size_t start = 0;
  while (true) {
    const auto end = units.find(u'\0', start);
    pieces.push_back(units.substr(start, end == orvo::String::npos ? end : end - start));
    if (end == orvo::String::npos) break;
    start = end + 1;
  }
  std::vector<orvo::Variant> args;
  for (std::size_t i = 1; i < pieces.size() && args.size() < kMaxArguments; ++i) {
    args.push_back(argumentFrom(pieces[i]));
  }
  const auto lowerBound = static_cast<std::int32_t>(static_cast<std::int8_t>(data[0])) * 1000;
  try {
    const orvo::SafeArray array(orvo::VarType::Variant, lowerBound, args);
    (void)orvo::text::ExpandString_Worker(pieces[0], array);
    (void)orvo::text::ExpandString_Worker(pieces[0], orvo::Variant(pieces[0]));
  } catch (const orvo::Error&) {
  }
  return 0;
}
