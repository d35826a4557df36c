// The family of maxima: the operations, planes filled at random with a mask, and how one is run.
#pragma once

#include <string>
#include <vector>

#include "operation_list.h"
#include "sample_planes.h"

namespace zox_test {

enum class Mask { kNone, kBits, kBytes };

struct MaximumInput {
  const zox_Rays* rays;
  const uint8_t* mask;
  int threshold;
};

struct Maximum {
  const char* name;
  Mask mask;
  int element_size;
  int (*run)(const Operations& target, const MaximumInput& in, void* out);
};

#define ZOX_TEST_ONE_MAXIMUM(...) +1
constexpr int kMaximumCount = 0 ZOX_MAXIMA(ZOX_TEST_ONE_MAXIMUM);
extern const Maximum kMaxima[kMaximumCount];

class FilledPlanes {
 public:
  FilledPlanes(const Maximum& maximum, Random random);

  MaximumInput input() const { return {&rays_, mask_.data(), threshold_}; }
  void* prefilled_maxima();
  std::vector<uint8_t> maxima() const { return maxima_.contents(); }  // with the margin behind them
  std::string describe() const;

 private:
  void draw_size();
  void draw_counts();
  void fill_planes(int element_size);
  void draw_mask(Mask mask);

  Random random_;
  int nrays_;
  int longest_;
  int threshold_ = 0;
  uint8_t pattern_;
  zox_Rays rays_{};
  GuardedBuffer counts_, mask_;
  Planes planes_, maxima_;
};

}  // namespace zox_test
