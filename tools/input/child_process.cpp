#include "child_process.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <system_error>

namespace zox::input {
namespace {

[[noreturn]] void throw_error(const char* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

void limit(int resource, rlim_t most) {
  rlimit now{};
  if (getrlimit(static_cast<__rlimit_resource>(resource), &now) != 0) return;
  now.rlim_cur = std::min(now.rlim_cur, most);
  now.rlim_max = std::min(now.rlim_max, most);
  setrlimit(static_cast<__rlimit_resource>(resource), &now);
}

// Pages that the process has mapped.
uint64_t mapped_bytes() {
  unsigned long pages = 0;
  if (FILE* file = std::fopen("/proc/self/statm", "re")) {
    if (std::fscanf(file, "%lu", &pages) != 1) pages = 0;
    std::fclose(file);
  }
  return uint64_t{pages} * static_cast<uint64_t>(sysconf(_SC_PAGESIZE));
}

void quiet_streams() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) close(stream);
  // The lowest descriptor that is free: one after the other.
  for (int stream = 0; stream < 3; ++stream)
    if (open("/dev/null", O_RDWR) < 0) return;
}

void send(int descriptor, const std::string& bytes) {
  for (size_t sent = 0; sent < bytes.size();) {
    const ssize_t now = write(descriptor, bytes.data() + sent, bytes.size() - sent);
    if (now < 0 && errno != EINTR) return;
    if (now > 0) sent += static_cast<size_t>(now);
  }
}

[[noreturn]] void be_child(int answer, pid_t parent, const Limits& limits,
                           const std::function<std::string()>& work) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != parent) _exit(0);
  for (const int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTERM, SIGINT, SIGPIPE, SIGXCPU})
    std::signal(signal, SIG_DFL);
  std::signal(SIGXFSZ, SIG_IGN);
  quiet_streams();
  limit(RLIMIT_CORE, 0);
  limit(RLIMIT_CPU, static_cast<rlim_t>(std::ceil(limits.seconds)) + 1);
#if !defined(__SANITIZE_ADDRESS__) && !defined(ZOX_WITHOUT_MEMORY_LIMIT)
  limit(RLIMIT_AS, mapped_bytes() + limits.memory);
#endif
  send(answer, work());
  _exit(0);
}

constexpr size_t kMostAnswer = size_t{64} << 20;
using Clock = std::chrono::steady_clock;

// Reads to the end of the pipe, or to the deadline: false.
bool collect(int descriptor, Clock::time_point deadline, std::string& bytes) {
  std::array<char, 65536> piece;
  for (;;) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
    if (left <= 0) return false;
    pollfd waiting{descriptor, POLLIN, 0};
    const int ready = poll(&waiting, 1, static_cast<int>(std::min<int64_t>(left + 1, 1000000)));
    if (ready <= 0) continue;
    const ssize_t got = read(descriptor, piece.data(), piece.size());
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0 || bytes.size() > kMostAnswer) return true;
    bytes.append(piece.data(), static_cast<size_t>(got));
  }
}

}  // namespace

Answer run_in_child(const Limits& limits, const std::function<std::string()>& work) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) throw_error("pipe");
  const pid_t parent = getpid();
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    close(ends[0]);
    be_child(ends[1], parent, limits, work);
  }
  const int error = errno;
  close(ends[1]);
  if (child < 0) {
    close(ends[0]);
    errno = error;
    throw_error("fork");
  }
  Answer answer;
  const auto most = std::chrono::duration<double>(std::min(limits.seconds, 1e6));
  const auto deadline = Clock::now() + std::chrono::duration_cast<Clock::duration>(most);
  answer.timed_out = !collect(ends[0], deadline, answer.bytes);
  close(ends[0]);
  // It has nothing more to say. What has ended it before stays its status.
  kill(child, SIGKILL);
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  if (WIFSIGNALED(status)) answer.signal = WTERMSIG(status);
  return answer;
}

}  // namespace zox::input
