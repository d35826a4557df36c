#include "no_abort.h"

#include <gdcmTrace.h>

#include <csetjmp>
#include <csignal>
#include <exception>

namespace zox::input::dicom {
namespace {

sigjmp_buf before_the_action;

void leave(int) { siglongjmp(before_the_action, 1); }

}  // namespace

bool without_abort(const std::function<void()>& action) {
  gdcm::Trace::WarningOff();
  gdcm::Trace::ErrorOff();
  struct sigaction handler {
  }, former{};
  handler.sa_handler = leave;
  sigaction(SIGABRT, &handler, &former);
  volatile bool finished = false;
  if (sigsetjmp(before_the_action, 1) == 0) {
    try {
      action();
      finished = true;
    } catch (const std::exception&) {
      finished = false;
    }
  }
  sigaction(SIGABRT, &former, nullptr);
  return finished;
}

}  // namespace zox::input::dicom
