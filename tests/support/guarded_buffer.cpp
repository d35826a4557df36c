#include "guarded_buffer.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <utility>
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
constexpr size_t kLargestPooled = 16 * kPage;

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

void unmap(uint8_t* pages, size_t bytes) {
  if (munmap(pages - kPage, bytes + 2 * kPage) != 0) give_up("munmap");
}

// Small buffers come by the hundred in every batch; mapping each anew would take most of the time.
class Pool {
 public:
  ~Pool() {
    for (auto& [bytes, list] : free_) {
      for (uint8_t* pages : list) unmap(pages, bytes);
    }
  }

  uint8_t* take(size_t bytes) {
    auto found = free_.find(bytes);
    if (found == free_.end() || found->second.empty()) return map_between_guards(bytes);
    uint8_t* pages = found->second.back();
    found->second.pop_back();
    return pages;
  }

  void give(uint8_t* pages, size_t bytes) {
    if (bytes > kLargestPooled) {
      unmap(pages, bytes);
    } else {
      free_[bytes].push_back(pages);
    }
  }

 private:
  std::map<size_t, std::vector<uint8_t*>> free_;
};

thread_local Pool pool;

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

GuardedBuffer::GuardedBuffer(size_t bytes, Flush flush)
    : pages_size_(std::max(kPage, (bytes + kPage - 1) / kPage * kPage)), size_(bytes) {
  pages_ = pool.take(pages_size_);
  data_ = flush == Flush::kStart ? pages_ : pages_ + pages_size_ - bytes;
  set_slack_forbidden(true, kMargin);
}

GuardedBuffer& GuardedBuffer::operator=(GuardedBuffer&& other) noexcept {
  if (this == &other) return *this;
  release();
  pages_ = std::exchange(other.pages_, nullptr);
  pages_size_ = other.pages_size_;
  data_ = other.data_;
  size_ = other.size_;
  sealed_ = other.sealed_;
  return *this;
}

uint8_t* GuardedBuffer::margin() const { return data_ == pages_ ? data_ + size_ : data_ - margin_size(); }

size_t GuardedBuffer::margin_size() const { return std::min(kMargin, pages_size_ - size_); }

void GuardedBuffer::seal() {
  set_slack_forbidden(true, 0);
  if (mprotect(pages_, pages_size_, PROT_READ) != 0) give_up("mprotect");
  sealed_ = true;
}

void GuardedBuffer::release() {
  if (pages_ == nullptr) return;
  if (sealed_ && mprotect(pages_, pages_size_, PROT_READ | PROT_WRITE) != 0) give_up("mprotect");
  set_slack_forbidden(false, 0);
  pool.give(pages_, pages_size_);
  pages_ = nullptr;
}

void GuardedBuffer::set_slack_forbidden(bool forbidden, size_t keep) {
  const size_t slack = pages_size_ - size_;
  if (slack <= keep) return;
  uint8_t* slack_begin = data_ == pages_ ? data_ + size_ + keep : pages_;
  set_forbidden(slack_begin, slack - keep, forbidden);
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
