#include "text/maths.hpp"

#include <cmath>
#include <limits>

#include "frame/traps.hpp"
#include "platform/locale.hpp"
#include "runtime/convert.hpp"
#include "runtime/errors.hpp"
#include "runtime/numbers.hpp"
#include "text/strings.hpp"

namespace orvo::text {

namespace {

// Not the full-precision ln 10: results such as Log10(1000) depend on this very constant and
// on the rounding to 12 decimals that follows.
constexpr double kLn10 = 2.30258509299405;

// The language checked every floating-point operation and turned an infinite or undefined
// result into a run-time error instead of carrying it on.
double checked(double result) {
  if (!std::isfinite(result)) runtime::raise(runtime::errOverflow);
  return result;
}

double powerOfTen(std::int32_t exponent) { return checked(std::pow(10.0, exponent)); }

template <class Number>
VBool numberInArray(Number Find, const Variant& vArray, std::int32_t* Index, VBool Forwards) {
  if (!vArray.isArray()) frame::RaiseLibraryError(u"Must pass an array in vArray.");
  if (!nonZero(IsArrayInitialised(vArray, VBool::True))) return VBool::False;
  const SafeArray& items = *vArray.array();
  const auto rs = platform::userRegionalSettings();
  const Variant find(Find);
  const std::int64_t lower = items.lowerBound();
  const std::int64_t upper = items.upperBound();
  constexpr std::int64_t kLongMax = std::numeric_limits<std::int32_t>::max();

  // Both directions count upwards with a Long counter. The backward search starts at the upper
  // bound and runs while the counter is not above the lower bound, so it only ever looks at an
  // array of one element; callers have always seen it so, and it is kept.
  const std::int64_t first = nonZero(Forwards) ? lower : upper;
  const std::int64_t last = nonZero(Forwards) ? upper : lower;
  for (std::int64_t i = first; i <= last; ++i) {
    const Variant element = items.get(static_cast<std::int32_t>(i));
    // Null compares as Null, which is not a match.
    if (!element.isNull() && runtime::compareVariants(element, find, *rs) == 0) {
      if (Index != nullptr) *Index = static_cast<std::int32_t>(i);
      return VBool::True;
    }
    if (i == kLongMax) runtime::raise(runtime::errOverflow);
  }
  return VBool::False;
}

}  // namespace

std::int32_t RoundUp(double value) {
  return frame::trap(u"RoundUp", [&] { return runtime::CLng(checked(-std::floor(-value))); });
}

VBool bEqualDouble(double Double1, double Double2, std::int32_t NumSigFigs) {
  return frame::trap(u"bEqualDouble", [&] {
    // Rounding to 14 figures first is what makes 0.1 + 0.2 equal to 0.3; the second rounding
    // works on that result, not on the original value, and can differ from a single rounding.
    const double a = dSigFigs(dSigFigs(Double1, 14), NumSigFigs);
    const double b = dSigFigs(dSigFigs(Double2, 14), NumSigFigs);
    return toVBool(a == b);
  });
}

double Log10(double Number) {
  return frame::trap(u"Log10", [&] {
    if (Number == 0) frame::RaiseLibraryError(u"Cannot take the log of zero.");
    // The natural logarithm's own complaint about its argument.
    if (!(Number > 0)) runtime::raise(runtime::errInvalidProcedureCall);
    return runtime::RoundHalfEven(checked(std::log(Number) / kLn10), 12);
  });
}

double dSigFigs(double value, std::int32_t NumSigFigs) {
  return frame::trap(u"dSigFigs", [&] {
    if (NumSigFigs > 14) frame::RaiseLibraryError(u"Maximum number of valid sig figs is 14");
    if (NumSigFigs < 1) frame::RaiseLibraryError(u"Minimum number of valid sig figs is 1");
    if (value == 0) return 0.0;
    const std::int16_t magnitude = runtime::CInt(std::floor(Log10(std::fabs(value))));
    const std::int32_t shift = NumSigFigs - 1 - magnitude;
    const double scaled = runtime::RoundHalfEven(checked(value * powerOfTen(shift)), 0);
    return checked(scaled * powerOfTen(magnitude - (NumSigFigs - 1)));
  });
}

VBool IsEven(Currency value) {
  return frame::trap(u"IsEven", [&] {
    // Rounded in exact fixed point: going through a double could move a half.
    std::int64_t whole = value.scaled / Currency::scale;
    const std::int64_t rest = value.scaled % Currency::scale;
    const std::int64_t twice = 2 * (rest < 0 ? -rest : rest);
    const std::int64_t away = rest < 0 ? -1 : 1;
    if (twice > Currency::scale || (twice == Currency::scale && whole % 2 != 0)) whole += away;
    if (whole < std::numeric_limits<std::int32_t>::min() ||
        whole > std::numeric_limits<std::int32_t>::max()) {
      runtime::raise(runtime::errOverflow);
    }
    return toVBool(whole % 2 == 0);
  });
}

VBool bIntegerInArray(std::int16_t Find, const Variant& vArray, std::int32_t* Index,
                      VBool Forwards) {
  return frame::trap(u"bIntegerInArray",
                     [&] { return numberInArray(Find, vArray, Index, Forwards); });
}

VBool bLongInArray(std::int32_t Find, const Variant& vArray, std::int32_t* Index, VBool Forwards) {
  return frame::trap(u"bLongInArray", [&] { return numberInArray(Find, vArray, Index, Forwards); });
}

}  // namespace orvo::text
