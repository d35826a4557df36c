// The ray casters with what runs them: tests, fault injection and fuzz targets walk this list.
#pragma once

#include "operations/caster_words.h"
#include "operations/table.h"
#include "zox_volume.h"

namespace zox_test {

struct Caster : zox::CasterWords {
  const char* name;  // the exported name without its prefix zox_Volume_RayCast_
  zox::RayCast zox::Operations::*member;
  zox::RayCast exported;
  zox::RayCast reference;

  // Slice heads and boundaries in tables of fixed size: 512 slices, 511 regions.
  bool fixed_tables() const { return !blocked() && (bit() || (parallel() && !trilinear())); }
};

#define ZOX_TEST_ONE(...) +1
constexpr int kCasterCount = 0 ZOX_CASTERS(ZOX_TEST_ONE);
extern const Caster kCasters[kCasterCount];

}  // namespace zox_test
