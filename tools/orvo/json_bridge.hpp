#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "orvogeneric/automation.hpp"
#include "orvogeneric/error.hpp"
#include "orvogeneric/variant.hpp"

// JSON text to variants and back, for orvo. The input comes from whoever drives the tool, so
// the reader is its own: it decodes straight into the variants (no document in between, so a
// 50 MB string argument is held once as text and once as UTF-16), it bounds nesting before it
// recurses, it takes strings as the UTF-16 code units they stand for (a lone surrogate escape
// is a code unit like any other, so everything the writer prints reads back unchanged), and
// it says what is wrong and at which byte.
namespace orvo::cli {

// Arrays and objects nest at most this deep; deeper input is refused before it is followed.
inline constexpr int kMaxNesting = 1000;

// Objects handed out during one process, by handle, so that a later batch line can call them.
// Their events are kept as JSON lines, {"event": NAME, "object": H} (with "args" when the event
// has any), until the batch writes them.
class ObjectTable {
 public:
  ObjectTable() = default;
  ObjectTable(const ObjectTable&) = delete;
  ObjectTable& operator=(const ObjectTable&) = delete;
  // Stops listening: an object outlives the table only in a caller that still holds it.
  ~ObjectTable();
  std::int64_t add(const std::shared_ptr<Object>& object);
  [[nodiscard]] std::shared_ptr<Object> get(std::int64_t handle) const;
  // The event lines raised since the last call, oldest first.
  std::vector<std::string> takeEvents();

 private:
  std::map<std::int64_t, std::shared_ptr<Object>> objects_;
  std::map<const Object*, std::int64_t> handles_;
  std::int64_t next_ = 1;
  std::vector<std::string> events_;
};

// The JSON text is not JSON at all (as opposed to JSON whose value cannot be used).
class SyntaxError : public Error {
 public:
  using Error::Error;
};

// One JSON value: strings, numbers (a whole number that fits is a Long, else a Double),
// true/false, null (Empty), arrays (zero-based Variant arrays), and the tagged forms
// {"lbound","items"}, {"bytes","lbound"}, {"date"}, {"currency"}, {"null"}, {"object"},
// {"errorValue"}. Raises SyntaxError (5) for text that is not JSON, 28 for nesting beyond
// kMaxNesting, 5 or 6 for values that have no variant form.
Variant parseValue(std::string_view text, const ObjectTable& objects);

// One line of `orvo batch`: {"call": "Class.Member" | "Member", "object": H, "args": [...],
// "named": {...}, "let": value}.
struct BatchRequest {
  std::optional<String> call;
  std::optional<std::int64_t> object;
  std::vector<Variant> args;
  std::vector<automation::NamedArgument> named;
  std::optional<Variant> let;
};
BatchRequest parseBatchLine(std::string_view line, const ObjectTable& objects);

// Variant to JSON text, appended to out. Text keeps its code units: a surrogate that is not
// half of a pair is written as a \uXXXX escape.
void appendJson(std::string& out, const Variant& v, ObjectTable& objects);
void appendQuoted(std::string& out, std::u16string_view text);
std::string quote(std::u16string_view text);
// The argument a coercion error was raised for, named beside the runtime's own description.
struct ArgumentFault {
  std::string parameter;
  std::string expected;  // the declared type: "Double", "Long", "String[]", ...
};
std::string errorJson(const Error& e, const ArgumentFault* fault = nullptr);

}  // namespace orvo::cli
