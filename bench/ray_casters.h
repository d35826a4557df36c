// The ray casters by name: each instruction set's, the reference's, the scalar lists'.
#pragma once

#include "operations/caster_words.h"
#include "operations/table.h"
#include "phantom.h"
#include "reference.h"
#include "scalar_lists.h"

namespace bench {

struct RayCaster {
  const char* name;
  zox::RayCast zox::Operations::*member;
  zox::RayCast reference;
  zox::RayCast lists;  // null for blocked volumes
  Element element;
  bool blocked, divergent;
  bool one_region_path;  // volumes of one region are not sampled through slice lists
};

#define ZOX_BENCH_LISTS_Blocked(name) nullptr
#define ZOX_BENCH_LISTS_General(name) lists::name
#define ZOX_BENCH_CASTER(Name, name, rules, Layout_, Projection_, Sampling_, Voxel_) \
  {#name,                                                                            \
   &zox::Operations::name,                                                           \
   reference::name,                                                                  \
   ZOX_BENCH_LISTS_##Layout_(name),                                                  \
   Element::k##Voxel_,                                                               \
   zox::Layout::k##Layout_ == zox::Layout::kBlocked,                                 \
   zox::Projection::k##Projection_ == zox::Projection::kDivergent,                   \
   zox::Layout::k##Layout_ == zox::Layout::kGeneral &&                               \
       zox::Projection::k##Projection_ == zox::Projection::kParallel &&              \
       zox::Sampling::k##Sampling_ == zox::Sampling::kNearest},

inline const RayCaster kRayCasters[] = {ZOX_CASTERS(ZOX_BENCH_CASTER)};

#undef ZOX_BENCH_CASTER

}  // namespace bench
