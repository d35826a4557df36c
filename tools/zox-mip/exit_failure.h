// The one way in which zox-mip gives up: a sentence for stderr and the exit status.
#pragma once

#include <functional>
#include <optional>
#include <stdexcept>
#include <string>

namespace zox_mip {

enum ExitStatus { kExitDone = 0, kExitFailed = 1, kExitBadUsage = 2 };

struct Failure : std::runtime_error {
  Failure(const std::string& sentence, ExitStatus exit_status)
      : std::runtime_error(sentence), status(exit_status) {}
  ExitStatus status;
};

// What an action gives up with, whichever library throws it; none when it comes to its end.
std::optional<Failure> failure_of(const std::function<void()>& action);

[[noreturn]] inline void fail(const std::string& sentence) { throw Failure(sentence, kExitFailed); }
[[noreturn]] inline void reject_usage(const std::string& sentence) { throw Failure(sentence, kExitBadUsage); }

}  // namespace zox_mip
