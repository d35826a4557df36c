// Casts the rays of one tile through the library: one batch, reduced to a maximum per ray.
#pragma once

#include <zox_volume.h>

#include <array>
#include <cstdint>
#include <vector>

#include "clip.h"
#include "options.h"
#include "packing.h"
#include "vec3.h"
#include "volume.h"

namespace zox_mip {

inline constexpr int kTileEdge = 8;
inline constexpr int kTileRays = kTileEdge * kTileEdge;

using CastOperation = int (*)(const zox_Volume*, const zox_Rays*);

CastOperation cast_operation(Layout layout, Projection projection, Interpolation interpolation,
                             VoxelType type, int slices);

// Which samples a depth range admits: by sample number, counted from the middle of the volume.
struct DepthMask {
  int first = 0;                  // the number of the sample that selected[0] speaks of
  std::vector<uint8_t> selected;  // 1 or 0; empty: all samples are

  bool admits_any(const Stretch& stretch) const;
};

// The caller's memory for batches of up to 64 rays; one object per thread.
class TileCaster {
 public:
  TileCaster(const zox_Volume& volume, VoxelType type, CastOperation cast, const DepthMask& mask,
             int max_samples);

  void clear() { count_ = 0; }
  // A ray of at least one sample; its maximum goes to *maximum.
  void add(const Vec3& middle, const Vec3& step, const Stretch& stretch, int16_t* maximum);
  // Samples the rays added since clear() and stores their maxima. Returns the library's status.
  int run();

 private:
  void reduce(const zox_Rays& rays, const uint8_t* mask, int16_t* maxima) const;
  void reduce_masked(const zox_Rays& rays, int16_t* maxima);

  const zox_Volume& volume_;
  VoxelType type_;
  CastOperation cast_;
  const DepthMask& mask_;
  std::vector<std::byte> samples_;
  std::vector<void*> planes_;
  std::vector<void*> single_ray_planes_;
  std::array<Vec3, kTileRays> starts_{};
  std::array<Vec3, kTileRays> steps_{};
  std::array<const double*, kTileRays> start_pointers_{};
  std::array<const double*, kTileRays> step_pointers_{};
  std::array<int32_t, kTileRays> nsamples_{};
  std::array<int, kTileRays> first_{};
  std::array<int16_t*, kTileRays> targets_{};
  int count_ = 0;
};

}  // namespace zox_mip
