#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "orvogeneric/error.hpp"
#include "orvogeneric/variant.hpp"

namespace orvo::cli {

// Objects handed out during one process, by handle, so that a later batch line can call them.
class ObjectTable {
 public:
  std::int64_t add(const std::shared_ptr<Object>& object);
  [[nodiscard]] std::shared_ptr<Object> get(std::int64_t handle) const;

 private:
  std::map<std::int64_t, std::shared_ptr<Object>> objects_;
  std::int64_t next_ = 1;
};

// JSON to variant: strings, numbers (a whole number that fits is a Long, else a Double),
// true/false, null (Empty), arrays (zero-based), and the tagged forms {"lbound","items"},
// {"bytes","lbound"}, {"date"}, {"currency"}, {"null"}, {"object"}.
Variant toVariant(const nlohmann::json& j, const ObjectTable& objects);

// Variant to JSON text, written by hand so that text which is not valid UTF-16 keeps its code
// units as \uXXXX escapes.
std::string toJson(const Variant& v, ObjectTable& objects);
std::string quote(std::u16string_view text);
std::string errorJson(const Error& e);

}  // namespace orvo::cli
