// A bar on stderr, redrawn when a percent more is done.
#pragma once

namespace zox_mip {

class Progress {
 public:
  Progress() = default;
  ~Progress() { clear(); }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void show(double share);
  void clear();  // takes the bar away

 private:
  int percent_ = -1;
};

}  // namespace zox_mip
