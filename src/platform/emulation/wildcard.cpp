#include <unicode/uchar.h>

#include <algorithm>
#include <string>
#include <vector>

#include "platform/emulation/name_order.hpp"
#include "platform/file.hpp"

namespace orvo::platform {

namespace detail {

char16_t upcaseNameUnit(char16_t unit) noexcept {
  // A surrogate half has no case of its own; the upcase table leaves it alone.
  if (unit >= 0xD800 && unit <= 0xDFFF) return unit;
  const UChar32 upper = u_toupper(static_cast<UChar32>(unit));
  return upper <= 0xFFFF ? static_cast<char16_t>(upper) : unit;
}

bool nameOrderLess(std::u16string_view a, std::u16string_view b) noexcept {
  return std::lexicographical_compare(
      a.begin(), a.end(), b.begin(), b.end(),
      [](char16_t x, char16_t y) { return upcaseNameUnit(x) < upcaseNameUnit(y); });
}

}  // namespace detail

namespace {

// The directory search rewrites "*" before a dot, every "?", and a dot before a wildcard or at
// the end into these DOS forms before it matches; the characters cannot occur in a file name.
constexpr char16_t kDosStar = u'<';
constexpr char16_t kDosQm = u'>';
constexpr char16_t kDosDot = u'"';

std::u16string dosPattern(std::u16string_view pattern) {
  if (pattern == u"*.*") return u"*";
  std::u16string out(pattern);
  for (std::size_t i = 0; i < out.size(); ++i) {
    const char16_t next = i + 1 < out.size() ? out[i + 1] : u'\0';
    if (out[i] == u'?') {
      out[i] = kDosQm;
    } else if (out[i] == u'*' && next == u'.') {
      out[i] = kDosStar;
    } else if (out[i] == u'.' && (next == u'?' || next == u'*' || i + 1 == out.size())) {
      out[i] = kDosDot;
    }
  }
  return out;
}

class Matcher {
 public:
  Matcher(std::u16string_view name, std::u16string_view pattern)
      : name_(name),
        pattern_(pattern),
        lastDot_(name.rfind(u'.')),
        seen_((pattern.size() + 1) * (name.size() + 1), 0) {}

  bool match(std::size_t p, std::size_t n) {
    // Each (pattern, name) position is decided once: a pattern of many stars stays linear in
    // the name instead of exponential.
    char& memo = seen_[p * (name_.size() + 1) + n];
    if (memo != 0) return memo == 1;
    const bool result = step(p, n);
    memo = result ? 1 : 2;
    return result;
  }

 private:
  bool step(std::size_t p, std::size_t n) {
    if (p == pattern_.size()) return n == name_.size();
    const bool more = n < name_.size();
    switch (pattern_[p]) {
      case u'*':
        return match(p + 1, n) || (more && match(p, n + 1));
      case kDosStar:
        // Any run of characters that does not take the name's last dot.
        return match(p + 1, n) || (more && n != lastDot_ && match(p, n + 1));
      case u'?':
        return more && match(p + 1, n + 1);
      case kDosQm: {
        if (more && name_[n] != u'.') return match(p + 1, n + 1);
        // At a dot or the end of the name the run of "?" matches nothing.
        std::size_t q = p;
        while (q < pattern_.size() && pattern_[q] == kDosQm) ++q;
        return match(q, n);
      }
      case kDosDot:
        if (more && name_[n] == u'.') return match(p + 1, n + 1);
        return !more && match(p + 1, n);
      default:
        return more && detail::upcaseNameUnit(name_[n]) == detail::upcaseNameUnit(pattern_[p]) &&
               match(p + 1, n + 1);
    }
  }

  std::u16string_view name_;
  std::u16string_view pattern_;
  std::size_t lastDot_;
  std::vector<char> seen_;
};

}  // namespace

bool matchesWildcard(std::u16string_view name, std::u16string_view pattern) {
  const std::u16string dos = dosPattern(pattern);
  Matcher matcher(name, dos);
  return matcher.match(0, 0);
}

}  // namespace orvo::platform
