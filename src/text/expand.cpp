#include <vector>

#include "frame/traps.hpp"
#include "platform/locale.hpp"
#include "runtime/convert.hpp"
#include "runtime/strings.hpp"
#include "text/strings.hpp"

namespace orvo::text {

namespace {

String expandWith(const String& Template, const std::vector<String>& texts) {
  String result = Template;
  for (std::size_t k = texts.size(); k-- > 0;) {
    result = runtime::Replace(result, u"%" + runtime::DecimalText(static_cast<std::int64_t>(k)),
                              texts[k]);
  }
  return result;
}

// The text of one argument, or "" when the value has none: the conversion runs with its errors
// suppressed, as the callers pass whatever they hold.
String argumentText(const Variant& value, const platform::RegionalSettings& rs) {
  try {
    return runtime::CStr(value, rs);
  } catch (const Error&) {
    return {};
  }
}

}  // namespace

String ExpandString_Worker(const String& Template, const SafeArray& Arguments) {
  return frame::trap(u"ExpandString_Worker", [&] {
    const std::int32_t lower = Arguments.lowerBound();
    const std::int32_t upper = Arguments.upperBound();
    const auto rs = platform::userRegionalSettings();
    std::vector<String> texts;
    if (upper >= lower) texts.reserve(static_cast<std::size_t>(upper - lower) + 1);
    for (std::int64_t i = lower; i <= upper; ++i) {
      texts.push_back(argumentText(Arguments.get(static_cast<std::int32_t>(i)), *rs));
    }
    return expandWith(Template, texts);
  });
}

String ExpandString_Worker(const String& Template, const Variant& Arguments) {
  if (const SafeArray* array = Arguments.array()) return ExpandString_Worker(Template, *array);
  return expandWith(Template, {String()});
}

}  // namespace orvo::text
