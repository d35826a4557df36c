// The whole program but for main.
#pragma once

namespace zox_mip {

// The exit status; what is to be said is said.
int run(int argc, const char* const* argv);

}  // namespace zox_mip
