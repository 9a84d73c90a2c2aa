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

// Library-defined numbers are offsets from the object-defined base.
inline constexpr std::int32_t vbObjectError = static_cast<std::int32_t>(0x80040000U);
// RaiseLibraryError and the file readers: base + 513.
inline constexpr std::int32_t kLibraryErrorNumber = vbObjectError + 513;

}  // namespace orvo
