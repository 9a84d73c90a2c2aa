#include "text/line_breaks.hpp"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace orvo::text {

std::size_t findLineBreak(const std::uint8_t* p, std::size_t n) noexcept {
  std::size_t i = 0;
#if defined(__SSE2__)
  const __m128i cr = _mm_set1_epi8(13);
  const __m128i lf = _mm_set1_epi8(10);
  for (; i + 16 <= n; i += 16) {
    const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + i));
    const int m = _mm_movemask_epi8(_mm_or_si128(_mm_cmpeq_epi8(v, cr), _mm_cmpeq_epi8(v, lf)));
    if (m != 0) return i + static_cast<std::size_t>(__builtin_ctz(static_cast<unsigned>(m)));
  }
#endif
  for (; i < n; ++i) {
    if (p[i] == 13 || p[i] == 10) return i;
  }
  return n;
}

std::size_t findLineBreak(const char16_t* p, std::size_t n) noexcept {
  std::size_t i = 0;
#if defined(__SSE2__)
  const __m128i cr = _mm_set1_epi16(13);
  const __m128i lf = _mm_set1_epi16(10);
  for (; i + 8 <= n; i += 8) {
    const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + i));
    const int m = _mm_movemask_epi8(_mm_or_si128(_mm_cmpeq_epi16(v, cr), _mm_cmpeq_epi16(v, lf)));
    if (m != 0) return i + static_cast<std::size_t>(__builtin_ctz(static_cast<unsigned>(m))) / 2;
  }
#endif
  for (; i < n; ++i) {
    if (p[i] == u'\r' || p[i] == u'\n') return i;
  }
  return n;
}

}  // namespace orvo::text
