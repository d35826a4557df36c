#include "exit_failure.h"

#include <new>
#include <system_error>

#include "output.h"
#include "scan.h"

namespace zox_mip {

std::optional<Failure> failure_of(const std::function<void()>& action) {
  try {
    action();
    return std::nullopt;
  } catch (const Failure& failure) {
    return failure;
  } catch (const zox::input::Failure& failure) {
    return Failure(failure.what(), kExitFailed);
  } catch (const zox::output::Failure& failure) {
    return Failure(failure.what(), kExitFailed);
  } catch (const std::bad_alloc&) {
    return Failure("There is not enough memory for this volume and picture.", kExitFailed);
  } catch (const std::system_error& error) {
    return Failure(std::string("The system refused: ") + error.what() + ".", kExitFailed);
  }
}

}  // namespace zox_mip
