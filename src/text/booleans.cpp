#include <string_view>

#include "runtime/strings.hpp"
#include "text/strings.hpp"

namespace orvo::text {

namespace {

using runtime::UCase;

}  // namespace

VBool bStringToBoolean(const String& sValue, VBool bDefault, VBool* DefaultUsed) {
  static constexpr std::u16string_view kTrue[] = {u"YES", u"Y", u"TRUE", u"T", u"ON", u"1", u"-1"};
  static constexpr std::u16string_view kFalse[] = {u"NO", u"N", u"FALSE", u"F", u"OFF", u"0"};
  const String key = UCase(runtime::trimView(sValue));
  if (DefaultUsed != nullptr) *DefaultUsed = VBool::False;
  for (const auto word : kTrue) {
    if (key == word) return VBool::True;
  }
  for (const auto word : kFalse) {
    if (key == word) return VBool::False;
  }
  if (DefaultUsed != nullptr) *DefaultUsed = VBool::True;
  return bDefault;
}

String sBooleanToString(VBool bValue) {
  // Only the two canonical values have names; a stray 1 is not "True".
  if (bValue == VBool::True) return u"True";
  if (bValue == VBool::False) return u"False";
  return {};
}

}  // namespace orvo::text
