#include "expectation.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <sstream>

namespace zox_test {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// The largest of the samples' values, after `sign` turned them: -1 asks for the smallest.
Interval largest(const std::vector<PlainSample>& samples, double sign) {
  Interval found{-kInfinity, -kInfinity};
  for (const PlainSample& sample : samples) {
    const double low = sign > 0 ? sample.low : -sample.high;
    const double high = sign > 0 ? sample.high : -sample.low;
    if (sample.sure) found.low = std::max(found.low, low);
    found.high = std::max(found.high, high);
  }
  if (sign > 0) return found;
  return {-found.high, -found.low};
}

// Samples that need not count only widen the interval: the lowest of them pull the mean down, one after
// the other as long as they do, and the highest pull it up.
Interval mean(const std::vector<PlainSample>& samples) {
  double low = 0, high = 0, sure = 0;
  std::vector<double> lows, highs;
  for (const PlainSample& sample : samples) {
    if (sample.sure)
      low += sample.low, high += sample.high, ++sure;
    else
      lows.push_back(sample.low), highs.push_back(sample.high);
  }
  std::sort(lows.begin(), lows.end());
  std::sort(highs.rbegin(), highs.rend());
  double low_count = sure, high_count = sure;
  for (const double value : lows)
    if (low_count == 0 || value < low / low_count) low += value, ++low_count;
  for (const double value : highs)
    if (high_count == 0 || value > high / high_count) high += value, ++high_count;
  // Half a unit for the mean's own rounding.
  return {low / low_count - 0.5, high / high_count + 0.5};
}

// Either of two intervals of values, when their distances from 0 do not tell them apart.
std::vector<Interval> farthest(const std::vector<PlainSample>& samples, double slope, double intercept) {
  const Interval top = largest(samples, 1), bottom = largest(samples, -1);
  const auto magnitude = [&](const Interval& at) {
    const double one = at.low * slope + intercept, other = at.high * slope + intercept;
    const double least = one * other < 0 ? 0 : std::min(std::abs(one), std::abs(other));
    return Interval{least, std::max(std::abs(one), std::abs(other))};
  };
  const double unit = 1.001 * std::abs(slope);
  std::vector<Interval> intervals;
  if (magnitude(top).high + unit >= magnitude(bottom).low) intervals.push_back(top);
  if (magnitude(bottom).high + unit >= magnitude(top).low) intervals.push_back(bottom);
  return intervals;
}

}  // namespace

Expectation expect(const std::vector<PlainSample>& samples, int reduction, double slope, double intercept) {
  Expectation expectation;
  expectation.may_be_nothing =
      std::none_of(samples.begin(), samples.end(), [](const PlainSample& sample) { return sample.sure; });
  if (samples.empty()) return expectation;
  expectation.least = kInfinity;
  expectation.largest = -kInfinity;
  for (const PlainSample& sample : samples) {
    expectation.least = std::min(expectation.least, sample.least);
    expectation.largest = std::max(expectation.largest, sample.largest);
  }
  const double sign = slope < 0 ? -1 : 1;
  if (reduction == ZOX_RENDER_MAXIMUM) expectation.intervals = {largest(samples, sign)};
  if (reduction == ZOX_RENDER_MINIMUM) expectation.intervals = {largest(samples, -sign)};
  if (reduction == ZOX_RENDER_MEAN) expectation.intervals = {mean(samples)};
  if (reduction == ZOX_RENDER_LARGEST_MAGNITUDE) expectation.intervals = farthest(samples, slope, intercept);
  return expectation;
}

std::string judge(const Expectation& expectation, int16_t sample, double unit) {
  std::ostringstream text;
  if (sample == ZOX_RENDER_NOTHING && expectation.may_be_nothing) return "";
  for (const Interval& interval : expectation.intervals)
    if (sample > interval.low - unit && sample < interval.high + unit && sample >= expectation.least &&
        sample <= expectation.largest)
      return "";
  text << "the sample is " << sample << ", expected";
  for (const Interval& interval : expectation.intervals)
    text << " " << interval.low << " .. " << interval.high;
  if (expectation.may_be_nothing) text << " nothing";
  text << ", the voxels around are from " << expectation.least << " to " << expectation.largest;
  return text.str();
}

std::string judge_depth(const std::vector<PlainSample>& samples, int16_t sample, int32_t depth,
                        int reduction) {
  std::ostringstream text;
  if (sample == ZOX_RENDER_NOTHING)
    return depth == ZOX_RENDER_NO_DEPTH ? "" : "a ray without samples has a depth";
  const auto is_winner = [&](const PlainSample& at) { return at.number == depth; };
  const auto winner = std::find_if(samples.begin(), samples.end(), is_winner);
  if (winner == samples.end()) {
    text << "depth " << depth << " is none of the ray's samples";
    return text.str();
  }
  if (sample <= winner->low - 1 || sample >= winner->high + 1 || sample < winner->least ||
      sample > winner->largest) {
    text << "the sample is " << sample << ", but at depth " << depth << " lies one of " << winner->low
         << " .. " << winner->high;
    return text.str();
  }
  // A sample that surely equals the winner, nearer to the viewer, should have won.
  for (auto at = samples.begin(); at != winner; ++at)
    if (at->sure && at->low == at->high && at->low == sample && reduction != ZOX_RENDER_MEAN) {
      text << "depth " << depth << " won, but " << at->number << " is as large and nearer";
      return text.str();
    }
  return "";
}

}  // namespace zox_test
