// One check a family of operations. They read what the operation would read, write nothing, and
// follow a record only as far as its pointers go.
#pragma once

#include <cstddef>

#include "caster.h"
#include "contract_report.h"

namespace zox_check {

// Either layout: records first, then positions and overlaps.
void check_caster(const Caster& caster, const zox_Volume* volume, const zox_Rays* rays);

// Every sample, and every neighbour that it reads, inside the volume; the records are good. The
// blocked check gives the size in bytes of the bricks down to the deepest sample, 0 if it is unknown.
std::size_t check_blocked_positions(Report& report, const Caster& caster, const zox_Volume& volume,
                                    const zox_Rays& rays);
void check_stack_positions(Report& report, const Caster& caster, const zox_Volume& volume,
                           const zox_Rays& rays);

struct Maximum {
  const char* name;
  int element_size;
  int samples_per_mask_byte;  // 0: no mask
};
void check_maximum(const Maximum& maximum, const zox_Rays* rays, const void* mask, const void* maxima);

void check_window_level(const void* src, const void* dst, int len);
void check_get_threads(const int* count);
void check_free(const void* block);
void check_alignment(int alignment);

}  // namespace zox_check
