#include "child_process.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <system_error>
#include <utility>

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

// What goes in front of an answer.
struct Lengths {
  uint64_t bytes, block;
};

bool send(int descriptor, const void* from, size_t bytes) {
  for (auto* at = static_cast<const std::byte*>(from); bytes > 0;) {
    const ssize_t now = write(descriptor, at, bytes);
    if (now < 0 && errno == EINTR) continue;
    if (now < 0) return false;
    at += now;
    bytes -= static_cast<size_t>(now);
  }
  return true;
}

// The pages themselves go into the pipe, so that only the reading end copies them.
bool send_pages(int descriptor, std::byte* at, size_t bytes) {
  while (bytes > 0) {
    const iovec rest{at, bytes};
    const ssize_t now = vmsplice(descriptor, &rest, 1, 0);
    if (now < 0 && errno == EINTR) continue;
    // Not every system lets it.
    if (now < 0) return send(descriptor, at, bytes);
    at += now;
    bytes -= static_cast<size_t>(now);
  }
  return true;
}

// Each piece is given back to the system as soon as it is on its way: no volume is there twice.
void send_block(int descriptor, const Mapping& block) {
  constexpr size_t kPiece = size_t{1} << 21;
  auto* at = static_cast<std::byte*>(block.get());
  for (size_t left = block.get_deleter().bytes; left > 0;) {
    const size_t piece = std::min(left, kPiece);
    if (!send_pages(descriptor, at, piece)) return;
    madvise(at, piece, MADV_DONTNEED);
    at += piece;
    left -= piece;
  }
}

void send(int descriptor, const Given& given) {
  const Lengths lengths{given.bytes.size(), given.block ? given.block.get_deleter().bytes : 0};
  if (send(descriptor, &lengths, sizeof lengths) &&
      send(descriptor, given.bytes.data(), given.bytes.size()) && lengths.block > 0)
    send_block(descriptor, given.block);
}

[[noreturn]] void be_child(int answer, pid_t parent, const Limits& limits,
                           const std::function<Given()>& work) {
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

constexpr size_t kMostBytes = size_t{64} << 20;
using Clock = std::chrono::steady_clock;

// The parent's end of the pipe, and how long it is waited at.
class Inbox {
 public:
  Inbox(int descriptor, Clock::time_point deadline) : descriptor_(descriptor), deadline_(deadline) {}

  // False where the pipe or the time has ended before.
  bool receive(void* to, size_t bytes) {
    for (auto* at = static_cast<std::byte*>(to); bytes > 0;) {
      if (!wait()) return false;
      const ssize_t got = read(descriptor_, at, bytes);
      if (got < 0 && errno == EINTR) continue;
      if (got <= 0) return false;
      at += got;
      bytes -= static_cast<size_t>(got);
    }
    return true;
  }
  // The pipe's end, which comes when the child has ended.
  void receive_end() {
    while (wait()) {
      char nothing = 0;
      const ssize_t got = read(descriptor_, &nothing, 1);
      if (got >= 0 || errno != EINTR) return;
    }
  }
  bool timed_out() const { return timed_out_; }

 private:
  bool wait() {
    for (;;) {
      const auto left =
          std::chrono::duration_cast<std::chrono::milliseconds>(deadline_ - Clock::now()).count();
      timed_out_ = left <= 0;
      if (timed_out_) return false;
      pollfd waiting{descriptor_, POLLIN, 0};
      if (poll(&waiting, 1, static_cast<int>(std::min<int64_t>(left + 1, 1000000))) > 0) return true;
    }
  }

  int descriptor_;
  Clock::time_point deadline_;
  bool timed_out_ = false;
};

// A child that a file has damaged may say anything.
bool receive_all(Inbox& inbox, const Limits& limits, Answer& answer) {
  Lengths lengths{};
  if (!inbox.receive(&lengths, sizeof lengths)) return false;
  if (lengths.bytes > kMostBytes || lengths.block > limits.memory) return false;
  answer.bytes.resize(lengths.bytes);
  if (!inbox.receive(answer.bytes.data(), answer.bytes.size())) return false;
  if (lengths.block == 0) return true;
  answer.block = map_zeros(lengths.block);
  return inbox.receive(answer.block.get(), lengths.block);
}

// A child and the pipe from it, gone with this.
class Child {
 public:
  Child(pid_t number, int pipe) : number_(number), pipe_(pipe) {}
  ~Child() { end(); }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  int pipe() const { return pipe_; }
  // The signal that has ended it before, or 0.
  int end() {
    if (pipe_ < 0) return 0;
    close(std::exchange(pipe_, -1));
    kill(number_, SIGKILL);
    int status = 0;
    while (waitpid(number_, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFSIGNALED(status) ? WTERMSIG(status) : 0;
  }

 private:
  pid_t number_;
  int pipe_;
};

}  // namespace

Answer run_in_child(const Limits& limits, const std::function<Given()>& work) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) throw_error("pipe");
  constexpr int kPipe = 1 << 20;
  fcntl(ends[1], F_SETPIPE_SZ, kPipe);  // which only speed depends on
  const pid_t parent = getpid();
  std::fflush(nullptr);
  const pid_t number = fork();
  if (number == 0) {
    close(ends[0]);
    be_child(ends[1], parent, limits, work);
  }
  const int error = errno;
  close(ends[1]);
  if (number < 0) {
    close(ends[0]);
    errno = error;
    throw_error("fork");
  }
  Child child(number, ends[0]);
  const auto most = std::chrono::duration<double>(std::min(limits.seconds, 1e6));
  Inbox inbox(child.pipe(), Clock::now() + std::chrono::duration_cast<Clock::duration>(most));
  Answer answer;
  if (!receive_all(inbox, limits, answer)) {
    answer.bytes.clear();
    answer.block = {};
  }
  if (!inbox.timed_out()) inbox.receive_end();
  answer.timed_out = inbox.timed_out();
  answer.signal = child.end();
  return answer;
}

}  // namespace zox::input
