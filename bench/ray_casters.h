// The ray casters by name: each instruction set's, the reference's, the scalar lists'.
#pragma once

#include "operations/table.h"
#include "reference.h"
#include "scalar_lists.h"
#include "volume.h"

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

#define ZOX_BLOCKED(name, element, divergent) \
  { #name, &zox::Operations::name, reference::name, nullptr, Element::element, true, divergent, false }
#define ZOX_GENERAL(name, element, divergent, one_region)                                            \
  {                                                                                                  \
#name, &zox::Operations::name, reference::name, lists::name, Element::element, false, divergent, \
        one_region                                                                                   \
  }

inline const RayCaster kRayCasters[] = {
    ZOX_BLOCKED(blocked_divergent_nearest_8u, k8U, true),
    ZOX_BLOCKED(blocked_divergent_nearest_16s, k16S, true),
    ZOX_BLOCKED(blocked_divergent_trilinear_8u, k8U, true),
    ZOX_BLOCKED(blocked_divergent_trilinear_16s, k16S, true),
    ZOX_BLOCKED(blocked_parallel_nearest_8u, k8U, false),
    ZOX_BLOCKED(blocked_parallel_nearest_16s, k16S, false),
    ZOX_BLOCKED(blocked_parallel_trilinear_8u, k8U, false),
    ZOX_BLOCKED(blocked_parallel_trilinear_16s, k16S, false),
    ZOX_GENERAL(general_divergent_nearest_8u, k8U, true, false),
    ZOX_GENERAL(general_divergent_nearest_16s, k16S, true, false),
    ZOX_GENERAL(general_divergent_nearest_bit_8u, kBit, true, false),
    ZOX_GENERAL(general_divergent_trilinear_8u, k8U, true, false),
    ZOX_GENERAL(general_divergent_trilinear_16s, k16S, true, false),
    ZOX_GENERAL(general_parallel_nearest_8u, k8U, false, true),
    ZOX_GENERAL(general_parallel_nearest_16s, k16S, false, true),
    ZOX_GENERAL(general_parallel_nearest_bit_8u, kBit, false, true),
    ZOX_GENERAL(general_parallel_trilinear_8u, k8U, false, false),
    ZOX_GENERAL(general_parallel_trilinear_16s, k16S, false, false),
};

#undef ZOX_BLOCKED
#undef ZOX_GENERAL

}  // namespace bench
