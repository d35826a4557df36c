#include "crash_note.h"

#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

namespace zox_test {
namespace {

thread_local char note[4096];

void print_note(int signal_number) {
  const char head[] = "\nCrashed in: ";
  if (write(STDERR_FILENO, head, sizeof head - 1) < 0 || write(STDERR_FILENO, note, std::strlen(note)) < 0 ||
      write(STDERR_FILENO, "\n", 1) < 0) {
    _exit(1);
  }
  // SA_RESETHAND put the default action back, so this ends the process.
  raise(signal_number);
}

bool install() {
  struct sigaction action {};
  action.sa_handler = print_note;
  action.sa_flags = static_cast<int>(SA_RESETHAND | SA_NODEFER);
  for (const int signal_number : {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT})
    sigaction(signal_number, &action, nullptr);
  return true;
}

}  // namespace

void set_crash_note(const std::string& text) {
  static const bool installed = install();
  if (!installed) return;
  const size_t length = std::min(text.size(), sizeof note - 1);
  std::memcpy(note, text.data(), length);
  note[length] = '\0';
}

}  // namespace zox_test
