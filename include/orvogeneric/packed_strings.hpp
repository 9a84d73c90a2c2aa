#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <string_view>
#include <vector>

#include "orvogeneric/export.hpp"
#include "orvogeneric/types.hpp"

namespace orvo {

// The elements of a String array, kept in one block of text with one 64-bit word an element
// (where its text starts, and its length), so that a file read into millions of short lines
// costs its text and 8 bytes a line rather than a string object and an allocation a line
// (about 70 % more for lines of typical length).
//
// An element reads as a view into the block; the view lasts until the store is next changed.
// A shorter or equal text is written in place; a longer one goes to the end of the block, and
// the block is compacted when more than half of it is left behind by such writes, so that a
// loop assigning every element stays linear.
class ORVO_API PackedStrings {
 public:
  using value_type = String;  // what an element is to the language: a String
  using size_type = std::size_t;

  class const_iterator {
   public:
    using iterator_category = std::random_access_iterator_tag;
    using value_type = std::u16string_view;
    using difference_type = std::ptrdiff_t;
    using pointer = void;
    using reference = std::u16string_view;

    const_iterator() = default;
    const_iterator(const PackedStrings* owner, std::size_t index) : owner_(owner), index_(index) {}
    std::u16string_view operator*() const { return (*owner_)[index_]; }
    std::u16string_view operator[](difference_type n) const {
      return (*owner_)[index_ + static_cast<std::size_t>(n)];
    }
    const_iterator& operator++() {
      ++index_;
      return *this;
    }
    const_iterator operator++(int) {
      const_iterator old = *this;
      ++index_;
      return old;
    }
    const_iterator& operator--() {
      --index_;
      return *this;
    }
    const_iterator operator--(int) {
      const_iterator old = *this;
      --index_;
      return old;
    }
    const_iterator& operator+=(difference_type n) {
      index_ += static_cast<std::size_t>(n);
      return *this;
    }
    const_iterator& operator-=(difference_type n) {
      index_ -= static_cast<std::size_t>(n);
      return *this;
    }
    friend const_iterator operator+(const_iterator it, difference_type n) { return it += n; }
    friend const_iterator operator+(difference_type n, const_iterator it) { return it += n; }
    friend const_iterator operator-(const_iterator it, difference_type n) { return it -= n; }
    friend difference_type operator-(const const_iterator& a, const const_iterator& b) {
      return static_cast<difference_type>(a.index_) - static_cast<difference_type>(b.index_);
    }
    friend bool operator==(const const_iterator& a, const const_iterator& b) {
      return a.index_ == b.index_;
    }
    friend auto operator<=>(const const_iterator& a, const const_iterator& b) {
      return a.index_ <=> b.index_;
    }

   private:
    const PackedStrings* owner_ = nullptr;
    std::size_t index_ = 0;
  };

  PackedStrings() noexcept = default;
  explicit PackedStrings(std::size_t count);  // that many empty strings
  PackedStrings(std::initializer_list<std::u16string_view> items);
  explicit PackedStrings(const std::vector<String>& items);
  PackedStrings(const PackedStrings& other);
  PackedStrings& operator=(const PackedStrings& other);
  PackedStrings(PackedStrings&& other) noexcept;
  PackedStrings& operator=(PackedStrings&& other) noexcept;
  ~PackedStrings();

  [[nodiscard]] std::size_t size() const noexcept { return count_; }
  [[nodiscard]] bool empty() const noexcept { return count_ == 0; }
  [[nodiscard]] std::u16string_view operator[](std::size_t i) const noexcept {
    const std::uint64_t word = element_.data[i];
    const char16_t* text = text_.data + (word >> kLengthBits);
    std::size_t length = word & kLongText;
    if (length == kLongText) length = longLength(text);
    return {text, length};
  }
  [[nodiscard]] std::u16string_view front() const noexcept { return (*this)[0]; }
  [[nodiscard]] std::u16string_view back() const noexcept { return (*this)[count_ - 1]; }
  [[nodiscard]] const_iterator begin() const noexcept { return {this, 0}; }
  [[nodiscard]] const_iterator end() const noexcept { return {this, count_}; }

  // Room for count elements and units of text in all, so that a reader that knows its sizes
  // grows nothing while it appends.
  void reserve(std::size_t count, std::size_t units = 0);
  void push_back(std::u16string_view item);
  void set(std::size_t i, std::u16string_view item);
  void clear() noexcept;
  // Gives back what the last appends did not use.
  void shrink_to_fit();

  // Bytes held: the text block and the element table, at their capacity.
  [[nodiscard]] std::size_t capacityBytes() const noexcept;
  // Units in the block, including what overwritten elements left behind.
  [[nodiscard]] std::size_t textUnits() const noexcept { return text_.size; }
  [[nodiscard]] std::vector<String> toVector() const;

  friend ORVO_API bool operator==(const PackedStrings& a, const PackedStrings& b) noexcept;

 private:
  // Growth through realloc: for the large blocks a big file needs, the C library moves pages
  // (mremap) instead of copying them, so growing never holds the old and the new block at once.
  template <class T>
  struct Block {
    T* data = nullptr;
    std::size_t size = 0;
    std::size_t capacity = 0;
  };

  // A word is the start of the text in units (40 bits: a terabyte of text) above its length
  // (24 bits). A text of 16 M units or more is marked with all ones and has its length in the
  // two units before it: no line of a real file pays for lengths it never has.
  static constexpr unsigned kLengthBits = 24;
  static constexpr std::uint64_t kLongText = (std::uint64_t{1} << kLengthBits) - 1;
  static constexpr std::size_t kLengthUnits = 2;
  static std::size_t longLength(const char16_t* text) noexcept {
    return static_cast<std::size_t>(text[-2]) << 16 | text[-1];
  }
  // Appends the item (and its length, when long); the word that points at it.
  std::uint64_t appendText(std::u16string_view item);
  void compact();

  Block<char16_t> text_;
  Block<std::uint64_t> element_;
  std::size_t count_ = 0;      // elements in element_
  std::size_t abandoned_ = 0;  // units no element refers to any more
};

}  // namespace orvo
