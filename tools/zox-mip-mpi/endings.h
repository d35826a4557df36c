// Ends of ranks that the others cannot take part in: each says its sentence itself, and all end.
#pragma once

#include <string>

#include "group.h"

namespace zox_mip_mpi {

// What happened to this rank alone: the others wait for it, and would for ever.
int abandon(const Group& group, const std::string& reason);

// Tells what MPI itself meets, and what the system says of mapped files.
void watch(const Group& group);

}  // namespace zox_mip_mpi
