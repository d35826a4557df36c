#include "cut.h"

#include <algorithm>
#include <numeric>
#include <stdexcept>
#include <string>

namespace zox::parts {
namespace {

struct Run {
  int32_t first, count;
};

// Equal runs, each with a neighbour behind it (but the last) no longer than `longest`.
std::vector<Run> equal_runs(int32_t length, int32_t longest) {
  const int32_t owned = std::max(longest - 1, 1);
  const int32_t count = length <= longest ? 1 : (length - 1 + owned - 1) / owned;
  std::vector<Run> runs;
  for (int32_t i = 0; i < count; ++i) {
    const auto at = [&](int32_t n) { return static_cast<int32_t>(int64_t{length} * n / count); };
    runs.push_back({at(i), at(i + 1) - at(i)});
  }
  return runs;
}

// Runs of about equal weight, no longer than `longest` slices with the neighbour behind them.
std::vector<Run> weighted_runs(const std::vector<double>& weights, int32_t count, int32_t longest) {
  const auto length = static_cast<int32_t>(weights.size());
  const int32_t owned = std::max(longest - 1, 1);
  const double total = std::accumulate(weights.begin(), weights.end(), 0.0);
  std::vector<Run> runs;
  double passed = 0;
  int32_t first = 0;
  for (int32_t z = 0; z < length; ++z) {
    passed += weights[static_cast<size_t>(z)];
    const int32_t taken = z + 1 - first, left = length - z - 1;
    const auto made = static_cast<int32_t>(runs.size());
    const bool has_share = passed * count >= total * (made + 1) && left >= count - made - 1;
    const bool is_last_chance = left <= count - made - 1;  // a slice for each of the other runs
    if (left > 0 && !has_share && taken < owned && !is_last_chance) continue;
    runs.push_back({first, taken});
    first = z + 1;
  }
  return runs;
}

// Runs of slices for workers that take whole parts, `in_slice` for a run: as few as may be, but so many that
// no worker's share of the parts is much larger than the others'.
int32_t even_count(int32_t least, int32_t in_slice, int32_t workers) {
  constexpr double kEven = 0.9;
  for (int32_t count = least; count <= 4 * least; ++count) {
    const int64_t parts = int64_t{count} * in_slice, most = (parts + workers - 1) / workers;
    if (static_cast<double>(parts) >= kEven * static_cast<double>(most * workers)) return count;
  }
  return least;
}

int32_t read_size(const Run& run, int32_t whole) { return std::min(run.count + 1, whole - run.first); }

Part part_of(const Size& whole, const Run& x, const Run& y, const Run& z) {
  Part part;
  const Run runs[] = {x, y, z};
  for (size_t axis = 0; axis < 3; ++axis) {
    part.first[axis] = part.owned_first[axis] = runs[axis].first;
    part.owned_size[axis] = runs[axis].count;
    part.size[axis] = read_size(runs[axis], whole[axis]);
  }
  return part;
}

std::vector<double> weights_or_ones(const std::vector<double>& weights, int32_t slices) {
  std::vector<double> all(static_cast<size_t>(slices), 1.0);
  // A slice of air costs its share of the bounds at least.
  constexpr double kLeast = 0.02;
  const double most = weights.empty() ? 0 : *std::max_element(weights.begin(), weights.end());
  for (size_t z = 0; most > 0 && z < all.size(); ++z) all[z] = std::max(weights[z], kLeast * most);
  return all;
}

}  // namespace

std::vector<Part> cut(const Size& whole, const Limits& limits, const std::vector<double>& slice_weights) {
  const std::vector<Run> columns = equal_runs(whole[0], limits.longest);
  const std::vector<Run> rows = equal_runs(whole[1], limits.longest);
  int32_t longest = limits.longest;
  if (limits.most_voxels > 0) {
    const uint64_t slice = uint64_t(read_size(columns[0], whole[0])) * uint64_t(read_size(rows[0], whole[1]));
    const uint64_t slices = limits.most_voxels / slice;
    if (slices < 2)
      throw std::runtime_error("Two slices of " + std::to_string(slice) + " voxels do not fit the memory.");
    longest = static_cast<int32_t>(std::min<uint64_t>(slices, uint64_t(longest)));
  }
  const auto in_slice = static_cast<int32_t>(columns.size() * rows.size());
  const int32_t wanted = (limits.least_parts + in_slice - 1) / in_slice;
  const auto least = static_cast<int32_t>(equal_runs(whole[2], longest).size());
  const int32_t count = std::min(even_count(std::max(wanted, least), in_slice, limits.least_parts), whole[2]);
  std::vector<Part> parts;
  for (const Run& z : weighted_runs(weights_or_ones(slice_weights, whole[2]), count, longest))
    for (const Run& y : rows)
      for (const Run& x : columns) parts.push_back(part_of(whole, x, y, z));
  return parts;
}

std::vector<std::vector<Part>> shares(const std::vector<Part>& parts,
                                      const std::vector<double>& slice_weights, int count) {
  const Part& last = parts.back();
  const std::vector<double> weights =
      weights_or_ones(slice_weights, last.owned_first[2] + last.owned_size[2]);
  std::vector<double> ends;
  double total = 0;
  for (const Part& part : parts) {
    double weight = 0;
    for (int32_t z = part.owned_first[2]; z < part.owned_first[2] + part.owned_size[2]; ++z)
      weight += weights[static_cast<size_t>(z)];
    total += weight * part.owned_size[0] * part.owned_size[1];
    ends.push_back(total);
  }
  // A part belongs to the worker in whose share its middle lies.
  std::vector<std::vector<Part>> all(static_cast<size_t>(count));
  for (size_t i = 0; i < parts.size(); ++i) {
    const double middle = (ends[i] + (i == 0 ? 0 : ends[i - 1])) / 2;
    const int owner = std::min(static_cast<int>(middle / total * count), count - 1);
    all[static_cast<size_t>(owner)].push_back(parts[i]);
  }
  return all;
}

}  // namespace zox::parts
