// Study after study: what is wrong with one does not stop the others.
#pragma once

#include <string>

#include "exit_failure.h"
#include "options.h"

namespace zox_mip {

// "zox-mip: ", and the sentence, in a line on stderr.
void complain(const std::string& sentence);

// Makes the pictures of all. Says on stderr what is wrong with one, and answers kExitFailed then. Throws
// where nothing can be made of the command line.
ExitStatus make_pictures(const Options& options);

// Prints the series of folders, a line each. Likewise.
ExitStatus list_series(const Options& options);

}  // namespace zox_mip
