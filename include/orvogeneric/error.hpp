#pragma once

#include <cstdint>
#include <exception>
#include <string>

#include "orvogeneric/export.hpp"
#include "orvogeneric/types.hpp"

namespace orvo {

// The one exception type of the library: what an automation caller sees as Err.Number,
// Err.Description and Err.Source.
class ORVO_API Error : public std::exception {
 public:
  Error(std::int32_t number, String description, String source = {});

  [[nodiscard]] std::int32_t number() const noexcept { return number_; }
  [[nodiscard]] const String& description() const noexcept { return description_; }
  [[nodiscard]] const String& source() const noexcept { return source_; }
  [[nodiscard]] const char* what() const noexcept override { return what_.c_str(); }

 private:
  std::int32_t number_;
  String description_;
  String source_;
  std::string what_;
};

// The run-time error numbers of the applications' language, for its own faults and for the
// binding of late-bound calls, as Error::number() gives them.
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

// Any exception as the numbered error an automation caller sees: an Error as it is, running out
// of memory as 7 and any other failure as 51, each with its standard text and no source.
ORVO_API Error asError(const std::exception_ptr& caught);

// Library-defined numbers are offsets from the object-defined base.
inline constexpr std::int32_t vbObjectError = static_cast<std::int32_t>(0x80040000U);
// RaiseLibraryError and the file readers: base + 513.
inline constexpr std::int32_t kLibraryErrorNumber = vbObjectError + 513;

}  // namespace orvo
