#include "reading.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstring>
#include <new>
#include <span>
#include <system_error>
#include <type_traits>

#include "pass_descriptor.h"

namespace zox::view {
namespace {

constexpr size_t kMaxPath = 2 * PATH_MAX;
constexpr size_t kMaxSentence = 16384;

// What lies at the head of the shared memory: then the positions, the notes (each ends with a zero),
// and from `voxels_from` on the scan's memory as it was.
struct Head {
  zox_render_array array;
  input::Window window;
  bool has_window;
  uint64_t positions, note_bytes, voxels_from, voxel_bytes, data_from, all_bytes;
};
static_assert(std::is_trivially_copyable_v<Head>);

constexpr uint64_t kPage = 4096;

Head head_of(const input::Scan& scan) {
  Head head{};
  head.array = scan.array;
  head.has_window = scan.window.has_value();
  if (scan.window) head.window = *scan.window;
  head.positions = scan.positions.size();
  for (const std::string& note : scan.notes) head.note_bytes += note.size() + 1;
  const uint64_t before = sizeof head + head.positions * sizeof(double) + head.note_bytes;
  head.voxels_from = (before + kPage - 1) / kPage * kPage;
  head.voxel_bytes = scan.memory.get_deleter().bytes;
  head.data_from = static_cast<uint64_t>(static_cast<const char*>(scan.array.data) -
                                         static_cast<char*>(scan.memory.get()));
  head.all_bytes = head.voxels_from + head.voxel_bytes;
  return head;
}

class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor() {
    if (number_ >= 0) close(number_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  int number() const { return number_; }

 private:
  int number_;
};

input::Mapping map(int descriptor, size_t bytes) {
  void* memory = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
  if (memory == MAP_FAILED) throw std::bad_alloc();
  return input::Mapping(memory, {bytes});
}

int pack(const input::Scan& scan) {
  const Head head = head_of(scan);
  Descriptor shared(memfd_create("zox-view scan", MFD_CLOEXEC));
  // Allocated at once: a page that cannot be had later would end the process without a word.
  if (shared.number() < 0 || posix_fallocate(shared.number(), 0, static_cast<off_t>(head.all_bytes)) != 0)
    throw std::bad_alloc();
  const input::Mapping memory = map(shared.number(), head.all_bytes);
  char* to = static_cast<char*>(memory.get());
  std::memcpy(to, &head, sizeof head);
  char* next = to + sizeof head;
  if (head.positions != 0) std::memcpy(next, scan.positions.data(), head.positions * sizeof(double));
  next += head.positions * sizeof(double);
  for (const std::string& note : scan.notes) {
    std::memcpy(next, note.c_str(), note.size() + 1);
    next += note.size() + 1;
  }
  std::memcpy(to + head.voxels_from, scan.memory.get(), head.voxel_bytes);
  return dup(shared.number());
}

input::Scan unpack(int descriptor) {
  Head head;
  {
    const input::Mapping first = map(descriptor, sizeof head);
    std::memcpy(&head, first.get(), sizeof head);
  }
  input::Scan scan;
  scan.memory = map(descriptor, head.all_bytes);
  const char* from = static_cast<const char*>(scan.memory.get());
  scan.array = head.array;
  if (head.has_window) scan.window = head.window;
  const char* next = from + sizeof head;
  scan.positions.resize(head.positions);
  if (head.positions != 0) std::memcpy(scan.positions.data(), next, head.positions * sizeof(double));
  next += head.positions * sizeof(double);
  for (const char* end = next + head.note_bytes; next < end; next += scan.notes.back().size() + 1)
    scan.notes.emplace_back(next);
  scan.array.data = from + head.voxels_from + head.data_from;
  scan.array.positions = head.array.positions ? scan.positions.data() : nullptr;
  return scan;
}

void answer(int socket, const std::string& path, const input::ReadOptions& options) {
  try {
    const input::Scan scan = input::read_scan(path, options);
    const Descriptor shared(pack(scan));
    if (shared.number() < 0) throw std::bad_alloc();
    send_with_descriptor(socket, "", shared.number());
  } catch (const input::Failure& failure) {
    send_with_descriptor(socket, std::string(failure.what()).substr(0, kMaxSentence), -1);
  } catch (const std::bad_alloc&) {
    send_with_descriptor(socket, path + " needs more memory than there is.", -1);
  }
}

// Each file by a process of its own: what ends it, such as a system that is out of memory, ends no other.
void answer_apart(int socket, const std::string& path, const input::ReadOptions& options) {
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0)
    return send_with_descriptor(socket, path + " cannot be read: the system is out of sockets.", -1);
  const Descriptor ours(ends[0]);
  const pid_t child = fork();
  if (child == 0) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    answer(ends[1], path, options);
    _exit(0);
  }
  close(ends[1]);
  std::string sentence(kMaxSentence, '\0');
  const Received received = receive_with_descriptor(ours.number(), sentence);
  const Descriptor shared(received.descriptor);
  if (!received.arrived) sentence = path + " cannot be read: the system ended the process that read it.";
  // Before the answer: whoever has it finds no process that read this file.
  while (child > 0 && waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
  }
  send_with_descriptor(socket, sentence, shared.number());
}

// Ends when the server does: its end of the socket is then closed. A group of its own: Ctrl-C is the
// server's, and stop() ends the readers too.
[[noreturn]] void serve(int socket, const input::ReadOptions& options) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  setpgid(0, 0);
  std::array<char, kMaxPath> path;
  for (;;) {
    const ssize_t bytes = recv(socket, path.data(), path.size(), 0);
    if (bytes < 0 && errno == EINTR) continue;
    if (bytes <= 0) _exit(0);
    answer_apart(socket, std::string(path.data(), static_cast<size_t>(bytes)), options);
  }
}

}  // namespace

Reading::Reading(const input::ReadOptions& options) {
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0)
    throw std::system_error(errno, std::generic_category(), "no socket for reading");
  process_ = fork();
  if (process_ < 0) throw std::system_error(errno, std::generic_category(), "no process for reading");
  if (process_ == 0) {
    close(ends[0]);
    serve(ends[1], options);
  }
  setpgid(process_, process_);
  close(ends[1]);
  socket_ = ends[0];
}

Reading::~Reading() {
  stop();
  close(socket_);
  waitpid(process_, nullptr, 0);
}

void Reading::stop() { kill(-process_, SIGKILL); }

input::Scan Reading::read(const std::string& path) {
  const std::lock_guard turn(turn_);
  if (path.size() > kMaxPath || send(socket_, path.data(), path.size(), MSG_NOSIGNAL) < 0)
    throw input::Failure(path + " cannot be read: the reading process has ended; start zox-view again.");
  std::string sentence(kMaxSentence, '\0');
  const Received received = receive_with_descriptor(socket_, sentence);
  const Descriptor shared(received.descriptor);
  if (!received.arrived)
    throw input::Failure(path + " cannot be read: the reading process has ended; start zox-view again.");
  if (shared.number() < 0) throw input::Failure(sentence);
  return unpack(shared.number());
}

}  // namespace zox::view
