// What the words of a ray caster's name say.
#pragma once

namespace zox {

enum class Layout { kBlocked, kGeneral };
enum class Projection { kDivergent, kParallel };
enum class Sampling { kNearest, kTrilinear };
enum class Voxel { k8U, k16S, kBit };

struct CasterWords {
  Layout layout;
  Projection projection;
  Sampling sampling;
  Voxel voxel;

  constexpr bool blocked() const { return layout == Layout::kBlocked; }
  constexpr bool general() const { return layout == Layout::kGeneral; }
  constexpr bool parallel() const { return projection == Projection::kParallel; }
  constexpr bool trilinear() const { return sampling == Sampling::kTrilinear; }
  constexpr bool bit() const { return voxel == Voxel::kBit; }

  // Of a sample, and but for bits of a voxel, in bytes.
  constexpr int element_size() const { return voxel == Voxel::k16S ? 2 : 1; }
};

// Of a row of the list of ray casters.
#define ZOX_CASTER_WORDS(Layout_, Projection_, Sampling_, Voxel_)                          \
  {                                                                                        \
    zox::Layout::k##Layout_, zox::Projection::k##Projection_, zox::Sampling::k##Sampling_, \
        zox::Voxel::k##Voxel_                                                              \
  }

}  // namespace zox
