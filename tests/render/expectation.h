// What a pixel may be, given the samples of its ray.
#pragma once

#include <string>
#include <vector>

#include "plain_renderer.h"

namespace zox_test {

struct Interval {
  double low, high;
};

struct Expectation {
  bool may_be_nothing = false;      // no sample that surely counts
  std::vector<Interval> intervals;  // of the ideal value, before it is made a whole number
  double least = 0, largest = 0;    // of the voxels around all samples
};

// slope and intercept make values of samples: what is largest is decided by values.
Expectation expect(const std::vector<PlainSample>& samples, int reduction, double slope, double intercept);

// "" or what is wrong with a sample that the library gave; one unit is granted for being whole.
std::string judge(const Expectation& expectation, int16_t sample, double unit);

// "" or what is wrong with the number of the sample that is said to have won.
std::string judge_depth(const std::vector<PlainSample>& samples, int16_t sample, int32_t depth,
                        int reduction);

}  // namespace zox_test
