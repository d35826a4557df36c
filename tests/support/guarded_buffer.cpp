#include "guarded_buffer.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <vector>

#if defined(__has_include)
#if __has_include(<valgrind/memcheck.h>)
#include <valgrind/memcheck.h>
#endif
#endif
#if defined(__SANITIZE_ADDRESS__)
#define ZOX_TEST_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define ZOX_TEST_ASAN 1
#endif
#endif
#ifdef ZOX_TEST_ASAN
#include <sanitizer/asan_interface.h>
#endif

namespace zox_test {
namespace {

constexpr size_t kPage = 4096;
constexpr size_t kLargestKept = 16 * kPage;

[[noreturn]] void give_up(const char* call) {
  std::perror(call);
  std::abort();
}

uint8_t* map_between_guards(size_t bytes) {
  void* all = mmap(nullptr, bytes + 2 * kPage, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (all == MAP_FAILED) give_up("mmap");
  uint8_t* pages = static_cast<uint8_t*>(all) + kPage;
  if (mprotect(pages, bytes, PROT_READ | PROT_WRITE) != 0) give_up("mprotect");
  return pages;
}

// Small buffers come by the hundred in every batch; mapping each anew would take most of the time.
thread_local std::map<size_t, std::vector<uint8_t*>> unused_pages;

uint8_t* take_pages(size_t bytes) {
  std::vector<uint8_t*>& unused = unused_pages[bytes];
  if (unused.empty()) return map_between_guards(bytes);
  uint8_t* pages = unused.back();
  unused.pop_back();
  return pages;
}

void set_forbidden([[maybe_unused]] uint8_t* at, [[maybe_unused]] size_t bytes,
                   [[maybe_unused]] bool forbidden) {
#ifdef ZOX_TEST_ASAN
  if (forbidden) {
    ASAN_POISON_MEMORY_REGION(at, bytes);
  } else {
    ASAN_UNPOISON_MEMORY_REGION(at, bytes);
  }
#endif
#ifdef VALGRIND_MAKE_MEM_NOACCESS
  if (forbidden) {
    VALGRIND_MAKE_MEM_NOACCESS(at, bytes);
  } else {
    VALGRIND_MAKE_MEM_DEFINED(at, bytes);
  }
#endif
}

}  // namespace

void GuardedBuffer::GiveBack::operator()(uint8_t* pages) const {
  if (sealed && mprotect(pages, size, PROT_READ | PROT_WRITE) != 0) give_up("mprotect");
  set_forbidden(slack, slack_size, false);
  if (size <= kLargestKept) {
    unused_pages[size].push_back(pages);
  } else if (munmap(pages - kPage, size + 2 * kPage) != 0) {
    give_up("munmap");
  }
}

GuardedBuffer::GuardedBuffer(size_t bytes, Flush flush) : size_(bytes) {
  const size_t rounded = std::max(kPage, (bytes + kPage - 1) / kPage * kPage);
  pages_ = {take_pages(rounded), GiveBack{rounded}};
  data_ = flush == Flush::kStart ? pages() : pages() + rounded - bytes;
  forbid_slack(kMargin);
}

uint8_t* GuardedBuffer::margin() const { return data_ == pages() ? data_ + size_ : data_ - margin_size(); }

size_t GuardedBuffer::margin_size() const { return std::min(kMargin, pages_size() - size_); }

void GuardedBuffer::seal() {
  forbid_slack(0);
  if (mprotect(pages(), pages_size(), PROT_READ) != 0) give_up("mprotect");
  pages_.get_deleter().sealed = true;
}

void GuardedBuffer::forbid_slack(size_t keep) {
  const size_t slack = pages_size() - size_;
  if (slack <= keep) return;
  GiveBack& give_back = pages_.get_deleter();
  give_back.slack = data_ == pages() ? data_ + size_ + keep : pages();
  give_back.slack_size = slack - keep;
  set_forbidden(give_back.slack, give_back.slack_size, true);
}

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
