// Ctrl-C, which the terminal sends to the program and to the process that reads for it.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "files.h"
#include "run.h"

namespace {

namespace fs = std::filesystem;

// zox-mip in a process group of its own, quiet, in a directory.
class Running {
 public:
  Running(const std::string& directory, const std::vector<std::string>& arguments) {
    std::vector<char*> words = {const_cast<char*>(ZOX_MIP)};
    for (const std::string& argument : arguments) words.push_back(const_cast<char*>(argument.c_str()));
    words.push_back(nullptr);
    id_ = fork();
    if (id_ != 0) {
      setpgid(id_, id_);
      return;
    }
    setpgid(0, 0);
    if (chdir(directory.c_str()) == 0) execv(words[0], words.data());
    _exit(127);
  }
  ~Running() {
    if (ended_) return;
    kill(-id_, SIGKILL);
    waitpid(id_, nullptr, 0);
  }

  // Waits until `state` holds; false where the program has ended before.
  bool reaches(const std::function<bool()>& state) {
    while (!state()) {
      if (waitpid(id_, &status_, WNOHANG) == id_) return !(ended_ = true);
      usleep(50);
    }
    return true;
  }
  // What the program returns when Ctrl-C has been pressed: its status as waitpid gives it.
  int interrupt() {
    kill(-id_, SIGINT);
    waitpid(id_, &status_, 0);
    ended_ = true;
    return status_;
  }

  size_t threads() const {
    std::error_code error;
    fs::directory_iterator tasks("/proc/" + std::to_string(id_) + "/task", error);
    return error ? 0 : static_cast<size_t>(std::distance(tasks, fs::directory_iterator()));
  }
  // The process that reads, or 0.
  pid_t reader() const {
    const std::string id = std::to_string(id_);
    pid_t child = 0;
    std::ifstream("/proc/" + id + "/task/" + id + "/children") >> child;
    return child;
  }

 private:
  pid_t id_ = -1;
  int status_ = 0;
  bool ended_ = false;
};

// A process that nobody has waited for yet has ended too.
bool has_ended(pid_t process) {
  std::string word, state;
  std::ifstream file("/proc/" + std::to_string(process) + "/stat");
  file >> word >> word >> state;
  return state.empty() || state == "Z" || state == "X";
}

bool is_failure(int status) { return WIFSIGNALED(status) || WEXITSTATUS(status) != 0; }

using InterruptTest = ToolTest;

TEST_F(InterruptTest, WhileRenderingLeavesNoFile) {
  Running program(path(""), {"--phantom", "-o", "p.png", "--size", "8192x8192", "--step", "0.05", "--no-skip",
                             "-j", "2", "--quiet"});
  ASSERT_TRUE(program.reaches([&] { return program.threads() == 2; }));
  EXPECT_TRUE(is_failure(program.interrupt()));
  EXPECT_EQ(count_files(), 0);
}

TEST_F(InterruptTest, WhileRenderingLeavesTheOlderPicture) {
  write_text(path("p.png"), "old");
  Running program(path(""), {"--phantom", "-o", "p.png", "--depth", "d.npy", "--size", "8192x8192", "--step",
                             "0.05", "--no-skip", "-j", "2", "--quiet"});
  ASSERT_TRUE(program.reaches([&] { return program.threads() == 2; }));
  EXPECT_TRUE(is_failure(program.interrupt()));
  EXPECT_EQ(read_text(path("p.png")), "old");
  EXPECT_EQ(count_files(), 1);
}

// The reader is stopped as soon as it is seen, so that it cannot be done before the key is pressed.
TEST_F(InterruptTest, WhileReadingEndsTheReader) {
  const std::string voxels(size_t{400} * 400 * 400, '\1');
  write_text(path("v.nrrd"),
             "NRRD0004\ntype: uint8\ndimension: 3\nsizes: 400 400 400\nencoding: gzip\n\n" + gzipped(voxels));
  pid_t reader = 0;
  const std::vector<std::string> arguments = {"v.nrrd", "-o", "p.png", "--size", "16x16", "--quiet"};
  for (int attempt = 0; attempt < 50; ++attempt) {
    Running program(path(""), arguments);
    if (!program.reaches([&] { return (reader = program.reader()) != 0; })) continue;
    kill(reader, SIGSTOP);
    fs::remove(path("p.png"));
    const int status = program.interrupt();
    if (!is_failure(status)) continue;  // the reader had answered before it was stopped
    EXPECT_EQ(count_files(), 1);
    for (int wait = 0; wait < 1000 && !has_ended(reader); ++wait) usleep(10000);
    EXPECT_TRUE(has_ended(reader));
    return;
  }
  FAIL() << "the reader was never seen at work";
}

}  // namespace
