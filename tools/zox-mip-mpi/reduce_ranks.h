// Pictures and ranges of all ranks, reduced to one.
#pragma once

#include <parts/picture.h>

#include "group.h"

namespace zox_mip_mpi {

// Ranges and weights of slices that ranks measured, each its own: the whole's on every rank.
void reduce(const Group& group, zox::parts::Measure& measure);

// The root gets the picture of all; what the others keep is of no use.
void reduce(const Group& group, const zox::parts::Settings& settings, zox::parts::Picture& picture);

// Bytes that each rank gives to the reduction of a picture.
int64_t reduced_bytes(const zox::parts::Settings& settings);

}  // namespace zox_mip_mpi
