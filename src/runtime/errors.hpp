#pragma once

#include <cstdint>
#include <string_view>

#include "orvogeneric/error.hpp"

namespace orvo::runtime {

// The run-time error numbers that the applications' language raises for its own faults.
enum ErrorNumber : std::int32_t {
  errInvalidProcedureCall = 5,
  errOverflow = 6,
  errOutOfMemory = 7,
  errSubscriptOutOfRange = 9,
  errDivisionByZero = 11,
  errTypeMismatch = 13,
  errInternalError = 51,
  errBadFileNameOrNumber = 52,
  errFileNotFound = 53,
  errBadFileMode = 54,
  errFileAlreadyExists = 58,
  errInputPastEndOfFile = 62,
  errPermissionDenied = 70,
  errPathFileAccess = 75,
  errPathNotFound = 76,
  errObjectNotSet = 91,
  errInvalidUseOfNull = 94,
  errResourceNotFound = 326,
  errObjectRequired = 424,
  errCantCreateObject = 429,
  errNoSuchMember = 438,
  errNamedArgumentNotFound = 448,
  errArgumentNotOptional = 449,
  errWrongNumberOfArguments = 450,
  errDuplicateKey = 457,
};

// The standard text of a run-time error number; numbers without one get
// "Application-defined or object-defined error", as the language reports them.
std::u16string_view standardErrorText(std::int32_t number) noexcept;
bool hasStandardText(std::int32_t number) noexcept;

// Raises the numbered run-time error with its standard text and no source.
[[noreturn]] void raise(std::int32_t number);

}  // namespace orvo::runtime
