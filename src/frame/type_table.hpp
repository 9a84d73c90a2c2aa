#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <type_traits>
#include <utility>
#include <variant>

#include "orvogeneric/variant.hpp"

// The automation type of each C++ type that a variant or an array element holds. Variant::type()
// and SafeArray's choice of element storage are both read off their std::variant alternatives
// through this one mapping, so adding an alternative without its type does not compile.
namespace orvo::frame {

template <class T>
inline constexpr bool kUnmapped = false;

template <class T>
constexpr VarType varTypeOf() noexcept {
  if constexpr (std::is_same_v<T, Empty>) {
    return VarType::Empty;
  } else if constexpr (std::is_same_v<T, Null>) {
    return VarType::Null;
  } else if constexpr (std::is_same_v<T, std::int16_t>) {
    return VarType::Integer;
  } else if constexpr (std::is_same_v<T, std::int32_t>) {
    return VarType::Long;
  } else if constexpr (std::is_same_v<T, float>) {
    return VarType::Single;
  } else if constexpr (std::is_same_v<T, double>) {
    return VarType::Double;
  } else if constexpr (std::is_same_v<T, Currency>) {
    return VarType::Currency;
  } else if constexpr (std::is_same_v<T, Date>) {
    return VarType::Date;
  } else if constexpr (std::is_same_v<T, String>) {
    return VarType::String;
  } else if constexpr (std::is_same_v<T, std::shared_ptr<Object>>) {
    return VarType::Object;
  } else if constexpr (std::is_same_v<T, ErrorCode>) {
    return VarType::Error;
  } else if constexpr (std::is_same_v<T, VBool>) {
    return VarType::Boolean;
  } else if constexpr (std::is_same_v<T, std::uint8_t>) {
    return VarType::Byte;
  } else if constexpr (std::is_same_v<T, Variant> ||
                       std::is_same_v<T, std::unique_ptr<SafeArray>>) {
    // An element of a Variant array, and an array held in a variant, both report Variant.
    return VarType::Variant;
  } else {
    static_assert(kUnmapped<T>, "a variant alternative without its automation type");
  }
}

// The automation type of each alternative of V, in alternative order; Project picks the held
// type out of an alternative (the element type out of an element vector).
template <class V, template <class> class Project>
constexpr auto varTypesOf() noexcept {
  return []<std::size_t... I>(std::index_sequence<I...>) {
    return std::array<VarType, sizeof...(I)>{
        varTypeOf<typename Project<std::variant_alternative_t<I, V>>::type>()...};
  }
  (std::make_index_sequence<std::variant_size_v<V>>{});
}

template <class T>
struct Itself {
  using type = T;
};
template <class Vector>
struct ElementOf {
  using type = typename Vector::value_type;
};

}  // namespace orvo::frame
