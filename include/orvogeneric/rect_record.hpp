#pragma once

#include <string_view>

#include "orvogeneric/export.hpp"
#include "orvogeneric/types.hpp"
#include "orvogeneric/variant.hpp"

namespace orvo {

// A RECT inside a Variant, for late-bound callers: the record travels as an object that holds
// it (class name "RECT"), and a by-reference RECT argument comes back the same way.
class ORVO_API RectRecord final : public Object {
 public:
  explicit RectRecord(RECT rect = {}) : value(rect) {}
  [[nodiscard]] std::string_view className() const noexcept override { return "RECT"; }
  RECT value;
};

}  // namespace orvo
