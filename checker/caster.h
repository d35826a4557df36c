// What a ray caster's name says about it; every check follows from these five words.
#pragma once

#include <cstdint>

#include "zox_volume.h"

namespace zox_check {

enum class Layout { kBlocked, kGeneral };
enum class Projection { kDivergent, kParallel };
enum class Sampling { kNearest, kTrilinear };
enum class Voxel { k8U, k16S, kBit };

struct Caster {
  const char* name;
  Layout layout;
  Projection projection;
  Sampling sampling;
  Voxel voxel;

  constexpr bool general() const { return layout == Layout::kGeneral; }
  constexpr bool parallel() const { return projection == Projection::kParallel; }
  constexpr bool trilinear() const { return sampling == Sampling::kTrilinear; }
  constexpr int element_size() const { return voxel == Voxel::k16S ? 2 : 1; }
  // Trilinear sampling also reads the voxel one further along each axis.
  constexpr int reach() const { return trilinear() ? 1 : 0; }
};

// Fixed-point positions are followed as doubles that hold whole numbers: exact as long as they are
// inside the signed 32-bit range, and visibly outside it otherwise, where the operation's own
// integers would wrap.
inline bool fits_fixed(double value) { return value >= INT32_MIN && value <= INT32_MAX; }

}  // namespace zox_check
