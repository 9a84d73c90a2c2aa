#include "runtime/strings.hpp"
#include "text/strings.hpp"

namespace orvo::text {

namespace {

using runtime::Trim;
using runtime::UCase;

}  // namespace

VBool bStrComp(const String& String1, const String& String2, VBool CaseSensitive, VBool TrimWords) {
  String a = nonZero(TrimWords) ? Trim(String1) : String1;
  String b = nonZero(TrimWords) ? Trim(String2) : String2;
  if (!nonZero(CaseSensitive)) {
    a = UCase(a);
    b = UCase(b);
  }
  return toVBool(a == b);
}

}  // namespace orvo::text
