#include "operations/table.h"

namespace zox {

bool always_supported() { return true; }

bool avx2_supported() { return __builtin_cpu_supports("avx2"); }

bool avx512_supported() {
  return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512vl") &&
         __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512dq");
}

const Operations& pick() {
  if (avx512_supported()) return avx512::kOperations;
  if (avx2_supported()) return avx2::kOperations;
  return base::kOperations;
}

}  // namespace zox
