#pragma once

#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

// Storage for bytes that a read or a conversion fills right after it is sized: growing it
// leaves the new elements unwritten, where a vector would first fill them with zeros (a
// megabyte of zeros per call is more than counting a small file's lines costs).
namespace orvo::runtime {

template <class T>
struct DefaultInitAllocator : std::allocator<T> {
  static_assert(std::is_trivially_default_constructible_v<T>);
  template <class U>
  struct rebind {
    using other = DefaultInitAllocator<U>;
  };
  DefaultInitAllocator() noexcept = default;
  template <class U>
  explicit DefaultInitAllocator(const DefaultInitAllocator<U>& /*other*/) noexcept {}

  template <class U>
  void construct(U* p) noexcept {
    ::new (static_cast<void*>(p)) U;  // default-initialised: left as it was
  }
  template <class U, class... Args>
  void construct(U* p, Args&&... args) {
    ::new (static_cast<void*>(p)) U(std::forward<Args>(args)...);
  }
};

template <class T>
using Buffer = std::vector<T, DefaultInitAllocator<T>>;

}  // namespace orvo::runtime
