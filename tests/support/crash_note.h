// Says what a test was doing when a guard page stops it: a crash prints the note and goes its way.
#pragma once

#include <string>

namespace zox_test {

// Keeps the text for a crash on this thread. Installs the handlers on first use.
void set_crash_note(const std::string& text);

}  // namespace zox_test
