#pragma once

#include <memory>
#include <type_traits>

#include "orvogeneric/collection.hpp"
#include "orvogeneric/rect_record.hpp"
#include "orvogeneric/variant.hpp"

// Argument coercion for late-bound calls, as an automation host performs it before a member
// sees its arguments.
namespace orvo::automation {

String coerceString(const Variant& v);
// coerceString for an argument the call owns: text already held is moved out, not copied.
String takeString(Variant& v);
VBool coerceBoolean(const Variant& v);
std::int16_t coerceInteger(const Variant& v);
std::int32_t coerceLong(const Variant& v);
float coerceSingle(const Variant& v);
double coerceDouble(const Variant& v);
std::uint8_t coerceByte(const Variant& v);
Currency coerceCurrency(const Variant& v);
Date coerceDate(const Variant& v);
std::shared_ptr<Collection> coerceCollection(const Variant& v);
// An object argument: nullptr for Nothing, Empty or a missing one; anything else is error 13.
std::shared_ptr<Object> coerceObject(const Variant& v);
// The array inside an array argument; anything else is a Type mismatch (13).
SafeArray& arrayArgument(Variant& v);
// A record argument: an object holding a RECT; Empty or a missing one is the empty RECT.
RECT coerceRect(const Variant& v);
[[noreturn]] void raiseTypeMismatch();

template <class T>
struct IsObjectPointer : std::false_type {};
template <class T>
struct IsObjectPointer<std::shared_ptr<T>> : std::is_base_of<Object, T> {};

template <class T>
T coerce(const Variant& v) {
  if constexpr (std::is_same_v<T, String>)
    return coerceString(v);
  else if constexpr (std::is_same_v<T, Variant>)
    return v;
  else if constexpr (std::is_same_v<T, VBool>)
    return coerceBoolean(v);
  else if constexpr (std::is_same_v<T, std::int16_t>)
    return coerceInteger(v);
  else if constexpr (std::is_same_v<T, std::int32_t>)
    return coerceLong(v);
  else if constexpr (std::is_same_v<T, float>)
    return coerceSingle(v);
  else if constexpr (std::is_same_v<T, double>)
    return coerceDouble(v);
  else if constexpr (std::is_same_v<T, std::uint8_t>)
    return coerceByte(v);
  else if constexpr (std::is_same_v<T, Currency>)
    return coerceCurrency(v);
  else if constexpr (std::is_same_v<T, Date>)
    return coerceDate(v);
  else if constexpr (std::is_same_v<T, std::shared_ptr<Collection>>)
    return coerceCollection(v);
  else if constexpr (std::is_same_v<T, std::shared_ptr<Object>>)
    return coerceObject(v);
  else if constexpr (std::is_same_v<T, RECT>)
    return coerceRect(v);
  else if constexpr (IsObjectPointer<T>::value) {
    // An object of one class: another class is a Type mismatch, as the typed parameter is.
    auto object = coerceObject(v);
    if (!object) return nullptr;
    auto typed = std::dynamic_pointer_cast<typename T::element_type>(object);
    if (!typed) raiseTypeMismatch();
    return typed;
  } else if constexpr (std::is_enum_v<T>)
    return static_cast<T>(coerceLong(v));
  else
    static_assert(sizeof(T) == 0, "no coercion for this type");
}

template <class T>
Variant toVariant(T value) {
  if constexpr (std::is_enum_v<T> && !std::is_same_v<T, VBool>) {
    return Variant(static_cast<std::int32_t>(value));
  } else if constexpr (IsObjectPointer<T>::value) {
    return Variant(std::shared_ptr<Object>(std::move(value)));
  } else if constexpr (std::is_same_v<T, RECT>) {
    return Variant(std::shared_ptr<Object>(std::make_shared<RectRecord>(value)));
  } else {
    return Variant(std::move(value));
  }
}

}  // namespace orvo::automation
