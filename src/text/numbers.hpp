#pragma once

#include <cstdint>

#include "orvogeneric/variant.hpp"

// Regional and fixed ("FORTRAN") number text, and parsing built on them.
namespace orvo::text {

String DPDelimiter();
String FormatNumToRegion(const Variant& Expression, const String& FormatStr = {});
String FormatNumToFORTRAN(const Variant& Expression, const String& FormatStr = {});
double ValDbl(const Variant& Expression);
std::int16_t ValInt(const Variant& Expression);
std::int32_t ValLng(const Variant& Expression);
float ValSng(const Variant& Expression);
String TrimStr(double Number);

}  // namespace orvo::text
