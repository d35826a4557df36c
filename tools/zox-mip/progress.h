// A bar on stderr, redrawn when a percent more is done.
#pragma once

#include <cstddef>

namespace zox_mip {

// The share of all the work, in equal steps: a volume to build, a picture to make.
class Work {
 public:
  Work(bool shown, size_t steps) : shown_(shown), share_(1 / static_cast<double>(steps)) {}
  ~Work() { clear(); }
  Work(const Work&) = delete;
  Work& operator=(const Work&) = delete;

  // The step has come so far; for zox_render_run, with the Work as `user`.
  static int show(void* user, double part);
  void next_step() { ++done_; }
  void skip_to(size_t steps) { done_ = steps; }
  void clear();  // takes the bar away

 private:
  void draw(double share);

  bool shown_;
  double share_;
  size_t done_ = 0;
  int percent_ = -1;
};

}  // namespace zox_mip
