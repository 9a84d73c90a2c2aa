#include "orvogeneric/collection.hpp"

#include <cmath>

#include "runtime/errors.hpp"
#include "runtime/strings.hpp"

namespace orvo {

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
