// The sampling operations that a picture takes, and how they are told to step exactly.
#pragma once

#include <zox_volume.h>

#include "volume/volume.h"

namespace render {

using Operation = int (*)(const zox_Volume*, const zox_Rays*);

struct Sampler {
  bool bricks, nearest;
  Operation divergent, parallel;
};

Sampler sampler(Layout layout, bool nearest);

// A step of whole grid units as an operation must be given it, in voxels. Stack operations that round a step
// add a half of their unit and cut toward zero, which makes n - 1 of n units downward: three quarters of a
// unit more come out as n. Trilinear ones round along all axes by units of the grid; the divergent nearest
// one along x and y, by half units.
inline double step_given(double units, double excess) {
  return (units < 0 ? units - excess : units) * (1.0 / 1048576);
}
struct Excess {
  double across, down;  // along x and y; along z
};
inline constexpr Excess kNoExcess = {0, 0};
Excess excess(const Sampler& sampler, bool parallel);

}  // namespace render
