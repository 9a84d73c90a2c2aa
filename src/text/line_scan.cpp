#include "text/line_scan.hpp"

#include <algorithm>
#include <bit>
#include <cstring>
#include <string_view>

#include "platform/cpu_features.hpp"

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

// The line ends among p[from, n), one byte at a time; the byte before from is looked at.
std::uint64_t countBytesFrom(const std::uint8_t* p, std::size_t from, std::size_t n) noexcept {
  std::uint64_t total = 0;
  for (std::size_t i = from; i < n; ++i) {
    total += static_cast<std::uint64_t>(p[i] == kCr || (p[i] == kLf && p[i - 1] != kCr));
  }
  return total;
}

// Counting alone, in 8-bit text: each vector is compared with itself shifted back by one byte,
// so that an LF after a CR is told from the bytes themselves, with no carry from one vector to
// the next; the line ends are summed in byte lanes, emptied before they can overflow.
#if defined(ORVO_X86)
__attribute__((target("avx2"))) std::uint64_t countBytesAvx2(const std::uint8_t* p,
                                                             std::size_t n) noexcept {
  const __m256i cr = _mm256_set1_epi8(kCr);
  const __m256i lf = _mm256_set1_epi8(kLf);
  std::uint64_t total = 0;
  std::size_t i = 1;
  while (i + 32 <= n) {
    __m256i lanes = _mm256_setzero_si256();
    for (int round = 0; round < 255 && i + 32 <= n; ++round, i += 32) {
      const __m256i v = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + i));
      const __m256i before = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + i - 1));
      const __m256i ends = _mm256_or_si256(
          _mm256_cmpeq_epi8(v, cr),
          _mm256_andnot_si256(_mm256_cmpeq_epi8(before, cr), _mm256_cmpeq_epi8(v, lf)));
      lanes = _mm256_sub_epi8(lanes, ends);
    }
    const __m256i sums = _mm256_sad_epu8(lanes, _mm256_setzero_si256());
    total += static_cast<std::uint64_t>(_mm256_extract_epi64(sums, 0)) +
             static_cast<std::uint64_t>(_mm256_extract_epi64(sums, 1)) +
             static_cast<std::uint64_t>(_mm256_extract_epi64(sums, 2)) +
             static_cast<std::uint64_t>(_mm256_extract_epi64(sums, 3));
  }
  return total + countBytesFrom(p, i, n);
}

__attribute__((target("avx512f,avx512bw"))) std::uint64_t countBytesAvx512(const std::uint8_t* p,
                                                                           std::size_t n) noexcept {
  const __m512i cr = _mm512_set1_epi8(kCr);
  const __m512i lf = _mm512_set1_epi8(kLf);
  std::uint64_t total = 0;
  std::size_t i = 1;
  for (; i + 64 <= n; i += 64) {
    const __m512i v = _mm512_loadu_si512(p + i);
    const __m512i before = _mm512_loadu_si512(p + i - 1);
    const __mmask64 ends = _mm512_cmpeq_epi8_mask(v, cr) |
                           (_mm512_cmpeq_epi8_mask(v, lf) & ~_mm512_cmpeq_epi8_mask(before, cr));
    total += static_cast<std::uint64_t>(std::popcount(ends));
  }
  return total + countBytesFrom(p, i, n);
}
#endif

std::uint64_t countBytesPortable(const std::uint8_t* p, std::size_t n) noexcept {
  return countBytesFrom(p, 1, n);
}

// The same for any unit: the first byte on its own (the byte before it is the caller's), the
// rest by the counter of the unit chosen.
template <std::uint64_t (*Count)(const std::uint8_t*, std::size_t) noexcept>
LineEndScan countBytes(const std::uint8_t* p, std::size_t n, bool afterCr) noexcept {
  LineEndScan r;
  r.lastWasCr = afterCr;
  if (n == 0) return r;
  r.ends = static_cast<std::uint64_t>(p[0] == kCr || (p[0] == kLf && !afterCr)) + Count(p, n);
  r.stop = n;
  r.lastWasCr = p[n - 1] == kCr;
  r.lastWasBreak = r.lastWasCr || p[n - 1] == kLf;
  return r;
}

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
  }
  r.stop = units * w;
  r.lastWasCr = carry != 0;
  if (units > 0) {
    const std::uint32_t last = unitAt(p + (units - 1) * w, form);
    r.lastWasBreak = last == kCr || last == kLf;
  }
  return r;
}

[[gnu::flatten]] LineEndScan scanPortable(const std::uint8_t* p, std::size_t n, UnitForm form,
                                          bool afterCr, std::uint64_t limit) noexcept {
  if (form.width == 1 && limit > n) return countBytes<countBytesPortable>(p, n, afterCr);
  return scanWith<Portable>(p, n, form, afterCr, limit);
}

#if defined(ORVO_X86)
__attribute__((target("avx2"), flatten)) LineEndScan scanAvx2(const std::uint8_t* p, std::size_t n,
                                                              UnitForm form, bool afterCr,
                                                              std::uint64_t limit) noexcept {
  // More line ends than bytes cannot be asked for: this is a count, not a search.
  if (form.width == 1 && limit > n) return countBytes<countBytesAvx2>(p, n, afterCr);
  return scanWith<Avx2>(p, n, form, afterCr, limit);
}

__attribute__((target("avx512f,avx512bw"), flatten)) LineEndScan scanAvx512(
    const std::uint8_t* p, std::size_t n, UnitForm form, bool afterCr,
    std::uint64_t limit) noexcept {
  if (form.width == 1 && limit > n) return countBytes<countBytesAvx512>(p, n, afterCr);
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
  if (unit == "avx512") return platform::cpuFeatures().avx512bw;
  if (unit == "avx2") return platform::cpuFeatures().avx2;
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
