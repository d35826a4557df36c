// The sentences that the checker prints about one call.
#pragma once

#include <vector>

namespace zox_check {

struct Where {
  int ray = -1;     // -1: the sentence is about no single ray
  int sample = -1;  // -1: about no single sample
};

// Lives as long as the check of one call. Of each kind of violation it prints the first few; the
// end of the check says how many it kept back.
class Report {
 public:
  explicit Report(const char* operation) : operation_(operation) {}
  Report(const Report&) = delete;
  Report& operator=(const Report&) = delete;
  ~Report();

  // One sentence without its final stop. The format string's address is the kind of violation.
  [[gnu::format(printf, 3, 4)]] void say(Where where, const char* format, ...);

  bool clean() const { return kinds_.empty(); }

 private:
  struct Kind {
    const char* format;
    int count;
  };
  int count(const char* format);

  const char* operation_;
  std::vector<Kind> kinds_;
};

}  // namespace zox_check
