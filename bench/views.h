// Batches of rays: 8x8-ray tiles of a 512x512 image of a volume.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "phantom.h"

namespace bench {

// One batch. The record points into the vectors, so a Batch moves but is not copied.
struct Batch {
  Batch() = default;
  Batch(Batch&&) = default;
  Batch(const Batch&) = delete;

  zox_Rays record = {};
  std::vector<std::array<double, 3>> starts, steps;
  std::vector<const double*> start_pointers, step_pointers;
  std::vector<int32_t> counts;

  int64_t samples() const;
  int32_t longest() const;
};

// view: "z", "x", "oblique", "falling" (against z), "perspective".
// load: "cached", "cold", "ragged" (counts cut at random), "short" (4 samples), "rays1" and so on: tiles
// spread evenly over the image; of "cold" more of them, none near the one before. "warm": two rows of
// tiles in turn, as a renderer walks them. Every ray is clipped so that all its samples and their
// neighbours lie inside the volume, one voxel from sample to sample.
std::vector<Batch> make_batches(const Volume& volume, const std::string& view, const std::string& load);

}  // namespace bench
