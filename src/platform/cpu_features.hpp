#pragma once

// The vector units the code may use: those the processor has and the operating system saves.
// Asked at the first use, not in a constructor: the compiler's own feature test would run in
// every process that loads the library, whether or not it ever needs the answer.
namespace orvo::platform {

struct CpuFeatures {
  bool ssse3 = false;
  bool avx2 = false;
  bool avx512bw = false;     // AVX-512 foundation and byte/word instructions
  bool avx512vbmi2 = false;  // and byte compression (with the above)
};

const CpuFeatures& cpuFeatures() noexcept;

}  // namespace orvo::platform
