// Conversions between UTF-16 and the Windows code pages with the platform's own answers, flags
// 0: best-fit characters, "?" for what a page cannot hold (one per UTF-16 code unit), the
// platform's treatment of undefined bytes and broken double-byte sequences. The fourteen ANSI
// code pages run on the recorded tables; UTF-8 is decoded here; other pages go to ICU.

#include <algorithm>
#include <bit>
#include <cstring>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif
#if defined(__x86_64__) && (defined(__GNUC__) || defined(__clang__))
#include <immintrin.h>
#define ORVO_UTF8_SHUFFLE 1
#endif

#include "platform/codepage.hpp"
#include "platform/cpu_features.hpp"
#include "platform/emulation/codepage_tables.hpp"

namespace orvo::platform {

namespace {

const tables::CodePageTable* tableFor(std::uint32_t codePage) {
  const auto* begin = tables::kCodePages;
  const auto* end = begin + tables::kCodePageCount;
  const auto* it = std::lower_bound(
      begin, end, codePage,
      [](const tables::CodePageTable& t, std::uint32_t cp) { return t.codePage < cp; });
  return it != end && it->codePage == codePage ? it : nullptr;
}

#if !defined(__SSE2__)
// Eight bytes at a time while they are all below 0x80.
inline std::size_t asciiRun(const std::uint8_t* in, std::size_t n) {
  std::size_t i = 0;
  for (; i + 8 <= n; i += 8) {
    std::uint64_t word = 0;
    std::memcpy(&word, in + i, 8);
    if ((word & 0x8080808080808080ULL) != 0) break;
  }
  while (i < n && in[i] < 0x80) ++i;
  return i;
}
#endif

// Widens the sixteen bytes at in to out and returns how many of them lead as ASCII (16: all).
// Text in these files is mostly ASCII with a character of another kind every few words, so the
// cost that matters is getting back onto the fast path after each one. Every decoder here
// writes at most one unit per byte it has consumed, so the sixteen units stay inside a buffer
// of one unit per input byte whenever sixteen input bytes remain.
inline std::size_t asciiBlock(const std::uint8_t* in, char16_t* out) {
#if defined(__SSE2__)
  const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in));
  const __m128i zero = _mm_setzero_si128();
  _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm_unpacklo_epi8(v, zero));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(out + 8), _mm_unpackhi_epi8(v, zero));
  const int high = _mm_movemask_epi8(v);
  return high == 0 ? 16 : static_cast<std::size_t>(__builtin_ctz(static_cast<unsigned>(high)));
#else
  for (std::size_t i = 0; i < 16; ++i) out[i] = in[i];
  return asciiRun(in, 16);
#endif
}

// The same for eight bytes, for the tail of a line too short for sixteen.
inline std::size_t asciiBlock8(const std::uint8_t* in, char16_t* out) {
#if defined(__SSE2__)
  const __m128i v = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(in));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm_unpacklo_epi8(v, _mm_setzero_si128()));
  const unsigned high = static_cast<unsigned>(_mm_movemask_epi8(v)) & 0xFFU;
  return high == 0 ? 8 : static_cast<std::size_t>(__builtin_ctz(high));
#else
  std::size_t k = 0;
  while (k < 8 && in[k] < 0x80) {
    out[k] = in[k];
    ++k;
  }
  return k;
#endif
}

// Narrows the eight units at in to out and returns how many of them lead below 0x80.
inline std::size_t asciiBlock(const char16_t* in, std::uint8_t* out) {
#if defined(__SSE2__)
  const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in));
  // Units of 0x80 and above have a bit set beyond the low seven.
  const __m128i above = _mm_cmpeq_epi16(
      _mm_and_si128(v, _mm_set1_epi16(static_cast<short>(0xFF80))), _mm_setzero_si128());
  _mm_storel_epi64(reinterpret_cast<__m128i*>(out), _mm_packus_epi16(v, v));
  const unsigned ascii = static_cast<unsigned>(_mm_movemask_epi8(above));
  return ascii == 0xFFFF ? 8 : static_cast<std::size_t>(__builtin_ctz(~ascii)) / 2;
#else
  std::size_t k = 0;
  while (k < 8 && in[k] < 0x80) {
    out[k] = static_cast<std::uint8_t>(in[k]);
    ++k;
  }
  return k;
#endif
}

std::size_t decodeTable(const tables::CodePageTable& t, const std::uint8_t* in, std::size_t n,
                        char16_t* out) {
  char16_t* const start = out;
  std::size_t i = 0;
#if defined(__SSE2__)
  if (!t.doubleByte && t.asciiIdentity) {
    // One byte is one unit: sixteen are widened at once and only the few above 0x7F are
    // looked up afterwards, so an accent every few words costs a lookup, not a restart.
    for (; i + 16 <= n; i += 16, out += 16) {
      const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + i));
      const __m128i zero = _mm_setzero_si128();
      _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm_unpacklo_epi8(v, zero));
      _mm_storeu_si128(reinterpret_cast<__m128i*>(out + 8), _mm_unpackhi_epi8(v, zero));
      for (auto high = static_cast<unsigned>(_mm_movemask_epi8(v)); high != 0; high &= high - 1) {
        const auto j = static_cast<std::size_t>(__builtin_ctz(high));
        out[j] = t.single[in[i + j]];
      }
    }
    if (i + 8 <= n) {
      const __m128i v = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(in + i));
      _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm_unpacklo_epi8(v, _mm_setzero_si128()));
      for (auto high = static_cast<unsigned>(_mm_movemask_epi8(v)) & 0xFFU; high != 0;
           high &= high - 1) {
        const auto j = static_cast<std::size_t>(__builtin_ctz(high));
        out[j] = t.single[in[i + j]];
      }
      i += 8;
      out += 8;
    }
  }
#endif
  while (i < n) {
    if (t.asciiIdentity && i + 16 <= n) {
      const std::size_t k = asciiBlock(in + i, out);
      out += k;
      i += k;
      if (k == 16) continue;
    }
    // Text in a double-byte page runs in stretches of its own characters: those are taken
    // one after another before the next attempt at sixteen ASCII bytes.
    do {
      const std::uint8_t b = in[i];
      const std::uint16_t row = t.rowOf[b];
      // A lead byte takes the next byte with it unless that is NUL or there is none: the
      // pair is one character or one default character, so a broken trail byte is swallowed.
      if (row != 0xFFFF && i + 1 < n && in[i + 1] != 0) {
        *out++ = t.rows[static_cast<std::size_t>(row) * 256 + in[i + 1]];
        i += 2;
      } else {
        *out++ = t.single[b];
        ++i;
      }
    } while (i < n && (!t.asciiIdentity || in[i] >= 0x80));
  }
  return static_cast<std::size_t>(out - start);
}

std::size_t encodeTable(const tables::CodePageTable& t, const char16_t* in, std::size_t n,
                        std::uint8_t* out) {
  std::uint8_t* const start = out;
  std::size_t i = 0;
  while (i < n) {
    // Eight bytes written for at most eight consumed units: within a buffer of one per unit.
    if (t.asciiIdentity && i + 8 <= n) {
      const std::size_t k = asciiBlock(in + i, out);
      out += k;
      i += k;
      if (k == 8) continue;
    }
    // A stretch of characters beyond ASCII is taken whole before the next ASCII attempt.
    do {
      const char16_t c = in[i++];
      const std::uint16_t v =
          t.pages[static_cast<std::size_t>(t.pageOf[c >> 8]) * 256 + (c & 0xFF)];
      if (v >= 0x100) *out++ = static_cast<std::uint8_t>(v >> 8);
      *out++ = static_cast<std::uint8_t>(v);
    } while (i < n && (!t.asciiIdentity || in[i] >= 0x80));
  }
  return static_cast<std::size_t>(out - start);
}

// UTF-8 as the platform reads it with flags 0: each broken piece becomes one U+FFFD. The second
// byte decides first: not a continuation byte, and the lead byte alone is the piece; a
// continuation byte outside what the lead allows (an overlong form, a surrogate, beyond
// U+10FFFF), and the two bytes are the piece. After that the piece is the lead byte and the
// continuation bytes it had when one is missing.
std::size_t decodeUtf8(const std::uint8_t* in, std::size_t n, char16_t* out) {
  char16_t* const start = out;
  std::size_t i = 0;
  while (i < n) {
    if (i + 16 <= n) {
      const std::size_t k = asciiBlock(in + i, out);
      out += k;
      i += k;
      if (k == 16) continue;
    } else if (i + 8 <= n) {
      const std::size_t k = asciiBlock8(in + i, out);
      out += k;
      i += k;
      if (k == 8) continue;
    } else if (in[i] < 0x80) {
      *out++ = in[i++];
      continue;
    }
    const std::uint8_t b = in[i];
    // Two-byte characters (western accents) before the general rules.
    if (b >= 0xC2 && b <= 0xDF && i + 1 < n && (in[i + 1] & 0xC0) == 0x80) {
      *out++ = static_cast<char16_t>((b & 0x1F) << 6 | (in[i + 1] & 0x3F));
      i += 2;
      continue;
    }
    const std::size_t len = b >= 0xC2 && b <= 0xDF   ? 2
                            : b >= 0xE0 && b <= 0xEF ? 3
                            : b >= 0xF0 && b <= 0xF4 ? 4
                                                     : 0;
    if (len == 0 || i + 1 == n || (in[i + 1] & 0xC0) != 0x80) {
      *out++ = 0xFFFD;
      ++i;
      continue;
    }
    const std::uint8_t second = in[i + 1];
    const std::uint8_t low = b == 0xE0 ? 0xA0 : b == 0xF0 ? 0x90 : 0x80;
    const std::uint8_t high = b == 0xED ? 0x9F : b == 0xF4 ? 0x8F : 0xBF;
    if (second < low || second > high) {
      *out++ = 0xFFFD;
      i += 2;
      continue;
    }
    std::size_t k = 2;
    while (k < len && i + k < n && (in[i + k] & 0xC0) == 0x80) ++k;
    if (k < len) {
      *out++ = 0xFFFD;
      i += k;
      continue;
    }
    char32_t cp = b & (0xFF >> (len + 1));
    for (k = 1; k < len; ++k) cp = cp << 6 | (in[i + k] & 0x3F);
    if (cp >= 0x10000) {
      *out++ = static_cast<char16_t>(0xD800 + ((cp - 0x10000) >> 10));
      *out++ = static_cast<char16_t>(0xDC00 + ((cp - 0x10000) & 0x3FF));
    } else {
      *out++ = static_cast<char16_t>(cp);
    }
    i += len;
  }
  return static_cast<std::size_t>(out - start);
}

// One character from in[i] (two units for a surrogate pair, i moved past the first); a
// surrogate that is not half of a pair is written as U+FFFD.
inline std::uint8_t* encodeUtf8Unit(const char16_t* in, std::size_t& i, std::size_t n,
                                    std::uint8_t* out) {
  char32_t c = in[i];
  if (c < 0x80) {
    *out++ = static_cast<std::uint8_t>(c);
    return out;
  }
  if (c < 0x800) {  // western accents, the common case, before the surrogate tests
    out[0] = static_cast<std::uint8_t>(0xC0 | (c >> 6));
    out[1] = static_cast<std::uint8_t>(0x80 | (c & 0x3F));
    return out + 2;
  }
  if (c >= 0xD800 && c <= 0xDBFF && i + 1 < n && in[i + 1] >= 0xDC00 && in[i + 1] <= 0xDFFF) {
    c = 0x10000 + ((c - 0xD800) << 10) + (in[i + 1] - 0xDC00);
    ++i;
  } else if (c >= 0xD800 && c <= 0xDFFF) {
    c = 0xFFFD;
  }
  if (c < 0x10000) {
    *out++ = static_cast<std::uint8_t>(0xE0 | (c >> 12));
    *out++ = static_cast<std::uint8_t>(0x80 | ((c >> 6) & 0x3F));
  } else {
    *out++ = static_cast<std::uint8_t>(0xF0 | (c >> 18));
    *out++ = static_cast<std::uint8_t>(0x80 | ((c >> 12) & 0x3F));
    *out++ = static_cast<std::uint8_t>(0x80 | ((c >> 6) & 0x3F));
  }
  *out++ = static_cast<std::uint8_t>(0x80 | (c & 0x3F));
  return out;
}

std::size_t encodeUtf8Portable(const char16_t* in, std::size_t n, std::uint8_t* out) {
  std::uint8_t* const start = out;
  for (std::size_t i = 0; i < n; ++i) {
    if (i + 8 <= n) {
      const std::size_t k = asciiBlock(in + i, out);
      out += k;
      i += k;
      if (k == 8) {
        --i;  // the loop's own step
        continue;
      }
    }
    out = encodeUtf8Unit(in, i, n, out);
  }
  return static_cast<std::size_t>(out - start);
}

#if defined(ORVO_UTF8_SHUFFLE)
// For eight units below 0x800, each one byte (ASCII) or two: the byte shuffle that keeps, for
// lane j, its low byte and, when bit j of the index is set, its high byte too; and how many
// bytes that makes.
struct Utf8Shuffles {
  std::uint8_t bytes[256][16];
  std::uint8_t length[256];
};
constexpr Utf8Shuffles makeUtf8Shuffles() {
  Utf8Shuffles t{};
  for (unsigned mask = 0; mask < 256; ++mask) {
    unsigned k = 0;
    for (unsigned j = 0; j < 8; ++j) {
      t.bytes[mask][k++] = static_cast<std::uint8_t>(2 * j);
      if ((mask >> j & 1U) != 0) t.bytes[mask][k++] = static_cast<std::uint8_t>(2 * j + 1);
    }
    t.length[mask] = static_cast<std::uint8_t>(k);
    while (k < 16) t.bytes[mask][k++] = 0x80;  // zero: past the end of the written bytes
  }
  return t;
}
alignas(16) constexpr Utf8Shuffles kUtf8Shuffles = makeUtf8Shuffles();

// For four characters of the basic plane in 32-bit lanes, each written as its one, two or three
// bytes at the lane's start: the shuffle that squeezes them together. Bit j of the index's low
// half says lane j has more than one byte, bit j of its high half that it has three.
constexpr Utf8Shuffles makeUtf8WideShuffles() {
  Utf8Shuffles t{};
  for (unsigned index = 0; index < 256; ++index) {
    unsigned k = 0;
    for (unsigned j = 0; j < 4; ++j) {
      const unsigned bytes = 1 + (index >> j & 1U) + (index >> (j + 4) & 1U);
      for (unsigned b = 0; b < bytes; ++b)
        t.bytes[index][k++] = static_cast<std::uint8_t>(4 * j + b);
    }
    t.length[index] = static_cast<std::uint8_t>(k);
    while (k < 16) t.bytes[index][k++] = 0x80;
  }
  return t;
}
alignas(16) constexpr Utf8Shuffles kUtf8WideShuffles = makeUtf8WideShuffles();

// Four characters below 0x10000 and outside the surrogates, in 32-bit lanes, to out; the bytes
// written. Sixteen bytes are stored for at most twelve written.
__attribute__((target("ssse3"))) inline std::size_t encodeUtf8Wide4(__m128i c, std::uint8_t* out) {
  const __m128i low6 = _mm_or_si128(_mm_and_si128(c, _mm_set1_epi32(0x3F)), _mm_set1_epi32(0x80));
  const __m128i mid6 =
      _mm_or_si128(_mm_and_si128(_mm_srli_epi32(c, 6), _mm_set1_epi32(0x3F)), _mm_set1_epi32(0x80));
  const __m128i three =
      _mm_or_si128(_mm_or_si128(_mm_srli_epi32(c, 12), _mm_set1_epi32(0xE0)),
                   _mm_or_si128(_mm_slli_epi32(mid6, 8), _mm_slli_epi32(low6, 16)));
  const __m128i two = _mm_or_si128(_mm_or_si128(_mm_srli_epi32(c, 6), _mm_set1_epi32(0xC0)),
                                   _mm_slli_epi32(low6, 8));
  const __m128i isOne = _mm_cmplt_epi32(c, _mm_set1_epi32(0x80));
  const __m128i isThree = _mm_cmpgt_epi32(c, _mm_set1_epi32(0x7FF));
  const __m128i lanes =
      _mm_or_si128(_mm_or_si128(_mm_and_si128(isOne, c), _mm_and_si128(isThree, three)),
                   _mm_andnot_si128(_mm_or_si128(isOne, isThree), two));
  const auto index = static_cast<unsigned>(
      _mm_movemask_ps(_mm_castsi128_ps(_mm_xor_si128(isOne, _mm_set1_epi32(-1)))) |
      _mm_movemask_ps(_mm_castsi128_ps(isThree)) << 4);
  const __m128i shuffle =
      _mm_load_si128(reinterpret_cast<const __m128i*>(kUtf8WideShuffles.bytes[index]));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm_shuffle_epi8(lanes, shuffle));
  return kUtf8WideShuffles.length[index];
}

// Text with an accent every few words never has a long ASCII run, so eight units are encoded at
// once unless a surrogate is among them: ASCII lanes as one byte, the others as their two-byte
// form, squeezed together by one byte shuffle; with a character of three bytes among them, four
// at a time in 32-bit lanes (SSSE3, chosen at run time).
__attribute__((target("ssse3"))) std::size_t encodeUtf8Shuffle(const char16_t* in, std::size_t n,
                                                               std::uint8_t* out) {
  std::uint8_t* const start = out;
  std::size_t i = 0;
  // The output holds three bytes a unit. With sixteen units left, every store below (at most
  // sixteen bytes, each for units that take at least a third of them) stays inside it.
  while (i + 16 <= n) {
    const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + i));
    const __m128i w = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + i + 8));
    const __m128i highBits = _mm_set1_epi16(static_cast<short>(0xFF80));
    if (_mm_movemask_epi8(_mm_cmpeq_epi16(_mm_and_si128(_mm_or_si128(v, w), highBits),
                                          _mm_setzero_si128())) == 0xFFFF) {
      _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm_packus_epi16(v, w));
      out += 16;
      i += 16;
      continue;
    }
    const __m128i ascii = _mm_cmpeq_epi16(_mm_and_si128(v, highBits), _mm_setzero_si128());
    if (_mm_movemask_epi8(ascii) == 0xFFFF) {
      _mm_storel_epi64(reinterpret_cast<__m128i*>(out), _mm_packus_epi16(v, v));
      out += 8;
      i += 8;
      continue;
    }
    const __m128i twoByte = _mm_cmpeq_epi16(
        _mm_and_si128(v, _mm_set1_epi16(static_cast<short>(0xF800))), _mm_setzero_si128());
    if (_mm_movemask_epi8(twoByte) != 0xFFFF) {
      const __m128i surrogate =
          _mm_cmpeq_epi16(_mm_and_si128(v, _mm_set1_epi16(static_cast<short>(0xF800))),
                          _mm_set1_epi16(static_cast<short>(0xD800)));
      if (_mm_movemask_epi8(surrogate) != 0) {
        // A surrogate: these eight go one by one (a pair may take the ninth unit with it).
        for (const std::size_t end = i + 8; i < end; ++i) out = encodeUtf8Unit(in, i, n, out);
        continue;
      }
      out += encodeUtf8Wide4(_mm_unpacklo_epi16(v, _mm_setzero_si128()), out);
      out += encodeUtf8Wide4(_mm_unpackhi_epi16(v, _mm_setzero_si128()), out);
      i += 8;
      continue;
    }
    const __m128i lead = _mm_or_si128(_mm_srli_epi16(v, 6), _mm_set1_epi16(0x00C0));
    const __m128i trail = _mm_slli_epi16(
        _mm_or_si128(_mm_and_si128(v, _mm_set1_epi16(0x003F)), _mm_set1_epi16(0x0080)), 8);
    const __m128i lanes =
        _mm_or_si128(_mm_and_si128(ascii, v), _mm_andnot_si128(ascii, _mm_or_si128(lead, trail)));
    const auto twoMask =
        static_cast<unsigned>(_mm_movemask_epi8(_mm_packs_epi16(
                                  _mm_xor_si128(ascii, _mm_set1_epi16(-1)), _mm_setzero_si128())) &
                              0xFF);
    const __m128i shuffle =
        _mm_load_si128(reinterpret_cast<const __m128i*>(kUtf8Shuffles.bytes[twoMask]));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm_shuffle_epi8(lanes, shuffle));
    out += kUtf8Shuffles.length[twoMask];
    i += 8;
  }
  for (; i < n; ++i) out = encodeUtf8Unit(in, i, n, out);
  return static_cast<std::size_t>(out - start);
}
#endif

#if defined(ORVO_UTF8_SHUFFLE)
// Sixteen characters a step without a branch on what they are: each widened to a 32-bit lane
// that holds its one, two or three bytes, and the bytes that count squeezed out of the 64 by
// one compression (AVX-512 VBMI2). Only a surrogate among them sends the sixteen one by one.
// The compression writes to a register and the register is stored: compressing straight to
// memory is many times slower on some processors that have it.
__attribute__((target("avx512f,avx512bw,avx512vbmi2,popcnt"))) std::size_t encodeUtf8Compress(
    const char16_t* in, std::size_t n, std::uint8_t* out) {
  std::uint8_t* const start = out;
  std::size_t i = 0;
  const __m512i sixBits = _mm512_set1_epi32(0x3F);
  const __m512i trailMark = _mm512_set1_epi32(0x80);
  // The output holds three bytes a unit: with 32 units left, a 64-byte store stays inside it.
  while (i + 32 <= n) {
    const __m256i units = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(in + i));
    const __m512i c = _mm512_cvtepu16_epi32(units);
    const __mmask16 surrogate = _mm512_cmpeq_epi32_mask(
        _mm512_and_si512(c, _mm512_set1_epi32(0xF800)), _mm512_set1_epi32(0xD800));
    if (surrogate != 0) {
      for (const std::size_t end = i + 16; i < end; ++i) out = encodeUtf8Unit(in, i, n, out);
      continue;
    }
    const __m512i low6 = _mm512_or_si512(_mm512_and_si512(c, sixBits), trailMark);
    const __m512i mid6 =
        _mm512_or_si512(_mm512_and_si512(_mm512_srli_epi32(c, 6), sixBits), trailMark);
    const __m512i three =
        _mm512_or_si512(_mm512_or_si512(_mm512_srli_epi32(c, 12), _mm512_set1_epi32(0xE0)),
                        _mm512_or_si512(_mm512_slli_epi32(mid6, 8), _mm512_slli_epi32(low6, 16)));
    const __m512i two =
        _mm512_or_si512(_mm512_or_si512(_mm512_srli_epi32(c, 6), _mm512_set1_epi32(0xC0)),
                        _mm512_slli_epi32(low6, 8));
    const __mmask16 isOne = _mm512_cmplt_epu32_mask(c, _mm512_set1_epi32(0x80));
    const __mmask16 isThree = _mm512_cmpgt_epu32_mask(c, _mm512_set1_epi32(0x7FF));
    const __m512i lanes =
        _mm512_mask_blend_epi32(isThree, _mm512_mask_blend_epi32(isOne, two, c), three);
    // Byte 0 of every lane; byte 1 unless ASCII; byte 2 for three-byte characters.
    __m512i keep = _mm512_mask_or_epi32(_mm512_set1_epi32(0xFF), static_cast<__mmask16>(~isOne),
                                        _mm512_set1_epi32(0xFF), _mm512_set1_epi32(0xFF00));
    keep = _mm512_mask_or_epi32(keep, isThree, keep, _mm512_set1_epi32(0xFF0000));
    const __mmask64 bytes = _mm512_test_epi8_mask(keep, keep);
    _mm512_storeu_si512(out, _mm512_maskz_compress_epi8(bytes, lanes));
    out += _mm_popcnt_u64(bytes);
    i += 16;
  }
  for (; i < n; ++i) out = encodeUtf8Unit(in, i, n, out);
  return static_cast<std::size_t>(out - start);
}
#endif

std::size_t encodeUtf8(const char16_t* in, std::size_t n, std::uint8_t* out) {
#if defined(ORVO_UTF8_SHUFFLE)
  static const bool compress = cpuFeatures().avx512vbmi2;
  if (compress) return encodeUtf8Compress(in, n, out);
  static const bool shuffle = cpuFeatures().ssse3;
  if (shuffle) return encodeUtf8Shuffle(in, n, out);
#endif
  return encodeUtf8Portable(in, n, out);
}

}  // namespace

bool encodeUtf8With(const char* unit, std::u16string_view text, std::string& out) {
  std::size_t (*encode)(const char16_t*, std::size_t, std::uint8_t*) = nullptr;
  const std::string_view name(unit);
  if (name == "portable") encode = &encodeUtf8Portable;
#if defined(ORVO_UTF8_SHUFFLE)
  if (name == "ssse3" && cpuFeatures().ssse3) encode = &encodeUtf8Shuffle;
  if (name == "avx512" && cpuFeatures().avx512vbmi2) encode = &encodeUtf8Compress;
#endif
  if (encode == nullptr) return false;
  out.resize(3 * text.size());
  out.resize(encode(text.data(), text.size(), reinterpret_cast<std::uint8_t*>(out.data())));
  return true;
}

bool hasRecordedTables(std::uint32_t codePage) {
  return codePage == kCodePageUtf8 || tableFor(codePage) != nullptr;
}

bool codePageAvailable(std::uint32_t codePage) {
  return hasRecordedTables(codePage) || codePage == 1200 || codePage == 1201 ||
         detail::icuHasConverter(codePage);
}

std::size_t multiByteToWide(std::uint32_t codePage, std::span<const std::uint8_t> bytes,
                            char16_t* out) {
  if (codePage == kCodePageUtf8) return decodeUtf8(bytes.data(), bytes.size(), out);
  if (const auto* t = tableFor(codePage)) return decodeTable(*t, bytes.data(), bytes.size(), out);
  const auto text = detail::icuMultiByteToWide(
      codePage, std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
  if (!text) return 0;
  std::copy(text->begin(), text->end(), out);
  return text->size();
}

std::size_t wideToMultiByte(std::uint32_t codePage, std::u16string_view text, std::uint8_t* out) {
  if (codePage == kCodePageUtf8) return encodeUtf8(text.data(), text.size(), out);
  if (const auto* t = tableFor(codePage)) return encodeTable(*t, text.data(), text.size(), out);
  const auto bytes = detail::icuWideToMultiByte(codePage, text);
  if (!bytes) return 0;
  // Bytes of a code page, not a C string: the caller has the count.
  std::memcpy(out, bytes->data(), bytes->size());  // NOLINT(bugprone-not-null-terminated-result)
  return bytes->size();
}

String multiByteToWide(std::uint32_t codePage, std::string_view bytes) {
  String out(bytes.size(), u'\0');  // never more units than bytes
  std::size_t n = 0;
  if (hasRecordedTables(codePage)) {
    n = multiByteToWide(
        codePage, std::span(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()),
        out.data());
  } else {
    return detail::icuMultiByteToWide(codePage, bytes).value_or(String());
  }
  out.resize(n);
  return out;
}

std::string wideToMultiByte(std::uint32_t codePage, std::u16string_view text) {
  if (!hasRecordedTables(codePage)) {
    return detail::icuWideToMultiByte(codePage, text).value_or(std::string());
  }
  std::string out(text.size() * 3, '\0');  // UTF-8 needs at most three bytes per unit
  const std::size_t n =
      wideToMultiByte(codePage, text, reinterpret_cast<std::uint8_t*>(out.data()));
  out.resize(n);
  return out;
}

Converter::Converter(std::uint32_t codePage)
    : codePage_(codePage), table_(tableFor(codePage)), available_(codePageAvailable(codePage)) {}

std::size_t Converter::toWide(std::span<const std::uint8_t> bytes, char16_t* out) const {
  if (table_ != nullptr) {
    return decodeTable(*static_cast<const tables::CodePageTable*>(table_), bytes.data(),
                       bytes.size(), out);
  }
  if (codePage_ == 1200 && std::endian::native == std::endian::little) {
    std::memcpy(out, bytes.data(), bytes.size() & ~std::size_t{1});
    if (bytes.size() % 2 != 0) out[bytes.size() / 2] = bytes.back();
    return (bytes.size() + 1) / 2;
  }
  if (codePage_ == 1200 || codePage_ == 1201) {
    const bool swap = codePage_ == 1201;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
      out[i / 2] = swap ? static_cast<char16_t>(bytes[i] << 8 | bytes[i + 1])
                        : static_cast<char16_t>(bytes[i] | bytes[i + 1] << 8);
    }
    // An odd last byte is half a unit: kept as the low half.
    if (bytes.size() % 2 != 0) out[bytes.size() / 2] = bytes.back();
    return (bytes.size() + 1) / 2;
  }
  return multiByteToWide(codePage_, bytes, out);
}

std::size_t Converter::fromWide(std::u16string_view text, std::uint8_t* out) const {
  if (table_ != nullptr) {
    return encodeTable(*static_cast<const tables::CodePageTable*>(table_), text.data(), text.size(),
                       out);
  }
  if (codePage_ == 1200 || codePage_ == 1201) {
    const bool swap = codePage_ == 1201;
    for (std::size_t i = 0; i < text.size(); ++i) {
      const auto lo = static_cast<std::uint8_t>(text[i] & 0xFF);
      const auto hi = static_cast<std::uint8_t>(text[i] >> 8);
      out[2 * i] = swap ? hi : lo;
      out[2 * i + 1] = swap ? lo : hi;
    }
    return text.size() * 2;
  }
  return wideToMultiByte(codePage_, text, out);
}

}  // namespace orvo::platform
