// From a study to the files that a command line asks for.
#pragma once

#include "options.h"
#include "progress.h"
#include "report.h"
#include "studies.h"

namespace zox_mip {

// Throws Failure, or what the libraries of input and output throw.
Report make_pictures(const Study& study, const Options& options, Work& work);

}  // namespace zox_mip
