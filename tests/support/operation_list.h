// The ray casters, and whoever computes an operation: tests, fault injection and fuzz targets walk these.
#pragma once

#include <vector>

#include "operations/caster_words.h"
#include "operations/table.h"
#include "zox_volume.h"

namespace zox_test {

using zox::Operations;

struct Caster : zox::CasterWords {
  const char* name;  // the exported name without its prefix zox_Volume_RayCast_
  zox::RayCast Operations::*member;
  zox::RayCast exported;
  zox::RayCast reference;

  // Slice heads and boundaries in tables of fixed size: 512 slices, 511 regions.
  bool fixed_tables() const { return !blocked() && (bit() || (parallel() && !trilinear())); }
};

#define ZOX_TEST_ONE(...) +1
constexpr int kCasterCount = 0 ZOX_CASTERS(ZOX_TEST_ONE);
extern const Caster kCasters[kCasterCount];

// The plain reference, and the exported functions under both names.
extern const Operations kReference, kExported, kSecondNames;

// What results are compared on: each instruction set by name, and the exported functions.
inline std::vector<const Operations*> all_targets() {
  std::vector<const Operations*> targets(std::begin(zox::kAllOperations), std::end(zox::kAllOperations));
  targets.push_back(&kExported);
  return targets;
}

}  // namespace zox_test
