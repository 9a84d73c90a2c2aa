#pragma once

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "orvogeneric/export.hpp"
#include "orvogeneric/packed_strings.hpp"
#include "orvogeneric/types.hpp"

namespace orvo {

// Type codes as the automation world numbers them.
enum class VarType : std::uint16_t {
  Empty = 0,
  Null = 1,
  Integer = 2,
  Long = 3,
  Single = 4,
  Double = 5,
  Currency = 6,
  Date = 7,
  String = 8,
  Object = 9,
  Error = 10,
  Boolean = 11,
  Variant = 12,
  Byte = 17,
};

ORVO_API std::string_view typeName(VarType type) noexcept;

// Base of every automation object: the public classes and what the factories hand out.
class Variant;

class ORVO_API Object {
 public:
  // Hears the object's outgoing events (a timer's tick) by name, with their arguments, on the
  // thread that raised them.
  using EventListener = std::function<void(std::string_view event, std::span<Variant> args)>;

  Object() = default;
  Object(const Object&) = default;
  Object& operator=(const Object&) = default;
  Object(Object&&) = default;
  Object& operator=(Object&&) = default;
  virtual ~Object();
  [[nodiscard]] virtual std::string_view className() const noexcept = 0;

  // The one listener of every event of this object (an automation host's, or a typed handler
  // such as TimerObject::OnTimer); an empty one removes it.
  void setEventListener(EventListener listener);

 protected:
  // Raises an event to the listener, if any.
  void raiseEvent(std::string_view event, std::span<Variant> args) const;

 private:
  std::shared_ptr<const EventListener> listener_;
};

class Variant;

// How a typed array keeps its elements: a vector of them, except Strings, which share one block.
template <class T>
struct ElementStore {
  using type = std::vector<T>;
};
template <>
struct ElementStore<String> {
  using type = PackedStrings;
};
template <class T>
using ElementStoreOf = typename ElementStore<T>::type;

// A one-dimensional array with a lower bound, as the applications' arrays are. "Never
// dimensioned" (a dynamic array before its first ReDim) is distinct from "no elements"
// (bounds 0 to -1): asking the former for a bound is error 9.
//
// Elements are stored by their type, contiguously: a Byte array of a 200 MB file is 200 MB,
// and the converters and file readers work on it as a span; the lines of a 200 MB file are its
// text and 12 bytes a line (PackedStrings). Only a Variant array holds
// variants. Copies share the elements until one of them is changed, so passing an array
// around (by value, into a variant, back as a result) costs nothing until it is written.
class ORVO_API SafeArray {
 public:
  // One alternative per storage kind, in the order of storageIndex().
  using Storage =
      std::variant<std::vector<Variant>, PackedStrings, std::vector<std::uint8_t>,
                   std::vector<std::int16_t>, std::vector<std::int32_t>, std::vector<float>,
                   std::vector<double>, std::vector<Currency>, std::vector<Date>,
                   std::vector<VBool>, std::vector<std::shared_ptr<Object>>>;

  explicit SafeArray(VarType elementType = VarType::Variant);  // never dimensioned
  // Each item is coerced to the element type as an assignment would (13, 6 when it cannot).
  SafeArray(VarType elementType, std::int32_t lowerBound, std::vector<Variant> items);
  // Typed arrays from their elements: Byte from uint8_t, String from String, and so on.
  SafeArray(std::int32_t lowerBound, std::vector<std::uint8_t> items);
  SafeArray(std::int32_t lowerBound, const std::vector<String>& items);
  SafeArray(std::int32_t lowerBound, PackedStrings items);
  SafeArray(std::int32_t lowerBound, std::vector<std::int16_t> items);
  SafeArray(std::int32_t lowerBound, std::vector<std::int32_t> items);
  SafeArray(std::int32_t lowerBound, std::vector<double> items);
  SafeArray(const SafeArray&);
  SafeArray& operator=(const SafeArray&);
  SafeArray(SafeArray&&) noexcept;
  SafeArray& operator=(SafeArray&&) noexcept;
  ~SafeArray();

  [[nodiscard]] VarType elementType() const noexcept { return elementType_; }
  [[nodiscard]] bool dimensioned() const noexcept { return dimensioned_; }
  // Both raise "Subscript out of range" (9) when never dimensioned.
  [[nodiscard]] std::int32_t lowerBound() const;
  [[nodiscard]] std::int32_t upperBound() const;
  [[nodiscard]] std::size_t size() const noexcept;

  // Element by index as a variant of the element type; raises 9 outside the bounds.
  [[nodiscard]] Variant get(std::int32_t index) const;
  // Assignment to an element: coerced to the element type (13 or 6 when it cannot be).
  void set(std::int32_t index, Variant value);
  // The element itself, for Variant arrays only (13 for a typed array); raises 9 outside.
  [[nodiscard]] Variant& at(std::int32_t index);
  [[nodiscard]] const Variant& at(std::int32_t index) const;

  // The elements of a typed array (a vector, or PackedStrings for String); nullptr when the
  // array holds another type. The mutable form first separates this array from copies that
  // share its elements.
  template <class T>
  [[nodiscard]] const ElementStoreOf<T>* elements() const noexcept;
  template <class T>
  [[nodiscard]] ElementStoreOf<T>* elements();
  // The bytes of a Byte array; Type mismatch (13) for any other array.
  [[nodiscard]] std::span<const std::uint8_t> bytes() const;
  [[nodiscard]] std::span<std::uint8_t> bytes();
  // Calls f with the element store (const ElementStoreOf<T>&) whatever its type.
  template <class F>
  decltype(auto) visit(F&& f) const;
  // Whether both share one element store (a copy not written to since): equal without looking.
  [[nodiscard]] bool sharesElementsWith(const SafeArray& other) const noexcept {
    return data_ != nullptr && data_ == other.data_;
  }
  // Bytes held for the elements at their capacity (a String array's text included; not what
  // variants and objects point to).
  [[nodiscard]] std::size_t elementBytes() const noexcept;

  // ReDim (without Preserve): every element becomes the empty value of the element type.
  void redim(std::int32_t lowerBound, std::int32_t upperBound);
  void erase();  // back to never dimensioned

  bool operator==(const SafeArray&) const;

  // Where the elements of an array of this element type are kept in Storage.
  static std::size_t storageIndex(VarType elementType) noexcept;

 private:
  Storage& mutableStorage();
  void checkBounds(std::size_t count) const;

  VarType elementType_;
  bool dimensioned_ = false;
  std::int32_t lowerBound_ = 0;
  std::shared_ptr<Storage> data_;  // null while never dimensioned
};

struct Empty {
  bool operator==(const Empty&) const = default;
};
struct Null {
  bool operator==(const Null&) const = default;
};
// VT_ERROR: an error code held as a value; DISP_E_PARAMNOTFOUND marks a missing optional.
struct ErrorCode {
  std::int32_t scode = 0;
  bool operator==(const ErrorCode&) const = default;
};
inline constexpr std::int32_t DISP_E_PARAMNOTFOUND = static_cast<std::int32_t>(0x80020004U);

class ORVO_API Variant {
 public:
  Variant() = default;
  Variant(Empty) {}
  Variant(Null v) : value_(v) {}
  Variant(std::int16_t v) : value_(v) {}
  Variant(std::int32_t v) : value_(v) {}
  Variant(float v) : value_(v) {}
  Variant(double v) : value_(v) {}
  Variant(Currency v) : value_(v) {}
  Variant(Date v) : value_(v) {}
  Variant(String v) : value_(std::move(v)) {}
  Variant(const char16_t* v) : value_(String(v)) {}
  Variant(std::shared_ptr<Object> v) : value_(std::move(v)) {}
  Variant(ErrorCode v) : value_(v) {}
  Variant(VBool v) : value_(v) {}
  Variant(std::uint8_t v) : value_(v) {}
  Variant(SafeArray v);
  Variant(const Variant&);
  Variant& operator=(const Variant&);
  Variant(Variant&&) noexcept = default;
  Variant& operator=(Variant&&) noexcept = default;
  ~Variant() = default;

  static Variant missing() { return Variant(ErrorCode{DISP_E_PARAMNOTFOUND}); }
  // A zero-based Variant array of the given items.
  static Variant array(std::vector<Variant> items, std::int32_t lowerBound = 0,
                       VarType elementType = VarType::Variant);

  // An array reports VarType::Variant here; isArray() and array()->elementType() tell more.
  [[nodiscard]] VarType type() const noexcept;
  [[nodiscard]] bool isArray() const noexcept;
  [[nodiscard]] bool isEmpty() const noexcept { return type() == VarType::Empty; }
  [[nodiscard]] bool isNull() const noexcept { return type() == VarType::Null; }
  [[nodiscard]] bool isMissing() const noexcept;
  [[nodiscard]] bool isNumeric() const noexcept;  // a number type, Boolean, Date, Empty

  template <class T>
  [[nodiscard]] const T* get() const noexcept {
    return std::get_if<T>(&value_);
  }
  template <class T>
  [[nodiscard]] T* get() noexcept {
    return std::get_if<T>(&value_);
  }
  [[nodiscard]] const SafeArray* array() const noexcept;
  [[nodiscard]] SafeArray* array() noexcept;
  [[nodiscard]] const std::shared_ptr<Object>* object() const noexcept {
    return std::get_if<std::shared_ptr<Object>>(&value_);
  }

  bool operator==(const Variant& other) const;

 private:
  using Value = std::variant<Empty, Null, std::int16_t, std::int32_t, float, double, Currency, Date,
                             String, std::shared_ptr<Object>, ErrorCode, VBool, std::uint8_t,
                             std::unique_ptr<SafeArray>>;
  Value value_;
};

// Defined once Variant is complete: the element vectors need its size.
inline std::size_t SafeArray::size() const noexcept {
  return data_ ? std::visit([](const auto& v) { return v.size(); }, *data_) : 0;
}

template <class T>
const ElementStoreOf<T>* SafeArray::elements() const noexcept {
  return data_ ? std::get_if<ElementStoreOf<T>>(data_.get()) : nullptr;
}

template <class T>
ElementStoreOf<T>* SafeArray::elements() {
  if (!data_ || !std::holds_alternative<ElementStoreOf<T>>(*data_)) return nullptr;
  return std::get_if<ElementStoreOf<T>>(&mutableStorage());
}

template <class F>
decltype(auto) SafeArray::visit(F&& f) const {
  static const Storage kNone;
  return std::visit(std::forward<F>(f), data_ ? *data_ : kNone);
}

}  // namespace orvo
