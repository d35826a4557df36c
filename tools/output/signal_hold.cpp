#include "signal_hold.h"

namespace zox::output {
namespace {

volatile sig_atomic_t came = 0;
void note(int signal) { came = signal; }

}  // namespace

SignalHold::SignalHold() {
  came = 0;
  for (size_t i = 0; i < kHeld.size(); ++i) {
    sigaction(kHeld[i], nullptr, &before_[i]);
    if (before_[i].sa_handler == SIG_IGN) continue;
    struct sigaction held {};
    held.sa_handler = note;
    held.sa_flags = SA_RESTART;
    sigaction(kHeld[i], &held, nullptr);
  }
}

SignalHold::~SignalHold() {
  for (size_t i = 0; i < kHeld.size(); ++i) sigaction(kHeld[i], &before_[i], nullptr);
  if (came != 0) raise(came);
}

}  // namespace zox::output
