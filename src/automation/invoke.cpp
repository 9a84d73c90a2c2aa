#include <algorithm>
#include <map>
#include <mutex>

#include "automation/coerce.hpp"
#include "automation/names.hpp"
#include "orvogeneric/automation.hpp"
#include "orvogeneric/error.hpp"
#include "platform/locale.hpp"
#include "runtime/convert.hpp"
#include "runtime/errors.hpp"

namespace orvo::automation {

namespace {

const platform::RegionalSettings& regional() { return *platform::userRegionalSettings(); }

// A missing optional that reached a scalar parameter acts like an empty variable.
const Variant& present(const Variant& v) {
  static const Variant empty;
  return v.isMissing() ? empty : v;
}

}  // namespace

String coerceString(const Variant& v) {
  // A text needs no conversion, and building the user's regional settings for nothing cost a
  // one-call run of the tool a millisecond, half its time.
  if (const String* s = v.get<String>()) return *s;
  return runtime::CStr(present(v), regional());
}
String takeString(Variant& v) {
  if (String* s = v.get<String>()) return std::move(*s);
  return coerceString(v);
}
VBool coerceBoolean(const Variant& v) { return runtime::CBool(present(v), regional()); }
std::int16_t coerceInteger(const Variant& v) { return runtime::CIntV(present(v), regional()); }
std::int32_t coerceLong(const Variant& v) { return runtime::CLngV(present(v), regional()); }
float coerceSingle(const Variant& v) { return runtime::CSngV(present(v), regional()); }
double coerceDouble(const Variant& v) { return runtime::CDbl(present(v), regional()); }
std::uint8_t coerceByte(const Variant& v) { return runtime::CByteV(present(v), regional()); }
Currency coerceCurrency(const Variant& v) { return runtime::CCur(present(v), regional()); }
Date coerceDate(const Variant& v) { return runtime::CDate(present(v), regional()); }

void checkArgument(const ParamInfo& param, const Variant& value) {
  const std::string_view type = param.type;
  if (type.ends_with("[]")) {
    // An array parameter takes an array, of whatever element type: the call coerces no further.
    if (!value.isArray() && !(param.optional && value.isMissing())) raiseTypeMismatch();
    return;
  }
  if (param.optional && value.isMissing()) return;
  if (type == "String") {
    if (value.get<String>() == nullptr) (void)coerceString(value);
  } else if (type == "Boolean") {
    (void)coerceBoolean(value);
  } else if (type == "Integer") {
    (void)coerceInteger(value);
  } else if (type == "Long" || type.starts_with("enum") || type.ends_with("Enum")) {
    (void)coerceLong(value);
  } else if (type == "Single") {
    (void)coerceSingle(value);
  } else if (type == "Double") {
    (void)coerceDouble(value);
  } else if (type == "Byte") {
    (void)coerceByte(value);
  } else if (type == "Currency") {
    (void)coerceCurrency(value);
  } else if (type == "Date") {
    (void)coerceDate(value);
  }
}

std::shared_ptr<Collection> coerceCollection(const Variant& v) {
  if (v.isEmpty() || v.isMissing()) return nullptr;
  const auto* object = v.object();
  if (object == nullptr) runtime::raise(runtime::errTypeMismatch);
  if (!*object) return nullptr;  // Nothing
  auto collection = std::dynamic_pointer_cast<Collection>(*object);
  if (!collection) runtime::raise(runtime::errTypeMismatch);
  return collection;
}

std::shared_ptr<Object> coerceObject(const Variant& v) {
  if (v.isEmpty() || v.isMissing()) return nullptr;
  const auto* object = v.object();
  if (object == nullptr) runtime::raise(runtime::errTypeMismatch);
  return *object;
}

RECT coerceRect(const Variant& v) {
  const auto object = coerceObject(v);
  if (!object) return RECT{};
  const auto* record = dynamic_cast<const RectRecord*>(object.get());
  if (record == nullptr) runtime::raise(runtime::errTypeMismatch);
  return record->value;
}

void raiseTypeMismatch() { runtime::raise(runtime::errTypeMismatch); }

SafeArray& arrayArgument(Variant& v) {
  SafeArray* array = v.array();
  if (array == nullptr) runtime::raise(runtime::errTypeMismatch);
  return *array;
}

const ClassInfo* findClass(std::string_view name) noexcept {
  for (const auto& c : classes()) {
    if (sameName(c.name, name)) return &c;
  }
  return nullptr;
}

const MemberInfo* findMember(const ClassInfo& cls, std::string_view name,
                             MemberKind kind) noexcept {
  for (const auto& m : cls.members) {
    if (m.kind == kind && sameName(m.name, name)) return &m;
  }
  return nullptr;
}

std::shared_ptr<Object> globalInstance(std::string_view className) {
  const ClassInfo* cls = findClass(className);
  if (cls == nullptr || !cls->global) runtime::raise(runtime::errCantCreateObject);
  static std::mutex mutex;
  static std::map<std::string_view, std::shared_ptr<Object>> instances;
  const std::lock_guard lock(mutex);
  auto& slot = instances[cls->name];
  if (!slot) slot = cls->create();
  return slot;
}

CallResult invoke(Object& object, std::string_view member, std::vector<Variant> args,
                  std::vector<NamedArgument> named, MemberKind kind) {
  const ClassInfo* cls = findClass(object.className());
  const MemberInfo* info = cls != nullptr ? findMember(*cls, member, kind) : nullptr;
  if (info == nullptr) runtime::raise(runtime::errNoSuchMember);
  const auto& params = info->params;
  if (args.size() > params.size()) runtime::raise(runtime::errWrongNumberOfArguments);
  args.resize(params.size(), Variant::missing());
  for (auto& n : named) {
    const auto it = std::find_if(params.begin(), params.end(),
                                 [&](const ParamInfo& p) { return sameName(p.name, n.name); });
    if (it == params.end()) runtime::raise(runtime::errNamedArgumentNotFound);
    const auto index = static_cast<std::size_t>(it - params.begin());
    // Naming an argument that was also passed by position is a wrong argument list.
    if (!args[index].isMissing()) runtime::raise(runtime::errWrongNumberOfArguments);
    args[index] = std::move(n.value);
  }
  for (std::size_t i = 0; i < params.size(); ++i) {
    if (!args[i].isMissing()) continue;
    const ParamInfo& p = params[i];
    if (p.hasDefault) {
      args[i] = p.defaultValue();
    } else if (!p.optional) {
      runtime::raise(runtime::errArgumentNotOptional);
    }
    // An optional argument without a default stays missing: the member sees it not passed,
    // and nothing comes back for it.
  }
  CallResult result;
  result.result = info->invoke(object, args);
  for (std::size_t i = 0; i < params.size(); ++i) {
    if (params[i].direction == Direction::InOut && !args[i].isMissing()) {
      result.byref.emplace_back(std::string(params[i].name), std::move(args[i]));
    }
  }
  return result;
}

}  // namespace orvo::automation
