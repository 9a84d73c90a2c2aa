#include "orvogeneric/variant.hpp"

#include "frame/type_table.hpp"

namespace orvo {

std::string_view typeName(VarType type) noexcept {
  switch (type) {
    case VarType::Empty:
      return "Empty";
    case VarType::Null:
      return "Null";
    case VarType::Integer:
      return "Integer";
    case VarType::Long:
      return "Long";
    case VarType::Single:
      return "Single";
    case VarType::Double:
      return "Double";
    case VarType::Currency:
      return "Currency";
    case VarType::Date:
      return "Date";
    case VarType::String:
      return "String";
    case VarType::Object:
      return "Object";
    case VarType::Error:
      return "Error";
    case VarType::Boolean:
      return "Boolean";
    case VarType::Variant:
      return "Variant";
    case VarType::Byte:
      return "Byte";
  }
  return "Unknown";
}

Object::~Object() = default;

void Object::setEventListener(EventListener listener) {
  listener_ = listener ? std::make_shared<const EventListener>(std::move(listener)) : nullptr;
}

void Object::raiseEvent(std::string_view event, std::span<Variant> args) const {
  // Held for the call: a listener may replace itself, or drop the object's last reference.
  const std::shared_ptr<const EventListener> listener = listener_;
  if (listener) (*listener)(event, args);
}

Variant::Variant(SafeArray v) : value_(std::make_unique<SafeArray>(std::move(v))) {}

Variant::Variant(const Variant& other) {
  if (const auto* a = std::get_if<std::unique_ptr<SafeArray>>(&other.value_)) {
    value_ = std::make_unique<SafeArray>(**a);
  } else {
    std::visit(
        [this](const auto& v) {
          using T = std::decay_t<decltype(v)>;
          if constexpr (!std::is_same_v<T, std::unique_ptr<SafeArray>>) value_ = v;
        },
        other.value_);
  }
}

Variant& Variant::operator=(const Variant& other) {
  if (this != &other) {
    Variant copy(other);
    *this = std::move(copy);
  }
  return *this;
}

Variant Variant::array(std::vector<Variant> items, std::int32_t lowerBound, VarType elementType) {
  return Variant(SafeArray(elementType, lowerBound, std::move(items)));
}

VarType Variant::type() const noexcept {
  static constexpr auto kTypes = frame::varTypesOf<Value, frame::Itself>();
  return kTypes[value_.index()];
}

bool Variant::isArray() const noexcept {
  return std::holds_alternative<std::unique_ptr<SafeArray>>(value_);
}

bool Variant::isMissing() const noexcept {
  const auto* e = std::get_if<ErrorCode>(&value_);
  return e != nullptr && e->scode == DISP_E_PARAMNOTFOUND;
}

bool Variant::isNumeric() const noexcept {
  switch (type()) {
    case VarType::Empty:
    case VarType::Integer:
    case VarType::Long:
    case VarType::Single:
    case VarType::Double:
    case VarType::Currency:
    case VarType::Date:
    case VarType::Boolean:
    case VarType::Byte:
      return !isArray();
    default:
      return false;
  }
}

const SafeArray* Variant::array() const noexcept {
  const auto* a = std::get_if<std::unique_ptr<SafeArray>>(&value_);
  return a != nullptr ? a->get() : nullptr;
}

SafeArray* Variant::array() noexcept {
  auto* a = std::get_if<std::unique_ptr<SafeArray>>(&value_);
  return a != nullptr ? a->get() : nullptr;
}

bool Variant::operator==(const Variant& other) const {
  if (value_.index() != other.value_.index()) return false;
  if (isArray()) return *array() == *other.array();
  return value_ == other.value_;
}

}  // namespace orvo
