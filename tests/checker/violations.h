// Runs an operation on a spoiled scene and looks for the whole sentence about it.
#pragma once

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <string>

#include "scenes.h"
#include "zox_volume_check.h"

namespace checker_test {

// A regular expression for exactly this text.
inline std::string literal(const std::string& text) {
  std::string escaped;
  for (const char c : text) {
    if (std::string("[](){}.*+?^$|\\").find(c) != std::string::npos) escaped += '\\';
    escaped += c;
  }
  return escaped;
}

// In a child process, since the operation behind the checker may well crash on such a call: with
// ZOX_CHECK=abort the first sentence is also the last.
template <class Call>
void expect_sentence(const std::string& sentence, Call call) {
  EXPECT_EXIT(
      {
        setenv("ZOX_CHECK", "abort", 1);
        call();
        std::exit(0);
      },
      testing::KilledBySignal(SIGABRT), literal("zox_check: " + sentence + ".\n"));
}

// What the call printed on stderr.
template <class Call>
std::string said(Call call) {
  testing::internal::CaptureStderr();
  call();
  return testing::internal::GetCapturedStderr();
}

}  // namespace checker_test
