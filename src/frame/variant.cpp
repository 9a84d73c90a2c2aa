#include "orvogeneric/variant.hpp"

#include <cmath>

#include "orvogeneric/collection.hpp"
#include "orvogeneric/error.hpp"
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
Variant emptyValueOf(VarType type) {
  switch (type) {
    case VarType::Integer:
      return Variant(std::int16_t{0});
    case VarType::Long:
      return Variant(std::int32_t{0});
    case VarType::Single:
      return Variant(0.0F);
    case VarType::Double:
      return Variant(0.0);
    case VarType::Currency:
      return Variant(Currency{});
    case VarType::Date:
      return Variant(Date{});
    case VarType::String:
      return Variant(String{});
    case VarType::Boolean:
      return Variant(VBool::False);
    case VarType::Byte:
      return Variant(std::uint8_t{0});
    case VarType::Object:
      return Variant(std::shared_ptr<Object>{});
    default:
      return Variant{};
  }
}
}  // namespace

SafeArray::SafeArray(VarType elementType) : elementType_(elementType) {}
SafeArray::SafeArray(VarType elementType, std::int32_t lowerBound, std::vector<Variant> items)
    : elementType_(elementType),
      dimensioned_(true),
      lowerBound_(lowerBound),
      items_(std::move(items)) {}
SafeArray::SafeArray(const SafeArray&) = default;
SafeArray& SafeArray::operator=(const SafeArray&) = default;
SafeArray::SafeArray(SafeArray&&) noexcept = default;
SafeArray& SafeArray::operator=(SafeArray&&) noexcept = default;
SafeArray::~SafeArray() = default;

std::int32_t SafeArray::lowerBound() const {
  if (!dimensioned_) runtime::raise(runtime::errSubscriptOutOfRange);
  return lowerBound_;
}

std::int32_t SafeArray::upperBound() const {
  if (!dimensioned_) runtime::raise(runtime::errSubscriptOutOfRange);
  return static_cast<std::int32_t>(static_cast<std::int64_t>(lowerBound_) +
                                   static_cast<std::int64_t>(items_.size()) - 1);
}

Variant& SafeArray::at(std::int32_t index) {
  const std::int64_t offset = static_cast<std::int64_t>(index) - lowerBound_;
  if (!dimensioned_ || offset < 0 || offset >= static_cast<std::int64_t>(items_.size())) {
    runtime::raise(runtime::errSubscriptOutOfRange);
  }
  return items_[static_cast<std::size_t>(offset)];
}

const Variant& SafeArray::at(std::int32_t index) const {
  return const_cast<SafeArray*>(this)->at(index);  // NOLINT: same lookup, read-only result
}

void SafeArray::redim(std::int32_t lowerBound, std::int32_t upperBound) {
  if (upperBound < lowerBound - 1) runtime::raise(runtime::errSubscriptOutOfRange);
  dimensioned_ = true;
  lowerBound_ = lowerBound;
  items_.assign(static_cast<std::size_t>(static_cast<std::int64_t>(upperBound) - lowerBound + 1),
                emptyValueOf(elementType_));
}

void SafeArray::erase() {
  dimensioned_ = false;
  lowerBound_ = 0;
  items_.clear();
}

bool SafeArray::operator==(const SafeArray& other) const {
  return elementType_ == other.elementType_ && dimensioned_ == other.dimensioned_ &&
         lowerBound_ == other.lowerBound_ && items_ == other.items_;
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
