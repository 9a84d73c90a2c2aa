#include <algorithm>
#include <array>
#include <climits>
#include <utility>

#include "frame/type_table.hpp"
#include "orvogeneric/variant.hpp"
#include "platform/locale.hpp"
#include "runtime/convert.hpp"
#include "runtime/errors.hpp"

namespace orvo {

namespace {

const platform::RegionalSettings& regional() { return *platform::userRegionalSettings(); }

using Storage = SafeArray::Storage;

// The element type's automation type for each storage alternative, in Storage order.
constexpr auto kStorageTypes = frame::varTypesOf<Storage, frame::ElementOf>();
// Types without a store of their own (Empty, Null, Error, Variant) keep variants: the first.
static_assert(kStorageTypes[0] == VarType::Variant);

template <std::size_t I>
Storage makeStorage(std::size_t count) {
  // Value-initialised elements: "", zero, False, Nothing, Empty.
  return Storage(std::in_place_index<I>, count);
}

// What an element of the type holds before anything is assigned to it.
Storage emptyStorage(VarType type, std::size_t count) {
  static constexpr auto kMakers = []<std::size_t... I>(std::index_sequence<I...>) {
    return std::array<Storage (*)(std::size_t), sizeof...(I)>{&makeStorage<I>...};
  }
  (std::make_index_sequence<std::variant_size_v<Storage>>{});
  return kMakers[SafeArray::storageIndex(type)](count);
}

// An assignment into a typed element converts as the language's Let does.
template <class T>
T coerceElement(Variant&& value) {
  if constexpr (std::is_same_v<T, Variant>) {
    return std::move(value);
  } else if constexpr (std::is_same_v<T, String>) {
    if (auto* s = value.get<String>()) return std::move(*s);
    return runtime::CStr(value, regional());
  } else if constexpr (std::is_same_v<T, std::uint8_t>) {
    return runtime::CByteV(value, regional());
  } else if constexpr (std::is_same_v<T, std::int16_t>) {
    return runtime::CIntV(value, regional());
  } else if constexpr (std::is_same_v<T, std::int32_t>) {
    return runtime::CLngV(value, regional());
  } else if constexpr (std::is_same_v<T, float>) {
    return runtime::CSngV(value, regional());
  } else if constexpr (std::is_same_v<T, double>) {
    return runtime::CDbl(value, regional());
  } else if constexpr (std::is_same_v<T, Currency>) {
    return runtime::CCur(value, regional());
  } else if constexpr (std::is_same_v<T, Date>) {
    return runtime::CDate(value, regional());
  } else if constexpr (std::is_same_v<T, VBool>) {
    return runtime::CBool(value, regional());
  } else {
    const auto* object = value.object();
    if (object == nullptr) runtime::raise(runtime::errTypeMismatch);
    return *object;
  }
}

}  // namespace

std::size_t SafeArray::storageIndex(VarType elementType) noexcept {
  for (std::size_t i = 1; i < kStorageTypes.size(); ++i) {
    if (kStorageTypes[i] == elementType) return i;
  }
  return 0;
}

SafeArray::SafeArray(VarType elementType) : elementType_(elementType) {}

SafeArray::SafeArray(VarType elementType, std::int32_t lowerBound, std::vector<Variant> items)
    : elementType_(elementType), dimensioned_(true), lowerBound_(lowerBound) {
  checkBounds(items.size());
  if (storageIndex(elementType) == 0) {
    data_ = std::make_shared<Storage>(std::move(items));
    return;
  }
  Storage storage = emptyStorage(elementType, 0);
  std::visit(
      [&](auto& out) {
        using T = typename std::decay_t<decltype(out)>::value_type;
        out.reserve(items.size());
        for (Variant& item : items) out.push_back(coerceElement<T>(std::move(item)));
      },
      storage);
  data_ = std::make_shared<Storage>(std::move(storage));
}

#define ORVO_TYPED_ARRAY(Type, Element)                                            \
  SafeArray::SafeArray(std::int32_t lowerBound, std::vector<Element> items)        \
      : elementType_(VarType::Type), dimensioned_(true), lowerBound_(lowerBound) { \
    checkBounds(items.size());                                                     \
    data_ = std::make_shared<Storage>(std::move(items));                           \
  }
ORVO_TYPED_ARRAY(Byte, std::uint8_t)
ORVO_TYPED_ARRAY(Integer, std::int16_t)
ORVO_TYPED_ARRAY(Long, std::int32_t)
ORVO_TYPED_ARRAY(Double, double)
#undef ORVO_TYPED_ARRAY

SafeArray::SafeArray(std::int32_t lowerBound, PackedStrings items)
    : elementType_(VarType::String), dimensioned_(true), lowerBound_(lowerBound) {
  checkBounds(items.size());
  data_ = std::make_shared<Storage>(std::move(items));
}

SafeArray::SafeArray(std::int32_t lowerBound, const std::vector<String>& items)
    : SafeArray(lowerBound, PackedStrings(items)) {}

SafeArray::SafeArray(const SafeArray&) = default;
SafeArray& SafeArray::operator=(const SafeArray&) = default;
SafeArray::SafeArray(SafeArray&&) noexcept = default;
SafeArray& SafeArray::operator=(SafeArray&&) noexcept = default;
SafeArray::~SafeArray() = default;

// Both bounds are Longs: an array whose upper bound would not fit cannot exist, just as such a
// ReDim overflows.
void SafeArray::checkBounds(std::size_t count) const {
  const std::int64_t upper = static_cast<std::int64_t>(lowerBound_) - 1 +
                             static_cast<std::int64_t>(std::min<std::size_t>(count, 1ULL << 40));
  if (upper > INT32_MAX || upper < static_cast<std::int64_t>(INT32_MIN)) {
    runtime::raise(runtime::errOverflow);
  }
}

SafeArray::Storage& SafeArray::mutableStorage() {
  if (!data_) {
    data_ = std::make_shared<Storage>(emptyStorage(elementType_, 0));
  } else if (data_.use_count() > 1) {
    data_ = std::make_shared<Storage>(*data_);  // written to: stop sharing with the copies
  }
  return *data_;
}

std::int32_t SafeArray::lowerBound() const {
  if (!dimensioned_) runtime::raise(runtime::errSubscriptOutOfRange);
  return lowerBound_;
}

std::int32_t SafeArray::upperBound() const {
  if (!dimensioned_) runtime::raise(runtime::errSubscriptOutOfRange);
  return static_cast<std::int32_t>(static_cast<std::int64_t>(lowerBound_) +
                                   static_cast<std::int64_t>(size()) - 1);
}

namespace {
std::size_t offsetOf(bool dimensioned, std::int32_t lowerBound, std::size_t size,
                     std::int32_t index) {
  const std::int64_t offset = static_cast<std::int64_t>(index) - lowerBound;
  if (!dimensioned || offset < 0 || offset >= static_cast<std::int64_t>(size)) {
    runtime::raise(runtime::errSubscriptOutOfRange);
  }
  return static_cast<std::size_t>(offset);
}
}  // namespace

Variant SafeArray::get(std::int32_t index) const {
  const std::size_t i = offsetOf(dimensioned_, lowerBound_, size(), index);
  return std::visit(
      [i](const auto& v) -> Variant {
        using T = typename std::decay_t<decltype(v)>::value_type;
        if constexpr (std::is_same_v<T, std::shared_ptr<Object>>) {
          return Variant(v[i]);
        } else {
          return Variant(T(v[i]));
        }
      },
      *data_);
}

void SafeArray::set(std::int32_t index, Variant value) {
  const std::size_t i = offsetOf(dimensioned_, lowerBound_, size(), index);
  std::visit(
      [&](auto& v) {
        using T = typename std::decay_t<decltype(v)>::value_type;
        T element = coerceElement<T>(std::move(value));  // may raise: the element stays as it was
        if constexpr (std::is_same_v<T, String>) {
          v.set(i, element);
        } else {
          v[i] = std::move(element);
        }
      },
      mutableStorage());
}

Variant& SafeArray::at(std::int32_t index) {
  const std::size_t i = offsetOf(dimensioned_, lowerBound_, size(), index);
  auto* items = std::get_if<std::vector<Variant>>(&mutableStorage());
  if (items == nullptr) runtime::raise(runtime::errTypeMismatch);
  return (*items)[i];
}

const Variant& SafeArray::at(std::int32_t index) const {
  const std::size_t i = offsetOf(dimensioned_, lowerBound_, size(), index);
  const auto* items = std::get_if<std::vector<Variant>>(data_.get());
  if (items == nullptr) runtime::raise(runtime::errTypeMismatch);
  return (*items)[i];
}

std::span<const std::uint8_t> SafeArray::bytes() const {
  if (elementType_ != VarType::Byte) runtime::raise(runtime::errTypeMismatch);
  const auto* b = elements<std::uint8_t>();
  return b != nullptr ? std::span<const std::uint8_t>(*b) : std::span<const std::uint8_t>();
}

std::span<std::uint8_t> SafeArray::bytes() {
  if (elementType_ != VarType::Byte) runtime::raise(runtime::errTypeMismatch);
  auto* b = elements<std::uint8_t>();
  return b != nullptr ? std::span<std::uint8_t>(*b) : std::span<std::uint8_t>();
}

std::size_t SafeArray::elementBytes() const noexcept {
  return visit([](const auto& v) {
    if constexpr (std::is_same_v<std::decay_t<decltype(v)>, PackedStrings>) {
      return v.capacityBytes();
    } else {
      return v.capacity() * sizeof(v[0]);
    }
  });
}

void SafeArray::redim(std::int32_t lowerBound, std::int32_t upperBound) {
  if (upperBound < lowerBound - 1LL) runtime::raise(runtime::errSubscriptOutOfRange);
  dimensioned_ = true;
  lowerBound_ = lowerBound;
  // A fresh store: copies made before the ReDim keep their elements.
  data_ = std::make_shared<Storage>(emptyStorage(
      elementType_,
      static_cast<std::size_t>(static_cast<std::int64_t>(upperBound) - lowerBound + 1)));
}

void SafeArray::erase() {
  dimensioned_ = false;
  lowerBound_ = 0;
  data_.reset();
}

bool SafeArray::operator==(const SafeArray& other) const {
  if (elementType_ != other.elementType_ || dimensioned_ != other.dimensioned_ ||
      lowerBound_ != other.lowerBound_) {
    return false;
  }
  if (data_ == other.data_) return true;
  if (size() != other.size()) return false;
  if (size() == 0) return true;
  return *data_ == *other.data_;
}

}  // namespace orvo
