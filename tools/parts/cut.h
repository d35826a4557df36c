// Cutting a volume into parts that fit the sampling operations' coordinates and a process's memory.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

namespace zox::parts {

using Size = std::array<int32_t, 3>;

// Voxels first .. first + size - 1 are read; the samples of owned ones (of cells i to i + 1 for trilinear
// samples) are taken. Of a set of parts every voxel is owned by one.
struct Part {
  Size first{}, size{}, owned_first{}, owned_size{};
};

struct Limits {
  int32_t longest = 1024;    // voxels along an axis of a part, those that are read but not owned too
  uint64_t most_voxels = 0;  // of a part, likewise; 0: any number
  int32_t least_parts = 1;   // as many at least, if there are as many slices; for as many workers
};

// Slices are cut first, where weights (one for each slice, or none) make the parts equal; rows and columns
// only where a part would be too long. Throws std::runtime_error where no cut keeps the limits.
std::vector<Part> cut(const Size& whole, const Limits& limits, const std::vector<double>& slice_weights);

// The parts of each of `count` workers: whole runs of neighbours, equal by weight.
std::vector<std::vector<Part>> shares(const std::vector<Part>& parts,
                                      const std::vector<double>& slice_weights, int count);

}  // namespace zox::parts
