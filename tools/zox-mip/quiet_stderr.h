// Sends the process's stderr to /dev/null while it lives.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

namespace zox_mip {

class QuietStderr {
 public:
  QuietStderr() : kept_(dup(STDERR_FILENO)) {
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (nowhere >= 0 && kept_ >= 0) dup2(nowhere, STDERR_FILENO);
    if (nowhere >= 0) close(nowhere);
  }
  ~QuietStderr() {
    std::fflush(stderr);
    if (kept_ >= 0) {
      dup2(kept_, STDERR_FILENO);
      close(kept_);
    }
  }
  QuietStderr(const QuietStderr&) = delete;
  QuietStderr& operator=(const QuietStderr&) = delete;

 private:
  int kept_;
};

}  // namespace zox_mip
