#include "progress.h"

#include <cstdio>
#include <string>

namespace zox_mip {

namespace {
constexpr int kBarLength = 40;
}

int Work::show(void* user, double part) {
  Work& work = *static_cast<Work*>(user);
  if (work.shown_) work.draw(work.share_ * (static_cast<double>(work.done_) + part));
  return 0;
}

void Work::draw(double share) {
  const int percent = static_cast<int>(share * 100);
  if (percent == percent_) return;
  percent_ = percent;
  const size_t filled = static_cast<size_t>(share * kBarLength);
  const std::string bar = std::string(filled, '#') + std::string(kBarLength - filled, '.');
  std::fprintf(stderr, "\r[%s] %3d %%", bar.c_str(), percent);
}

void Work::clear() {
  if (percent_ >= 0) std::fprintf(stderr, "\r%*s\r", kBarLength + 8, "");
  percent_ = -1;
}

}  // namespace zox_mip
