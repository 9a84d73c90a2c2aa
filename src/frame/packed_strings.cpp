#include "orvogeneric/packed_strings.hpp"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <stdexcept>
#include <utility>

namespace orvo {

namespace {

template <class T>
T* resized(T* data, std::size_t count) {
  if (count == 0 || count > SIZE_MAX / sizeof(T)) throw std::bad_alloc();
  void* moved = std::realloc(data, count * sizeof(T));
  if (moved == nullptr) throw std::bad_alloc();
  return static_cast<T*>(moved);
}

// Half as much again: a loop of appends stays linear, and the slack stays within a third.
std::size_t grown(std::size_t capacity, std::size_t needed) {
  return std::max({needed, capacity + capacity / 2, std::size_t{16}});
}

template <class Block>
void reserveBlock(Block& block, std::size_t capacity) {
  if (capacity <= block.capacity || capacity == 0) return;
  block.data = resized(block.data, capacity);
  block.capacity = capacity;
}

template <class Block>
void fitBlock(Block& block) {
  if (block.capacity == block.size) return;
  if (block.size == 0) {
    std::free(block.data);
    block.data = nullptr;
  } else {
    block.data = resized(block.data, block.size);
  }
  block.capacity = block.size;
}

}  // namespace

PackedStrings::PackedStrings(std::size_t count) {
  reserve(count);
  std::fill_n(element_.data, count, 0);  // empty texts at the start of an empty block
  count_ = element_.size = count;
}

PackedStrings::PackedStrings(std::initializer_list<std::u16string_view> items) {
  std::size_t units = 0;
  for (const auto item : items) units += item.size();
  reserve(items.size(), units);
  for (const auto item : items) push_back(item);
}

PackedStrings::PackedStrings(const std::vector<String>& items) {
  std::size_t units = 0;
  for (const auto& item : items) units += item.size();
  reserve(items.size(), units);
  for (const auto& item : items) push_back(item);
}

// A copy leaves behind what overwritten elements abandoned.
PackedStrings::PackedStrings(const PackedStrings& other) {
  reserve(other.count_, other.text_.size - other.abandoned_);
  for (const auto item : other) push_back(item);
}

PackedStrings& PackedStrings::operator=(const PackedStrings& other) {
  if (this != &other) {
    PackedStrings copy(other);
    *this = std::move(copy);
  }
  return *this;
}

PackedStrings::PackedStrings(PackedStrings&& other) noexcept
    : text_(std::exchange(other.text_, {})),
      element_(std::exchange(other.element_, {})),
      count_(std::exchange(other.count_, 0)),
      abandoned_(std::exchange(other.abandoned_, 0)) {}

PackedStrings& PackedStrings::operator=(PackedStrings&& other) noexcept {
  if (this != &other) {
    std::swap(text_, other.text_);
    std::swap(element_, other.element_);
    std::swap(count_, other.count_);
    std::swap(abandoned_, other.abandoned_);
    other.clear();
  }
  return *this;
}

PackedStrings::~PackedStrings() {
  std::free(text_.data);
  std::free(element_.data);
}

void PackedStrings::reserve(std::size_t count, std::size_t units) {
  reserveBlock(element_, count);
  reserveBlock(text_, units);
}

std::uint64_t PackedStrings::appendText(std::u16string_view item) {
  if (item.size() > UINT32_MAX) throw std::length_error("text longer than a String can hold");
  const bool longText = item.size() >= kLongText;
  const std::size_t needed = item.size() + (longText ? kLengthUnits : 0);
  String kept;
  // Also when nothing is needed: the block then exists, whatever was reserved before.
  if (text_.data == nullptr || text_.size + needed > text_.capacity) {
    // The item may be one of this store's own elements: keep it while the block moves.
    if (!item.empty() && item.data() >= text_.data && item.data() < text_.data + text_.capacity) {
      kept.assign(item);
      item = kept;
    }
    reserveBlock(text_, grown(text_.capacity, text_.size + needed));
    if (text_.data == nullptr) throw std::bad_alloc();
  }
  if (longText) {
    text_.data[text_.size++] = static_cast<char16_t>(item.size() >> 16);
    text_.data[text_.size++] = static_cast<char16_t>(item.size() & 0xFFFF);
  }
  const std::uint64_t start = text_.size;
  if (start >> (64 - kLengthBits) != 0) throw std::length_error("more text than a store holds");
  if (!item.empty()) {
    std::memcpy(text_.data + text_.size, item.data(), item.size() * sizeof(char16_t));
  }
  text_.size += item.size();
  return start << kLengthBits | (longText ? kLongText : item.size());
}

void PackedStrings::push_back(std::u16string_view item) {
  if (count_ == element_.capacity) reserveBlock(element_, grown(element_.capacity, count_ + 1));
  element_.data[count_] = appendText(item);
  element_.size = ++count_;
}

void PackedStrings::set(std::size_t i, std::u16string_view item) {
  const std::u16string_view old = (*this)[i];
  const std::uint64_t word = element_.data[i];
  const bool wasLong = (word & kLongText) == kLongText;
  if (item.size() <= old.size() && (item.size() < kLongText || wasLong)) {
    // In place (memmove: the item may overlap the text it replaces). A long text that shrinks
    // below the mark keeps its two length units as abandoned space.
    char16_t* text = text_.data + (word >> kLengthBits);
    if (!item.empty()) std::memmove(text, item.data(), item.size() * sizeof(char16_t));
    abandoned_ += old.size() - item.size();
    if (item.size() >= kLongText) {
      text[-2] = static_cast<char16_t>(item.size() >> 16);
      text[-1] = static_cast<char16_t>(item.size() & 0xFFFF);
    } else {
      element_.data[i] = (word >> kLengthBits) << kLengthBits | item.size();
      if (wasLong) abandoned_ += kLengthUnits;
    }
  } else {
    element_.data[i] = appendText(item);
    abandoned_ += old.size() + (wasLong ? kLengthUnits : 0);
  }
  if (abandoned_ > (1U << 16) && abandoned_ > text_.size / 2) compact();
}

void PackedStrings::clear() noexcept {
  text_.size = 0;
  element_.size = count_ = 0;
  abandoned_ = 0;
}

void PackedStrings::shrink_to_fit() {
  fitBlock(text_);
  fitBlock(element_);
}

void PackedStrings::compact() {
  PackedStrings packed(*this);
  *this = std::move(packed);
}

std::size_t PackedStrings::capacityBytes() const noexcept {
  return text_.capacity * sizeof(char16_t) + element_.capacity * sizeof(std::uint64_t);
}

std::vector<String> PackedStrings::toVector() const {
  std::vector<String> items;
  items.reserve(count_);
  for (const auto item : *this) items.emplace_back(item);
  return items;
}

bool operator==(const PackedStrings& a, const PackedStrings& b) noexcept {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin());
}

}  // namespace orvo
