// Checks of the records alone: pointers, counts and what may overlap. Each returns whether the
// records can be followed further.
#pragma once

#include "caster.h"
#include "contract_report.h"

namespace zox_check {

// The largest sample count of rays 0 .. nrays - 1, at least 0.
int largest_count(const zox_Rays& rays, int nrays);

// Says that the thing called `name` is null, if it is.
bool present(Report& report, const void* pointer, const char* name);
bool aligned(const void* pointer, int element_size);

// Every plane below `planes` must be there.
bool check_planes(Report& report, const zox_Rays& rays, int planes, int element_size);

bool check_ray_record(Report& report, const Caster& caster, const zox_Rays* rays);
bool check_volume_record(Report& report, const Caster& caster, const zox_Volume* volume);

}  // namespace zox_check
