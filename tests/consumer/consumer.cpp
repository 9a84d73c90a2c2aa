// Built against an installed prefix: proves the exported package and headers are complete.
#include <cstdio>
#include <orvogeneric/automation.hpp>
#include <orvogeneric/classes.hpp>
#include <orvogeneric/error.hpp>

int main() {
  orvo::StringUtilities strings;
  orvo::SafeArray args(orvo::VarType::Variant, 0, {orvo::Variant(u"a"), orvo::Variant(u"b")});
  const orvo::String expanded = strings.ExpandString(u"%1 of %0", args);
  orvo::MathsUtilities maths;
  try {
    maths.RoundToNumSigFigs(1, 15);
    return 1;
  } catch (const orvo::Error& e) {
    if (e.number() != orvo::kLibraryErrorNumber) return 1;
  }
  const auto call = orvo::automation::invoke(
      strings, "ExpandString",
      {orvo::Variant(u"x%0y"), orvo::Variant::array({orvo::Variant(u"-")})});
  std::printf("%s %s\n", orvo::toUtf8(expanded).c_str(),
              orvo::toUtf8(*call.result.get<orvo::String>()).c_str());
  return expanded == u"b of a" && *call.result.get<orvo::String>() == u"x-y" ? 0 : 1;
}
