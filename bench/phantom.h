// The volumes that the benchmarks sample: smooth shapes with noise, in both storage forms.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "zox_volume.h"

namespace bench {

enum class Element { k8U, k16S, kBit };

inline int bytes_per_sample(Element element) { return element == Element::k16S ? 2 : 1; }

// edge x edge x slices voxels.
struct Shape {
  int edge, slices;
};

// A volume and everything that its record points to.
struct Volume {
  zox_Volume record = {};
  Shape shape = {};
  double depth = 0;  // extent along z in the rays' coordinates: that of the last slice
  std::vector<std::byte> voxels;
  std::vector<const void*> slices;
  std::vector<int32_t> row_offsets;
  std::vector<int32_t> region_slices;
  std::vector<double> region_bounds;
  std::vector<double> region_scales;
};

// storage: "bricks" (blocked), or a slice stack: "packed" (one region, rows and slices back to back as
// a file holds them), "1region" and "3regions" (a gap between slices), "scattered" (three regions, slices
// and rows in no regular order in memory).
void fill_volume(Volume& volume, const std::string& storage, Element element, Shape shape);

// Takes the voxels out of all caches.
void evict(const Volume& volume);

}  // namespace bench
