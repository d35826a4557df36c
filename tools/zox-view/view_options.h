// What the command line asks for.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "../input/scan.h"

namespace zox::view {

struct Options {
  std::string input;  // a file or a folder; empty: the phantom
  std::string listen = "127.0.0.1";
  uint16_t port = 0;  // 0: any free one
  int threads = 0;    // 0: one for each processor
  input::ReadOptions read;
};

// Empty when the command line only asked for --help or --version, which has then been printed. Throws
// Refusal.
std::optional<Options> parse_options(int argc, const char* const* argv);

}  // namespace zox::view
