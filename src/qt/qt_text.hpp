#pragma once

#include <QString>
#include <string_view>

namespace orvo::qt {

// The library's UTF-16 text as Qt's: the same code units, copied.
inline QString toQ(std::u16string_view text) {
  return QString::fromUtf16(text.data(), static_cast<qsizetype>(text.size()));
}

}  // namespace orvo::qt
