#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "orvogeneric/export.hpp"
#include "orvogeneric/variant.hpp"

// Late binding: every public member described once (api/orvogeneric.idl) and callable by name
// with variants, coerced as an automation host coerces them.
namespace orvo::automation {

enum class MemberKind { Method, PropertyGet, PropertyLet };
enum class Direction { In, InOut };

struct ParamInfo {
  std::string_view name;
  std::string_view type;  // as declared: "String", "Long", "Variant[]", "enumCodePages", ...
  Direction direction;
  bool optional;
  bool hasDefault;
  Variant (*defaultValue)();  // nullptr unless hasDefault
  std::string_view doc;       // one line: what the parameter takes
};

using Invoker = Variant (*)(Object& self, std::vector<Variant>& args);

struct MemberInfo {
  std::string_view name;
  MemberKind kind;
  int slot;  // declaration order within the class, from 1
  std::span<const ParamInfo> params;
  std::string_view resultType;  // "void" for none
  Invoker invoke;
  std::string_view doc;  // one line: what the member does
};

// An outgoing event: the object raises it, a listener handles it (a timer's tick).
struct EventInfo {
  std::string_view name;
  std::span<const ParamInfo> params;
  std::string_view doc;
};

struct ClassInfo {
  std::string_view name;
  bool global;     // members callable without naming an instance
  bool creatable;  // hosts may create it; the others come from the factories only
  std::shared_ptr<Object> (*create)();
  std::span<const MemberInfo> members;
  std::span<const EventInfo> events;
};

ORVO_API std::span<const ClassInfo> classes() noexcept;
// Case-insensitive, as automation names are. nullptr when there is none.
ORVO_API const ClassInfo* findClass(std::string_view name) noexcept;
ORVO_API const MemberInfo* findMember(const ClassInfo& cls, std::string_view name,
                                      MemberKind kind) noexcept;

// Raises what a call raises when value is passed for a parameter of this declared type (Type
// mismatch, 13; Overflow, 6), without calling anything: for tools that name the argument at
// fault. Values a call would take return quietly; so does a parameter of an object type, whose
// class is checked by the call itself.
ORVO_API void checkArgument(const ParamInfo& param, const Variant& value);

// The implicit instance that serves calls on a global class without an instance; created on
// first use, with the class's creation side effects. Raises 429 for a class that is not global.
ORVO_API std::shared_ptr<Object> globalInstance(std::string_view className);

struct NamedArgument {
  std::string name;
  Variant value;
};

struct CallResult {
  Variant result;
  // The final value of every in/out parameter, by its documented name, in declaration order.
  std::vector<std::pair<std::string, Variant>> byref;
};

// Calls a member by name. Positional arguments come first, then named ones. Arguments are
// coerced to the declared types (Type mismatch, 13, when they cannot be); an omitted optional
// takes its declared default; an omitted in/out parameter gets a fresh variable whose final
// value is reported. Unknown members raise 438, unknown named arguments 448, missing required
// ones 449, too many 450.
ORVO_API CallResult invoke(Object& object, std::string_view member, std::vector<Variant> args,
                           std::vector<NamedArgument> named = {},
                           MemberKind kind = MemberKind::Method);

// A late-bound call as a script host makes it from a name: with a let value the property is
// assigned (the arguments are not used); otherwise the method of that name, or the property
// read when there is no such method. A name the object's class does not have raises 438
// "Object doesn't support this property or method: Class.Member" (the name cut at 80 bytes)
// with caller as its source, as a host reports its own late-binding errors under its name.
// The by-reference results leave out each array the call did not change (see call.cpp); every
// other in/out parameter is reported.
ORVO_API CallResult call(Object& object, std::string_view member, std::vector<Variant> args,
                         std::vector<NamedArgument> named, std::optional<Variant> let,
                         std::u16string_view caller);

}  // namespace orvo::automation
