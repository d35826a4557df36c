#include "crash_note.h"

#include <signal.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>

namespace zox_test {
namespace {

thread_local char note[4096];

// Once returned from, the signal ends the process.
void print_note(int signal_number) {
  if (write(STDERR_FILENO, note, std::strlen(note)) < 0) _exit(1);
  signal(signal_number, SIG_DFL);
  raise(signal_number);
}

bool install() {
  for (const int signal_number : {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT})
    signal(signal_number, print_note);
  return true;
}

}  // namespace

void set_crash_note(const std::string& text) {
  [[maybe_unused]] static const bool installed = install();
  std::snprintf(note, sizeof note, "\nCrashed in: %s\n", text.c_str());
}

}  // namespace zox_test
