#include "platform/cpu_features.hpp"

#include <cstdint>

#if defined(__x86_64__) || defined(__i386__)
#include <cpuid.h>
#include <immintrin.h>
#endif

namespace orvo::platform {

namespace {

#if defined(__x86_64__) || defined(__i386__)
__attribute__((target("xsave"))) CpuFeatures detect() noexcept {
  CpuFeatures f;
  unsigned a = 0;
  unsigned b = 0;
  unsigned c = 0;
  unsigned d = 0;
  if (__get_cpuid(1, &a, &b, &c, &d) == 0) return f;
  f.ssse3 = (c & bit_SSSE3) != 0;
  if ((c & bit_OSXSAVE) == 0) return f;
  const std::uint64_t xcr0 = _xgetbv(0);
  const bool avxState = (xcr0 & 0x6) == 0x6;                   // SSE and AVX registers
  const bool avx512State = avxState && (xcr0 & 0xE0) == 0xE0;  // opmask and ZMM registers
  if (__get_cpuid_count(7, 0, &a, &b, &c, &d) == 0) return f;
  f.avx2 = avxState && (b & bit_AVX2) != 0;
  f.avx512bw = avx512State && (b & bit_AVX512F) != 0 && (b & bit_AVX512BW) != 0;
  f.avx512vbmi2 = f.avx512bw && (c & bit_AVX512VBMI2) != 0;
  return f;
}
#else
CpuFeatures detect() noexcept { return {}; }
#endif

}  // namespace

const CpuFeatures& cpuFeatures() noexcept {
  static const CpuFeatures features = detect();
  return features;
}

}  // namespace orvo::platform
