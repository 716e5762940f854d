// The choice of the form for this processor.

#include "text/utf8_vectors.h"

#include <algorithm>
#include <iterator>

bool CanRun(Utf8Form form) noexcept {
#if defined(__GNUC__) && defined(__x86_64__)
  __builtin_cpu_init();
#if !defined(ZRCORE_WITHOUT_AVX512)
  if (form == Utf8Form::Avx512) {
    // All that ZR_AVX512 allows: a virtual machine may hide any of them.
    return __builtin_cpu_supports("avx512f") != 0 && __builtin_cpu_supports("avx512bw") != 0 &&
           __builtin_cpu_supports("avx512vl") != 0 && __builtin_cpu_supports("avx512vbmi") != 0 &&
           __builtin_cpu_supports("avx512vbmi2") != 0 && __builtin_cpu_supports("popcnt") != 0 &&
           __builtin_cpu_supports("bmi") != 0 && __builtin_cpu_supports("bmi2") != 0;
  }
#endif
  if (form == Utf8Form::Avx2) return __builtin_cpu_supports("avx2") != 0 && __builtin_cpu_supports("popcnt") != 0;
#elif defined(__GNUC__) && defined(__aarch64__)
  if (form == Utf8Form::Neon) return true;
#endif
  return form == Utf8Form::None;
}

Utf8Form BestUtf8Form() noexcept { return *std::find_if(std::begin(kUtf8Forms), std::end(kUtf8Forms), CanRun); }
