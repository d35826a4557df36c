// The ray casters, once: tests, fault injection, benchmarks and fuzz targets all walk this list.
#pragma once

#include "operations/table.h"
#include "zox_volume.h"

namespace zox_test {

enum class Layout { kBlocked, kGeneral };
enum class Projection { kDivergent, kParallel };
enum class Fetch { kNearest, kNearestBit, kTrilinear };

struct Caster {
  const char* name;  // the exported name without its prefix zox_Volume_RayCast_
  zox::RayCast zox::Operations::*member;
  zox::RayCast exported;
  zox::RayCast reference;
  Layout layout;
  Projection projection;
  Fetch fetch;
  int element_size;  // of a plane, and but for bits of a voxel, in bytes

  bool blocked() const { return layout == Layout::kBlocked; }
  bool parallel() const { return projection == Projection::kParallel; }
  bool trilinear() const { return fetch == Fetch::kTrilinear; }
  bool bit() const { return fetch == Fetch::kNearestBit; }
  // Slice heads and boundaries in tables of fixed size: 512 slices, 511 regions.
  bool fixed_tables() const { return !blocked() && (bit() || (parallel() && !trilinear())); }
};

constexpr int kCasterCount = 18;
extern const Caster kCasters[kCasterCount];

}  // namespace zox_test
