#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace orvo::platform {

// The characters of a path as the operating system takes them: bytes (UTF-8) on POSIX, UTF-16
// units on Windows.
#if defined(_WIN32)
using NativeChar = wchar_t;
#else
using NativeChar = char;
#endif

// A path in the operating system's own form, converted once from the library's UTF-16 path
// (where "\" and "/" both separate names), so that a caller keying a cache by it or handing it
// to several platform calls does not convert it again. Above the platform its text is opaque:
// it is compared, hashed and passed back, never taken apart.
class NativePath {
 public:
  using Text = std::basic_string<NativeChar>;

  NativePath() = default;
  explicit NativePath(std::u16string_view path);
  // A path the operating system itself gave (a link's target, a directory entry).
  static NativePath fromNative(Text text) {
    NativePath path;
    path.text_ = std::move(text);
    return path;
  }

  [[nodiscard]] const Text& native() const& noexcept { return text_; }
  [[nodiscard]] Text native() && noexcept { return std::move(text_); }
  [[nodiscard]] const NativeChar* c_str() const noexcept { return text_.c_str(); }
  [[nodiscard]] bool empty() const noexcept { return text_.empty(); }
  friend bool operator==(const NativePath&, const NativePath&) = default;

  struct Hash {
    std::size_t operator()(const NativePath& path) const noexcept {
      return std::hash<Text>{}(path.text_);
    }
  };

 private:
  Text text_;
};

}  // namespace orvo::platform
