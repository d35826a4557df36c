// Runs zox-mip in a directory of the test's own.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

struct Outcome {
  int status = -1;  // exit status; 128 + n after signal n
  std::string out;
  std::string err;
};

class ToolTest : public testing::Test {
 protected:
  ToolTest();
  ~ToolTest() override;

  // Runs `zox-mip ARGUMENTS` through the shell, in the directory.
  Outcome run(const std::string& arguments) const { return shell(ZOX_MIP " " + arguments); }
  Outcome shell(const std::string& command) const;

  // Expects an exit status, nothing on stdout, and one sentence on stderr that holds `words`.
  void expect_refusal(const std::string& arguments, int status, const std::string& words) const;

  std::string path(const std::string& name) const { return (directory_ / name).string(); }
  int count_files() const;

 private:
  std::filesystem::path directory_;
};

std::string read_text(const std::string& path);
void write_text(const std::string& path, const std::string& text);
