#pragma once

#include <string_view>

// How the Windows file system compares names: each UTF-16 code unit upper-cased on its own
// (the volume's upcase table), then compared as numbers. Shared by the wildcard test and the
// directory listing, which must agree on what "the same name" is.
namespace orvo::platform::detail {

char16_t upcaseNameUnit(char16_t unit) noexcept;
bool nameOrderLess(std::u16string_view a, std::u16string_view b) noexcept;

}  // namespace orvo::platform::detail
