// The kernels of one instruction set, and the choice among them.
#pragma once

#include "zox_volume.h"

namespace zox {

using RayCast = int (*)(const zox_Volume*, const zox_Rays*);

// One row an instruction set: every volume operation, compiled whole for that set.
struct Operations {
  const char* name;
  bool (*supported)();  // does this processor (and system) run the set?

  RayCast blocked_divergent_nearest_8u;
  RayCast blocked_divergent_nearest_16s;
  RayCast blocked_divergent_trilinear_8u;
  RayCast blocked_divergent_trilinear_16s;
  RayCast blocked_parallel_nearest_8u;
  RayCast blocked_parallel_nearest_16s;
  RayCast blocked_parallel_trilinear_8u;
  RayCast blocked_parallel_trilinear_16s;
  RayCast general_divergent_nearest_8u;
  RayCast general_divergent_nearest_16s;
  RayCast general_divergent_nearest_bit_8u;
  RayCast general_divergent_trilinear_8u;
  RayCast general_divergent_trilinear_16s;
  RayCast general_parallel_nearest_8u;
  RayCast general_parallel_nearest_16s;
  RayCast general_parallel_nearest_bit_8u;
  RayCast general_parallel_trilinear_8u;
  RayCast general_parallel_trilinear_16s;

  int (*find_max_8u)(const zox_Rays*, uint8_t*);
  int (*find_max_16s)(const zox_Rays*, int16_t*);
  int (*find_max_bmask_8u)(const zox_Rays*, const uint8_t*, uint8_t*);
  int (*find_max_bmask_16s)(const zox_Rays*, const uint8_t*, int16_t*);
  int (*find_max_cmask_8u)(const zox_Rays*, const uint8_t*, int, uint8_t*);
  int (*find_max_cmask_16s)(const zox_Rays*, const uint8_t*, int, int16_t*);
  int (*window_level_16s_8u)(const int16_t*, uint8_t*, int, int, int, int, int);
};

// The sets by name. Each table stands in a file compiled for its set, and nothing but what the
// tables point to may run there.
namespace base {
extern const Operations kOperations;
}
namespace avx2 {
extern const Operations kOperations;
}
namespace avx512 {
extern const Operations kOperations;
}

// Narrowest set first. A test or benchmark names a set by its table and skips the unsupported.
inline const Operations* const kAllOperations[] = {&base::kOperations, &avx2::kOperations,
                                                   &avx512::kOperations};

// The processor's answers, compiled for any x86-64.
bool always_supported();
bool avx2_supported();
bool avx512_supported();

// The widest set that this processor runs; cheap enough to ask on every call.
const Operations& pick();

}  // namespace zox
