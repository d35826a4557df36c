// A file appears whole or not at all, whatever comes in between.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "output.h"
#include "run.h"
#include "signal_hold.h"

namespace zox::output {
namespace {

using WriteTest = ToolTest;

std::string sentence_of(const std::string& path, const std::vector<std::string>& inputs = {}) {
  try {
    check_place(path, inputs);
  } catch (const Failure& failure) {
    return failure.what();
  }
  return "";
}

// How a process ends that does `work`: its status, or 128 and the signal.
template <class Work>
int ending_of(Work work) {
  const pid_t child = fork();
  if (child == 0) {
    work();
    _exit(0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

TEST_F(WriteTest, NamesSayWhatTheyHold) {
  EXPECT_EQ(kind_of("a.b.PNG", {Kind::kPng}), Kind::kPng);
  EXPECT_EQ(kind_of("a.apng", {Kind::kPng}), Kind::kPng);
  EXPECT_EQ(kind_of("a.nrrd", {Kind::kPng, Kind::kNrrd}), Kind::kNrrd);
  EXPECT_EQ(kind_of("a.Npy", {Kind::kPng, Kind::kNpy}), Kind::kNpy);
  EXPECT_EQ(kind_of("-", {Kind::kPng}), Kind::kPng);
  for (const char* name : {"a", "png", ".png", "a.jpg", "a.png.gz", "a.npy", ""})
    EXPECT_THROW(kind_of(name, {Kind::kPng}), Failure) << name;
}

TEST_F(WriteTest, PlacesAreJudgedWithoutTouchingThem) {
  write_text(path("in.png"), "scan");
  write_text(path("old.png"), "old");
  mkdir(path("d.png").c_str(), 0777);
  EXPECT_EQ(sentence_of(path("new.png")), "");
  EXPECT_EQ(sentence_of(path("old.png"), {path("in.png")}), "");
  EXPECT_NE(sentence_of(path("in.png"), {path("old.png"), path("in.png")}).find("that is read"),
            std::string::npos);
  EXPECT_NE(sentence_of(path("d.png")).find("folder of that name"), std::string::npos);
  EXPECT_NE(sentence_of(path("none/p.png")).find("cannot be written"), std::string::npos);
  EXPECT_EQ(read_text(path("in.png")), "scan");
  EXPECT_EQ(read_text(path("old.png")), "old");
  EXPECT_EQ(count_files(), 3);
}

TEST_F(WriteTest, SignalsWaitAndThenEnd) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
    std::filesystem::remove(path("lived"));
    EXPECT_EQ(ending_of([&] {
                const SignalHold hold;
                raise(signal);
                write_text(path("lived"), "yes");
              }),
              128 + signal);
    EXPECT_EQ(read_text(path("lived")), "yes");
  }
  // What is ignored (by nohup, say) stays ignored.
  EXPECT_EQ(ending_of([] {
              std::signal(SIGHUP, SIG_IGN);
              const SignalHold hold;
              raise(SIGHUP);
            }),
            0);
}

// Ended at many moments of its work, a writer leaves one whole file of the two, and nothing else.
TEST_F(WriteTest, InterruptedWritersLeaveWholeFiles) {
  const std::string a(3000000, 'a');
  const std::string b(3000000, 'b');
  write_text(path("p.png"), a);
  for (int i = 0; i < 40; ++i) {
    const pid_t child = fork();
    if (child == 0) {
      // Of a job in the background the shell has SIGINT ignored.
      std::signal(SIGINT, SIG_DFL);
      for (;;) {
        write_file(path("p.png"), b);
        write_file(path("p.png"), a);
      }
    }
    usleep(static_cast<useconds_t>(1000 + 700 * i));
    kill(child, i % 2 ? SIGINT : SIGTERM);
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status));
    const std::string left = read_text(path("p.png"));
    EXPECT_TRUE(left == a || left == b) << left.size();
    EXPECT_EQ(count_files(), 1);
  }
}

TEST_F(WriteTest, FullDiskLeavesTheOlderFile) {
  write_text(path("p.png"), "old");
  EXPECT_EQ(ending_of([&] {
              std::signal(SIGXFSZ, SIG_IGN);
              const rlimit few = {1000, 1000};
              setrlimit(RLIMIT_FSIZE, &few);
              try {
                write_file(path("p.png"), std::string(5000, 'x'));
              } catch (const Failure&) {
                _exit(7);
              }
            }),
            7);
  EXPECT_EQ(read_text(path("p.png")), "old");
  EXPECT_EQ(count_files(), 1);
}

}  // namespace
}  // namespace zox::output
