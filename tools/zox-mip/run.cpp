#include "run.h"

#include <cstdio>

#include "exit_failure.h"
#include "options.h"
#include "run_studies.h"

namespace zox_mip {

int run(int argc, const char* const* argv) {
  int status = kExitDone;
  const auto failure = failure_of([&] {
    if (const auto options = parse_options(argc, argv))
      status = options->list_series ? list_series(*options) : make_pictures(*options);
  });
  if (!failure) return status;
  complain(failure->what());
  return failure->status;
}

}  // namespace zox_mip
