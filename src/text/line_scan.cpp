#include "text/line_scan.hpp"

#include <algorithm>
#include <bit>
#include <cstring>
#include <string_view>

#if defined(__x86_64__) || defined(__i386__)
#include <immintrin.h>
#define ORVO_X86 1
#endif

namespace orvo::text {

namespace {

constexpr std::uint32_t kCr = 13;
constexpr std::uint32_t kLf = 10;
constexpr std::size_t kBlock = 64;  // units per mask

struct Masks {
  std::uint64_t cr = 0;
  std::uint64_t lf = 0;
};

std::uint32_t unitAt(const std::uint8_t* p, UnitForm form) noexcept {
  switch (form.width) {
    case 1:
      return p[0];
    case 2:
      return form.bigEndian ? (std::uint32_t{p[0]} << 8) | p[1] : p[0] | (std::uint32_t{p[1]} << 8);
    default:
      return form.bigEndian ? (std::uint32_t{p[0]} << 24) | (std::uint32_t{p[1]} << 16) |
                                  (std::uint32_t{p[2]} << 8) | p[3]
                            : p[0] | (std::uint32_t{p[1]} << 8) | (std::uint32_t{p[2]} << 16) |
                                  (std::uint32_t{p[3]} << 24);
  }
}

// Any number of units up to a block, one at a time: the tail of every buffer, the whole of
// UTF-32 text, and everything on processors without a vector unit the scan knows.
Masks portableMasks(const std::uint8_t* p, std::size_t count, UnitForm form) noexcept {
  Masks m;
  for (std::size_t i = 0; i < count; ++i) {
    const std::uint32_t v = unitAt(p + i * form.width, form);
    m.cr |= std::uint64_t{v == kCr} << i;
    m.lf |= std::uint64_t{v == kLf} << i;
  }
  return m;
}

struct Portable {
  static Masks block(const std::uint8_t* p, UnitForm form) noexcept {
    return portableMasks(p, kBlock, form);
  }
};

#if defined(ORVO_X86)
struct Avx2 {
  // Two 16-bit comparisons packed to bytes: the pack interleaves the 128-bit lanes, which the
  // permutation puts back in unit order.
  __attribute__((target("avx2"))) static std::uint32_t units32(const std::uint8_t* p,
                                                               __m256i unit) noexcept {
    const __m256i a =
        _mm256_cmpeq_epi16(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)), unit);
    const __m256i b =
        _mm256_cmpeq_epi16(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + 32)), unit);
    const __m256i packed = _mm256_permute4x64_epi64(_mm256_packs_epi16(a, b), 0xD8);
    return static_cast<std::uint32_t>(_mm256_movemask_epi8(packed));
  }
  __attribute__((target("avx2"))) static std::uint32_t bytes32(const std::uint8_t* p,
                                                               __m256i unit) noexcept {
    return static_cast<std::uint32_t>(_mm256_movemask_epi8(
        _mm256_cmpeq_epi8(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)), unit)));
  }
  __attribute__((target("avx2"))) static std::uint64_t bytes64(const std::uint8_t* p,
                                                               __m256i unit) noexcept {
    return bytes32(p, unit) | (std::uint64_t{bytes32(p + 32, unit)} << 32);
  }
  __attribute__((target("avx2"))) static Masks block(const std::uint8_t* p,
                                                     UnitForm form) noexcept {
    if (form.width == 1) {
      return {bytes64(p, _mm256_set1_epi8(kCr)), bytes64(p, _mm256_set1_epi8(kLf))};
    }
    if (form.width == 2) {
      const auto shift = form.bigEndian ? 8 : 0;
      const __m256i cr = _mm256_set1_epi16(static_cast<short>(kCr << shift));
      const __m256i lf = _mm256_set1_epi16(static_cast<short>(kLf << shift));
      return {units32(p, cr) | (std::uint64_t{units32(p + 64, cr)} << 32),
              units32(p, lf) | (std::uint64_t{units32(p + 64, lf)} << 32)};
    }
    return portableMasks(p, kBlock, form);
  }
};

struct Avx512 {
  __attribute__((target("avx512f,avx512bw"))) static Masks block(const std::uint8_t* p,
                                                                 UnitForm form) noexcept {
    if (form.width == 1) {
      const __m512i v = _mm512_loadu_si512(p);
      return {_mm512_cmpeq_epi8_mask(v, _mm512_set1_epi8(kCr)),
              _mm512_cmpeq_epi8_mask(v, _mm512_set1_epi8(kLf))};
    }
    if (form.width == 2) {
      const auto shift = form.bigEndian ? 8 : 0;
      const __m512i cr = _mm512_set1_epi16(static_cast<short>(kCr << shift));
      const __m512i lf = _mm512_set1_epi16(static_cast<short>(kLf << shift));
      const __m512i a = _mm512_loadu_si512(p);
      const __m512i b = _mm512_loadu_si512(p + 64);
      return {
          _mm512_cmpeq_epi16_mask(a, cr) | (std::uint64_t{_mm512_cmpeq_epi16_mask(b, cr)} << 32),
          _mm512_cmpeq_epi16_mask(a, lf) | (std::uint64_t{_mm512_cmpeq_epi16_mask(b, lf)} << 32)};
    }
    return portableMasks(p, kBlock, form);
  }
};
#endif

// The scan over blocks. A CR LF pair ends one line: an LF counts unless the unit before it,
// carried across blocks and buffers, is a CR.
template <class Unit>
inline LineEndScan scanWith(const std::uint8_t* p, std::size_t n, UnitForm form, bool afterCr,
                            std::uint64_t limit) noexcept {
  LineEndScan r;
  r.lastWasCr = afterCr;
  if (limit == 0) return r;
  const std::size_t w = form.width;
  const std::size_t units = n / w;
  std::uint64_t carry = afterCr ? 1 : 0;
  for (std::size_t u = 0; u < units; u += kBlock) {
    const std::size_t count = std::min(kBlock, units - u);
    const Masks m =
        count == kBlock ? Unit::block(p + u * w, form) : portableMasks(p + u * w, count, form);
    const std::uint64_t ends = m.cr | (m.lf & ~((m.cr << 1) | carry));
    const auto found = static_cast<std::uint64_t>(std::popcount(ends));
    if (r.ends + found >= limit) {
      std::uint64_t e = ends;
      for (std::uint64_t skip = limit - r.ends; skip > 1; --skip) e &= e - 1;
      const auto bit = static_cast<std::size_t>(std::countr_zero(e));
      r.ends = limit;
      r.stop = (u + bit + 1) * w;
      r.lastWasCr = ((m.cr >> bit) & 1) != 0;
      r.lastWasBreak = true;
      return r;
    }
    r.ends += found;
    carry = (m.cr >> (count - 1)) & 1;
    r.lastWasBreak = (((m.cr | m.lf) >> (count - 1)) & 1) != 0;
  }
  r.stop = units * w;
  r.lastWasCr = carry != 0;
  return r;
}

LineEndScan scanPortable(const std::uint8_t* p, std::size_t n, UnitForm form, bool afterCr,
                         std::uint64_t limit) noexcept {
  return scanWith<Portable>(p, n, form, afterCr, limit);
}

#if defined(ORVO_X86)
__attribute__((target("avx2"))) LineEndScan scanAvx2(const std::uint8_t* p, std::size_t n,
                                                     UnitForm form, bool afterCr,
                                                     std::uint64_t limit) noexcept {
  return scanWith<Avx2>(p, n, form, afterCr, limit);
}

__attribute__((target("avx512f,avx512bw"))) LineEndScan scanAvx512(const std::uint8_t* p,
                                                                   std::size_t n, UnitForm form,
                                                                   bool afterCr,
                                                                   std::uint64_t limit) noexcept {
  return scanWith<Avx512>(p, n, form, afterCr, limit);
}
#endif

using ScanFunction = LineEndScan (*)(const std::uint8_t*, std::size_t, UnitForm, bool,
                                     std::uint64_t) noexcept;

struct Choice {
  ScanFunction scan;
  const char* name;
};

bool supported(std::string_view unit) noexcept {
#if defined(ORVO_X86)
  if (unit == "avx512") {
    return __builtin_cpu_supports("avx512f") != 0 && __builtin_cpu_supports("avx512bw") != 0;
  }
  if (unit == "avx2") return __builtin_cpu_supports("avx2") != 0;
#endif
  return unit == "portable";
}

ScanFunction functionFor(std::string_view unit) noexcept {
#if defined(ORVO_X86)
  if (unit == "avx512") return scanAvx512;
  if (unit == "avx2") return scanAvx2;
#endif
  return scanPortable;
}

// Chosen at the first scan, not at start-up: most calls never count a line.
const Choice& choice() noexcept {
  static const Choice chosen = [] {
    for (const char* unit : {"avx512", "avx2"}) {
      if (supported(unit)) return Choice{functionFor(unit), unit};
    }
    return Choice{scanPortable, "portable"};
  }();
  return chosen;
}

}  // namespace

LineEndScan scanLineEnds(const std::uint8_t* p, std::size_t n, UnitForm form, bool afterCr,
                         std::uint64_t limit) noexcept {
  return choice().scan(p, n, form, afterCr, limit);
}

const char* lineScanUnit() noexcept { return choice().name; }

bool scanLineEndsWith(const char* unit, const std::uint8_t* p, std::size_t n, UnitForm form,
                      bool afterCr, std::uint64_t limit, LineEndScan& out) noexcept {
  if (!supported(unit)) return false;
  out = functionFor(unit)(p, n, form, afterCr, limit);
  return true;
}

}  // namespace orvo::text
