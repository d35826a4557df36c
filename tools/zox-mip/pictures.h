// From a command line to the files that it asks for.
#pragma once

#include "options.h"

namespace zox_mip {

// Throws Failure, or what the libraries of input and output throw.
void make_pictures(const Options& options);

// Prints the series of a folder, a line each. Throws likewise.
void list_series(const Options& options);

}  // namespace zox_mip
