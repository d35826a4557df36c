#include "run.h"

#include <cstdio>
#include <exception>
#include <new>
#include <string>
#include <system_error>

#include "failure.h"
#include "options.h"
#include "output.h"
#include "pictures.h"
#include "scan.h"

namespace zox_mip {
namespace {

int complain(const std::string& sentence, ExitStatus status) {
  std::fprintf(stderr, "zox-mip: %s\n", sentence.c_str());
  return status;
}

}  // namespace

int run(int argc, const char* const* argv) {
  try {
    if (const auto options = parse_options(argc, argv))
      options->list_series ? list_series(*options) : make_pictures(*options);
    return kExitDone;
  } catch (const Failure& failure) {
    return complain(failure.what(), failure.status);
  } catch (const zox::input::Failure& failure) {
    return complain(failure.what(), kExitFailed);
  } catch (const zox::output::Failure& failure) {
    return complain(failure.what(), kExitFailed);
  } catch (const std::bad_alloc&) {
    return complain("There is not enough memory for this volume and picture.", kExitFailed);
  } catch (const std::system_error& error) {
    return complain(std::string("The system refused: ") + error.what() + ".", kExitFailed);
  }
}

}  // namespace zox_mip
