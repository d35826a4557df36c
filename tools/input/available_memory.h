// How much memory the system could give now.
#pragma once

#include <cstdint>

namespace zox::input {

// Bytes: of the machine, and of the control group and the limits that the process runs in.
uint64_t available_memory();

}  // namespace zox::input
