#include "run.h"

#include <stdlib.h>
#include <sys/wait.h>

#include <algorithm>
#include <fstream>
#include <sstream>

namespace fs = std::filesystem;

std::string read_text(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

void write_text(const std::string& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

ToolTest::ToolTest() {
  std::string name = (fs::temp_directory_path() / "zox-mip-test.XXXXXX").string();
  if (!mkdtemp(name.data())) throw std::runtime_error("no directory for the test");
  directory_ = name;
}

ToolTest::~ToolTest() { fs::remove_all(directory_); }

Outcome ToolTest::shell(const std::string& command) const {
  const std::string out = directory_.string() + ".out";
  const std::string err = directory_.string() + ".err";
  const int status = std::system(
      ("cd '" + directory_.string() + "' && " + command + " >'" + out + "' 2>'" + err + "' </dev/null")
          .c_str());
  Outcome outcome{WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), read_text(out),
                  read_text(err)};
  fs::remove(out);
  fs::remove(err);
  return outcome;
}

void ToolTest::expect_refusal(const std::string& arguments, int status, const std::string& words) const {
  SCOPED_TRACE(arguments);
  const Outcome outcome = run(arguments);
  EXPECT_EQ(outcome.status, status);
  EXPECT_EQ(outcome.out, "");
  EXPECT_TRUE(outcome.err.starts_with("zox-mip: ")) << outcome.err;
  EXPECT_TRUE(outcome.err.ends_with(".\n")) << outcome.err;
  EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
  EXPECT_NE(outcome.err.find(words), std::string::npos) << outcome.err;
}

int ToolTest::count_files() const {
  return static_cast<int>(std::distance(fs::directory_iterator(directory_), fs::directory_iterator()));
}
