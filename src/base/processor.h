// Versions of a kernel for processors with wider vectors than the baseline; which one runs is decided at run
// time.
#pragma once

#if defined(__GNUC__)
/// A kernel's body, inlined into each of its versions.
#define ORBELN_ALWAYS_INLINE [[gnu::always_inline]] inline
#else
#define ORBELN_ALWAYS_INLINE inline
#endif

#if defined(__GNUC__) && defined(__x86_64__)
/// Marks the version for AVX2; undefined where there is none. Results are the same: the order of operations
/// stays and multiplications are not fused with additions.
#define ORBELN_AVX2 [[gnu::target("avx2")]]

inline bool hasAvx2() {
  static const bool kHas = __builtin_cpu_supports("avx2") != 0;
  return kHas;
}
#endif
