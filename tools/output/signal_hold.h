// Lets the signals by which users end programs wait while it lives.
#pragma once

#include <signal.h>

#include <array>

namespace zox::output {

// One at a time in a process. A signal that came in between is raised again at the end.
class SignalHold {
 public:
  SignalHold();
  ~SignalHold();
  SignalHold(const SignalHold&) = delete;
  SignalHold& operator=(const SignalHold&) = delete;

 private:
  static constexpr std::array kHeld = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};
  std::array<struct sigaction, kHeld.size()> before_{};
};

}  // namespace zox::output
