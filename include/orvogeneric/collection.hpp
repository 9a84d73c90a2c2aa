#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "orvogeneric/export.hpp"
#include "orvogeneric/variant.hpp"

namespace orvo {

// The keyed collection the library hands out: ordered, 1-based, with optional text keys that
// are unique without regard to case. A missing key is error 5 (how callers probe for keys),
// a bad index error 9, a duplicate key error 457, as the language's own collection does.
class ORVO_API Collection : public Object {
 public:
  [[nodiscard]] std::string_view className() const noexcept override { return "Collection"; }

  void Add(Variant item, const String& key = {});
  [[nodiscard]] std::int32_t Count() const noexcept {
    return static_cast<std::int32_t>(entries_.size());
  }
  [[nodiscard]] const Variant& Item(std::int32_t index) const;
  // By a variant index: a number is a position, text is a key.
  [[nodiscard]] const Variant& Item(const Variant& indexOrKey) const;
  void Remove(std::int32_t index);
  void Remove(const String& key);

 private:
  struct Entry {
    Variant item;
    std::optional<String> key;  // upper-cased for lookup
  };
  [[nodiscard]] std::size_t find(const String& key) const;
  std::vector<Entry> entries_;
};

}  // namespace orvo
