#include "orvogeneric/classes.hpp"
#include "text/maths.hpp"

namespace orvo {

std::int32_t MathsUtilities::RoundUp(double value) { return text::RoundUp(value); }

VBool MathsUtilities::IsEqualDouble(double Double1, double Double2, std::int32_t NumSigFigs) {
  return text::bEqualDouble(Double1, Double2, NumSigFigs);
}

double MathsUtilities::Log10(double Number) { return text::Log10(Number); }

double MathsUtilities::RoundToNumSigFigs(double value, std::int32_t NumSigFigs) {
  return text::dSigFigs(value, NumSigFigs);
}

VBool MathsUtilities::IsEven(Currency value) { return text::IsEven(value); }

VBool MathsUtilities::IsIntegerInArray(std::int16_t Find, Variant& vArray, std::int32_t* Index,
                                       VBool Forwards) {
  return text::bIntegerInArray(Find, vArray, Index, Forwards);
}

VBool MathsUtilities::IsLongInArray(std::int32_t Find, Variant& vArray, std::int32_t* Index,
                                    VBool Forwards) {
  return text::bLongInArray(Find, vArray, Index, Forwards);
}

}  // namespace orvo
