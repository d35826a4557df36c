// Slice stacks: voxels, and the way from a ray's z to a slice.
#pragma once

#include <cstring>
#include <vector>

#include "arithmetic.h"
#include "interpolation.h"

namespace reference {

// Rows may start at any byte, so 16-bit voxels need not be aligned.
template <typename Voxel>
Voxel load(const void* slice, int64_t byte_offset) {
  Voxel voxel;
  std::memcpy(&voxel, static_cast<const uint8_t*>(slice) + byte_offset, sizeof voxel);
  return voxel;
}

// One bit per voxel, most significant first. The bit's number is x - (x >> 3), not x & 7, and the
// shift count is taken modulo 32: beyond column 8 most columns read as 0. This is intended.
inline uint8_t load_bit(const void* slice, int64_t byte_offset, int32_t x) {
  const uint32_t byte = load<uint8_t>(slice, byte_offset);
  const uint32_t count = static_cast<uint32_t>(7 - (x - (x >> 3))) & 31;
  return static_cast<uint8_t>((byte >> count) & 1);
}

// The fetches of the nearest operations that work through slice lists: column and row have passed
// through 16 unsigned bits, and the sum of an 8-bit or one-bit voxel's byte offset wraps in 32.
struct ByteVoxel {
  using Element = uint8_t;
  static Element read(const zox_Volume& volume, int32_t slice, uint16_t x, uint16_t y) {
    return load<Element>(volume.slices[slice], wrap_add(volume.rowoffs[y], x));
  }
};
struct ShortVoxel {
  using Element = int16_t;
  static Element read(const zox_Volume& volume, int32_t slice, uint16_t x, uint16_t y) {
    return load<Element>(volume.slices[slice], int64_t{volume.rowoffs[y]} + 2 * x);
  }
};
struct BitVoxel {
  using Element = uint8_t;
  static Element read(const zox_Volume& volume, int32_t slice, uint16_t x, uint16_t y) {
    return load_bit(volume.slices[slice], wrap_add(volume.rowoffs[y], x >> 3), x);
  }
};

// The byte offset of column x in a row, as the trilinear operations form it: in 64 bits, except that
// 8-bit divergent rays wrap the sum in 32.
template <typename Voxel>
int64_t plain_offset(int32_t row, int32_t x) {
  return int64_t{row} + int64_t{x} * int64_t{sizeof(Voxel)};
}
inline int64_t wrapping_offset(int32_t row, int32_t x) { return wrap_add(row, x); }

// The eight voxels of a trilinear sample; x and y have 20 fraction bits.
template <typename Voxel, auto kOffset>
Corners stack_corners(const zox_Volume& volume, int32_t slice, int32_t x, int32_t y) {
  Corners corners;
  for (int l = 0; l < 2; ++l) {
    const void* base = volume.slices[slice + l];
    for (int j = 0; j < 2; ++j) {
      const int64_t offset = kOffset(volume.rowoffs[(y >> 20) + j], x >> 20);
      corners.at[l][j][0] = load<Voxel>(base, offset);
      corners.at[l][j][1] = load<Voxel>(base, offset + int64_t{sizeof(Voxel)});
    }
  }
  return corners;
}

// The regions of a stack with their boundaries in the fixed point of one operation.
class Regions {
 public:
  template <typename Convert>
  Regions(const zox_Volume& volume, double fixed_scale, Convert convert)
      : last(volume.nregions - 1), scale(volume.regscale), first_slice(volume.regslice) {
    for (int32_t j = 0; j <= volume.nregions; ++j)
      bounds.push_back(convert(volume.regbounds[j] * fixed_scale));
  }

  // A distance in z, in fixed point, becomes a distance in slices.
  int32_t in_slices(int32_t region, int32_t distance) const {
    return truncate(static_cast<double>(distance) * scale[region]);
  }

  int32_t last;
  const double* scale;
  const int32_t* first_slice;
  std::vector<int32_t> bounds;
};

// A ray in fixed point: start and step.
struct FixedRay {
  int32_t x, y, z;
  int32_t dx, dy, dz;
};

// Calls visit(k, x, y, position, region) for the samples of one ray, where position counts slices
// in fixed point from the first slice of the region. The position is computed afresh only where
// the region changes and is stepped everywhere else. A step of one unit or more climbs; all others
// descend. A sample on a boundary stays in the region that the ray comes from. The first and the last
// region have no end, so that of one region alone the boundaries do not matter.
template <typename Visit>
void walk(const Regions& regions, FixedRay ray, int32_t count, Visit visit) {
  const bool climbs = ray.dz >= 1;
  int32_t region = climbs ? 0 : regions.last;
  int32_t position = regions.in_slices(region, wrap_subtract(ray.z, regions.bounds[region]));
  int32_t advance = regions.in_slices(region, ray.dz);
  for (int32_t k = 0; k < count; ++k) {
    const int32_t before = region;
    if (climbs) {
      while (region < regions.last && regions.bounds[region + 1] < ray.z) ++region;
    } else {
      while (region > 0 && ray.z < regions.bounds[region]) --region;
    }
    if (region != before) {
      position = regions.in_slices(region, wrap_subtract(ray.z, regions.bounds[region]));
      advance = regions.in_slices(region, ray.dz);
    }
    visit(k, ray.x, ray.y, position, region);
    ray.x = wrap_add(ray.x, ray.dx);
    ray.y = wrap_add(ray.y, ray.dy);
    ray.z = wrap_add(ray.z, ray.dz);
    position = wrap_add(position, advance);
  }
}

constexpr double kNearestScale = 2097152.0;    // 21 fraction bits
constexpr double kTrilinearScale = 1048576.0;  // 20 fraction bits

// Every nearest sample of a batch; ray_of(r) gives ray r in fixed point.
template <typename Voxel, typename RayOf>
int cast_stack_nearest(const zox_Volume& volume, const zox_Rays& rays, RayOf ray_of) {
  const Regions regions(volume, kNearestScale, truncate);
  for (int32_t r = 0; r < rays.nrays; ++r) {
    walk(regions, ray_of(r), rays.nsamples[r],
         [&](int32_t k, int32_t x, int32_t y, int32_t position, int32_t region) {
           const int32_t slice =
               wrap_add(wrap_add(position, 1 << 20) >> 21, regions.first_slice[region]);  // half up
           if (note({r, x >> 21, y >> 21, slice})) return;
           if (slice < 0 || slice >= volume.nslices) return;
           write_sample(
               rays, k, r,
               Voxel::read(volume, slice, static_cast<uint16_t>(x >> 21), static_cast<uint16_t>(y >> 21)));
         });
  }
  return ZOX_STS_NO_ERROR;
}

inline uint8_t interpolate_stack(const Corners& v, int32_t x, int32_t y, int32_t z, uint8_t) {
  return interpolate_fixed(v, x, y, z);
}
inline int16_t interpolate_stack(const Corners& v, int32_t x, int32_t y, int32_t z, int16_t) {
  return interpolate_lerp(v, x, y, z);
}

// Every trilinear sample of a batch. All starts and steps are rounded; the boundaries are converted
// as the operation says. step_of(r) gives ray r's step.
template <typename Voxel, auto kOffset, typename Convert, typename StepOf>
int cast_stack_trilinear(const zox_Volume& volume, const zox_Rays& rays, Convert convert_bound,
                         StepOf step_of) {
  const Regions regions(volume, kTrilinearScale, convert_bound);
  const auto fixed = [](double value) { return add_half_and_truncate(value * kTrilinearScale); };
  for (int32_t r = 0; r < rays.nrays; ++r) {
    const double* start = rays.starts[r];
    const double* step = step_of(r);
    const FixedRay ray = {fixed(start[0]), fixed(start[1]), fixed(start[2]),
                          fixed(step[0]),  fixed(step[1]),  fixed(step[2])};
    walk(regions, ray, rays.nsamples[r],
         [&](int32_t k, int32_t x, int32_t y, int32_t position, int32_t region) {
           const int32_t slice = wrap_add(position >> 20, regions.first_slice[region]);  // floor
           if (note({r, x >> 20, y >> 20, slice})) return;
           if (slice < 0 || slice >= volume.nslices) return;
           const Corners corners = stack_corners<Voxel, kOffset>(volume, slice, x, y);
           write_sample(rays, k, r, interpolate_stack(corners, x, y, position, Voxel{}));
         });
  }
  return ZOX_STS_NO_ERROR;
}

}  // namespace reference
