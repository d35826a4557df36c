#include "repeated_pages.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace zox_test {
namespace {

[[noreturn]] void give_up(const char* call) {
  std::perror(call);
  std::abort();
}

}  // namespace

RepeatedPages::RepeatedPages(size_t bytes) : bytes_((bytes + kPeriod - 1) / kPeriod * kPeriod) {
  void* room = mmap(nullptr, bytes_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (room == MAP_FAILED) give_up("mmap");
  at_ = static_cast<uint8_t*>(room);
  const int file = memfd_create("repeated", MFD_CLOEXEC);
  if (file < 0 || ftruncate(file, static_cast<off_t>(kPeriod)) != 0) give_up("memfd_create");
  for (size_t done = 0; done < bytes_; done += kPeriod) {
    void* part =
        mmap(at_ + done, kPeriod, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_FIXED | MAP_NORESERVE, file, 0);
    if (part == MAP_FAILED) give_up("mmap");
  }
  close(file);
}

RepeatedPages::~RepeatedPages() { munmap(at_, bytes_); }

}  // namespace zox_test
