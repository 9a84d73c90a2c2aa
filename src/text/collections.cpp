#include <limits>

#include "frame/traps.hpp"
#include "platform/locale.hpp"
#include "runtime/convert.hpp"
#include "runtime/errors.hpp"
#include "runtime/strings.hpp"
#include "text/strings.hpp"

namespace orvo::text {

namespace {

using runtime::Trim;

// The procedures count with the language's typed loop counters: the bounds are converted to the
// counter's type up front and the step past the last index is itself an addition that can
// overflow, so an array ending at the counter type's maximum fails after its last element.
// body returns true to leave the loop early.
template <class Counter, class Body>
void countedLoop(std::int64_t first, std::int64_t last, Body&& body) {
  constexpr std::int64_t lo = std::numeric_limits<Counter>::min();
  constexpr std::int64_t hi = std::numeric_limits<Counter>::max();
  if (first < lo || first > hi || last < lo || last > hi) runtime::raise(runtime::errOverflow);
  for (std::int64_t i = first; i <= last; ++i) {
    if (body(static_cast<Counter>(i))) return;
    if (i == hi) runtime::raise(runtime::errOverflow);
  }
}

template <class Better>
Variant extremeOf(const SafeArray& Vals, Better better) {
  const auto rs = platform::userRegionalSettings();
  const std::int32_t lower = Vals.lowerBound();
  Variant result = Vals.get(lower);
  countedLoop<std::int16_t>(static_cast<std::int64_t>(lower) + 1, Vals.upperBound(),
                            [&](std::int16_t i) {
                              const Variant candidate = Vals.get(i);
                              // A comparison with Null is Null, which an If takes as false: the
                              // running result stays.
                              if (!candidate.isNull() && !result.isNull() &&
                                  better(runtime::compareVariants(candidate, result, *rs))) {
                                result = candidate;
                              }
                              return false;
                            });
  return result;
}

}  // namespace

VBool IsArrayInitialised(const Variant& vArray, VBool bCheckBounds) {
  return frame::trap(u"IsArrayInitialised", [&]() -> VBool {
    const SafeArray* array = vArray.array();
    if (array == nullptr) return VBool::False;
    // A dynamic array that was never dimensioned has no bounds at all (asking is error 9); that
    // is the uninitialised case, different from bounds 0 to -1.
    if (!array->dimensioned()) return VBool::False;
    if (nonZero(bCheckBounds) && array->upperBound() < array->lowerBound()) return VBool::False;
    return VBool::True;
  });
}

VBool bStringInArray(const String& Find, const Variant& vArray, std::int32_t* Index,
                     VBool CaseSensitive, VBool TrimWords) {
  return frame::trap(u"bStringInArray", [&]() -> VBool {
    if (!nonZero(IsArrayInitialised(vArray, VBool::True))) return VBool::False;
    const SafeArray& items = *vArray.array();
    const auto rs = platform::userRegionalSettings();
    VBool found = VBool::False;
    countedLoop<std::int32_t>(items.lowerBound(), items.upperBound(), [&](std::int32_t i) {
      if (nonZero(bStrComp(Find, runtime::CStr(items.get(i), *rs), CaseSensitive, TrimWords))) {
        if (Index != nullptr) *Index = i;
        found = VBool::True;
        return true;
      }
      return false;
    });
    return found;
  });
}

VBool bIsInCollection(const std::shared_ptr<Collection>& col, const String& Key, VBool TrimKey) {
  if (!col) return VBool::False;
  // The collection reports a missing key as error 5; any other failure of the lookup still
  // means the key is there.
  try {
    (void)col->Item(nonZero(TrimKey) ? Trim(Key) : Key);
  } catch (const Error& e) {
    return toVBool(e.number() != runtime::errInvalidProcedureCall);
  }
  return VBool::True;
}

Variant Maximum_Worker(const SafeArray& Vals) {
  return frame::trap(u"Maximum_Worker",
                     [&] { return extremeOf(Vals, [](int c) { return c > 0; }); });
}

Variant Minimum_Worker(const SafeArray& Vals) {
  return frame::trap(u"Minimum_Worker",
                     [&] { return extremeOf(Vals, [](int c) { return c < 0; }); });
}

}  // namespace orvo::text
