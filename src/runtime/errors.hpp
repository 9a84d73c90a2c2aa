#pragma once

#include <cstdint>
#include <string_view>

#include "orvogeneric/error.hpp"

namespace orvo::runtime {

// The run-time error numbers (orvo::ErrorNumber) are public; the language's own code names them
// here as well.
using orvo::ErrorNumber;
using enum orvo::ErrorNumber;

// The standard text of a run-time error number; numbers without one get
// "Application-defined or object-defined error", as the language reports them.
std::u16string_view standardErrorText(std::int32_t number) noexcept;
bool hasStandardText(std::int32_t number) noexcept;

// Raises the numbered run-time error with its standard text and no source.
[[noreturn]] void raise(std::int32_t number);

}  // namespace orvo::runtime
