#include "orvogeneric/variant.hpp"

#include <algorithm>
#include <climits>
#include <cmath>

#include "orvogeneric/collection.hpp"
#include "orvogeneric/error.hpp"
#include "platform/locale.hpp"
#include "runtime/convert.hpp"
#include "runtime/errors.hpp"
#include "runtime/strings.hpp"

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

Error::Error(std::int32_t number, String description, String source)
    : number_(number),
      description_(std::move(description)),
      source_(std::move(source)),
      what_(std::to_string(number) + ": " + toUtf8(description_)) {}

// ---- SafeArray ----------------------------------------------------------------------------

namespace {

const platform::RegionalSettings& regional() { return *platform::userRegionalSettings(); }

// What an element of the type holds before anything is assigned to it.
SafeArray::Storage emptyStorage(VarType type, std::size_t count) {
  switch (SafeArray::storageIndex(type)) {
    case 1:
      return std::vector<String>(count);
    case 2:
      return std::vector<std::uint8_t>(count);
    case 3:
      return std::vector<std::int16_t>(count);
    case 4:
      return std::vector<std::int32_t>(count);
    case 5:
      return std::vector<float>(count);
    case 6:
      return std::vector<double>(count);
    case 7:
      return std::vector<Currency>(count);
    case 8:
      return std::vector<Date>(count);
    case 9:
      return std::vector<VBool>(count, VBool::False);
    case 10:
      return std::vector<std::shared_ptr<Object>>(count);
    default:
      return std::vector<Variant>(count);
  }
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
  switch (elementType) {
    case VarType::String:
      return 1;
    case VarType::Byte:
      return 2;
    case VarType::Integer:
      return 3;
    case VarType::Long:
      return 4;
    case VarType::Single:
      return 5;
    case VarType::Double:
      return 6;
    case VarType::Currency:
      return 7;
    case VarType::Date:
      return 8;
    case VarType::Boolean:
      return 9;
    case VarType::Object:
      return 10;
    default:
      return 0;
  }
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
ORVO_TYPED_ARRAY(String, String)
ORVO_TYPED_ARRAY(Integer, std::int16_t)
ORVO_TYPED_ARRAY(Long, std::int32_t)
ORVO_TYPED_ARRAY(Double, double)
#undef ORVO_TYPED_ARRAY

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
        v[i] = std::move(element);
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
  return visit([](const auto& v) { return v.capacity() * sizeof(v[0]); });
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

// ---- Variant ------------------------------------------------------------------------------

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
  static constexpr VarType kTypes[] = {
      VarType::Empty,  VarType::Null,     VarType::Integer, VarType::Long,   VarType::Single,
      VarType::Double, VarType::Currency, VarType::Date,    VarType::String, VarType::Object,
      VarType::Error,  VarType::Boolean,  VarType::Byte,    VarType::Variant};
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

// ---- Collection ---------------------------------------------------------------------------

std::size_t Collection::find(const String& key) const {
  const String upper = runtime::UCase(key);
  for (std::size_t i = 0; i < entries_.size(); ++i) {
    if (entries_[i].key && *entries_[i].key == upper) return i;
  }
  return entries_.size();
}

void Collection::Add(Variant item, const String& key) {
  Entry entry{std::move(item), std::nullopt};
  if (!key.empty()) {
    if (find(key) != entries_.size()) runtime::raise(runtime::errDuplicateKey);
    entry.key = runtime::UCase(key);
  }
  entries_.push_back(std::move(entry));
}

const Variant& Collection::Item(std::int32_t index) const {
  if (index < 1 || index > Count()) runtime::raise(runtime::errSubscriptOutOfRange);
  return entries_[static_cast<std::size_t>(index - 1)].item;
}

const Variant& Collection::Item(const Variant& indexOrKey) const {
  if (const auto* key = indexOrKey.get<String>()) {
    const std::size_t i = find(*key);
    if (i == entries_.size()) runtime::raise(runtime::errInvalidProcedureCall);
    return entries_[i].item;
  }
  if (const auto* i = indexOrKey.get<std::int32_t>()) return Item(*i);
  if (const auto* i = indexOrKey.get<std::int16_t>()) return Item(std::int32_t{*i});
  if (const auto* d = indexOrKey.get<double>()) {
    if (*d >= -2147483648.0 && *d < 2147483648.0) {
      return Item(static_cast<std::int32_t>(std::nearbyint(*d)));
    }
    runtime::raise(runtime::errOverflow);
  }
  runtime::raise(runtime::errTypeMismatch);
}

void Collection::Remove(std::int32_t index) {
  if (index < 1 || index > Count()) runtime::raise(runtime::errSubscriptOutOfRange);
  entries_.erase(entries_.begin() + (index - 1));
}

void Collection::Remove(const String& key) {
  const std::size_t i = find(key);
  if (i == entries_.size()) runtime::raise(runtime::errInvalidProcedureCall);
  entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(i));
}

}  // namespace orvo
