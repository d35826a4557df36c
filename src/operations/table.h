// The kernels of one instruction set, and the choice among them.
#pragma once

#include "operations/list.h"
#include "zox_volume.h"

namespace zox {

using RayCast = int (*)(const zox_Volume*, const zox_Rays*);

// One table an instruction set: every volume operation, compiled whole for that set.
struct Operations {
  const char* name;
  bool (*supported)();  // does this processor (and system) run the set?

#define ZOX_CASTER_FIELD(Name, name, ...) RayCast name;
  ZOX_CASTERS(ZOX_CASTER_FIELD)
#undef ZOX_CASTER_FIELD

#define ZOX_MAXIMUM_FIELD(Name, name, Element, Mask) \
  int (*name)(const zox_Rays* rays, ZOX_MASK_##Mask Element* maxima);
  ZOX_MAXIMA(ZOX_MAXIMUM_FIELD)
#undef ZOX_MAXIMUM_FIELD

#define ZOX_WINDOW_LEVEL_FIELD(Name, name, Source, Target) \
  int (*name)(const Source*, Target*, int len, int center, int width, int outmin, int outmax);
  ZOX_WINDOW_LEVELS(ZOX_WINDOW_LEVEL_FIELD)
#undef ZOX_WINDOW_LEVEL_FIELD
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
