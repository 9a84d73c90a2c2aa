#include "text/numbers.hpp"

#include "frame/state.hpp"
#include "frame/traps.hpp"
#include "platform/locale.hpp"
#include "runtime/convert.hpp"
#include "runtime/format.hpp"
#include "runtime/numbers.hpp"
#include "runtime/strings.hpp"

namespace orvo::text {

String DPDelimiter() {
  auto& globals = frame::StaticGlobals::instance();
  String cached = globals.decimalSeparatorCache();
  if (cached.empty()) {
    // Only the second character of "1.0" is kept, so a longer regional separator is cut to
    // its first character; the value is then fixed for the life of the process.
    const String one =
        runtime::Format(Variant(std::int16_t{1}), u"0.0", *platform::userRegionalSettings());
    cached = runtime::Mid(one, 2, 1);
    globals.setDecimalSeparatorCache(cached);
  }
  return cached;
}

String FormatNumToRegion(const Variant& Expression, const String& FormatStr) {
  return frame::trap(u"FormatNumToRegion", [&] {
    const String dp = DPDelimiter();
    const auto rs = platform::userRegionalSettings();
    // Fixed-form text ("2.5") becomes regional text here; a number already is regional.
    const String text = runtime::Replace(runtime::CStr(Expression, *rs), u".", dp);
    return runtime::Format(Variant(text), FormatStr, *rs);
  });
}

String FormatNumToFORTRAN(const Variant& Expression, const String& FormatStr) {
  return frame::trap(u"FormatNumToFORTRAN", [&] {
    // Only the decimal separator is exchanged: grouping marks a pattern asked for stay in
    // their regional form, so "#,##0.00" in a "," region gives two "." characters.
    return runtime::Replace(FormatNumToRegion(Expression, FormatStr), DPDelimiter(), u".");
  });
}

double ValDbl(const Variant& Expression) {
  return frame::trap(u"ValDbl",
                     [&] { return runtime::Val(FormatNumToFORTRAN(Expression, String())); });
}

std::int16_t ValInt(const Variant& Expression) {
  return frame::trap(u"ValInt", [&] { return runtime::CInt(ValDbl(Expression)); });
}

std::int32_t ValLng(const Variant& Expression) {
  return frame::trap(u"ValLng", [&] { return runtime::CLng(ValDbl(Expression)); });
}

float ValSng(const Variant& Expression) {
  return frame::trap(u"ValSng", [&] { return runtime::CSng(ValDbl(Expression)); });
}

String TrimStr(double Number) {
  // The conversion puts a blank before non-negative numbers; trimming removes it, and the
  // decimal point is always ".".
  return frame::trap(u"TrimStr",
                     [&] { return runtime::Trim(runtime::doubleToText(Number, u".")); });
}

}  // namespace orvo::text
