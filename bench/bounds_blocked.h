// Blocked kernels with parts of their work left out: other samplers for the same walk.
#pragma once

#include "blocked/blocked_divergent.h"

namespace zox::ZOX_SET {
namespace {

// As if v were read and changed here: what makes it is not left out, and nothing is known of it after.
template <class T>
void use(T& v) {
  __asm__ volatile("" : : "r"(&v) : "memory");
}

template <BlockedRules rules>
struct Walk : SamplerOf<rules> {
  using Element = ElementOf<rules.voxel>;
  using SamplerOf<rules>::SamplerOf;
  template <class Positions>
  void place_next(int k, const Positions& position, int n, bool) {
    SamplerOf<rules>::place_next(k, position, n, false);
  }
  void values(int k, int, Element*) { use(this->places(k)); }
};

template <BlockedRules rules>
struct Loads : SamplerOf<rules> {
  using Element = ElementOf<rules.voxel>;
  using SamplerOf<rules>::SamplerOf;
  void values(int k, int n, Element* to) {
    if constexpr (rules.sampling == Sampling::kNearest) {
      values_of(this->volume, this->places(k), n, to);
    } else {
      Corners<Element> corners;
      fetch_corners(this->volume, this->places(k), n, corners);
      use(corners);
    }
  }
};

template <BlockedRules rules>
struct Arithmetic : Walk<rules> {
  using Element = ElementOf<rules.voxel>;
  using Walk<rules>::Walk;
  void values(int k, int n, Element* to) {
    use(this->places(k));
    if constexpr (rules.sampling == Sampling::kTrilinear) {
      use(ready);
      interpolate(ready, this->places(k), n, to);
    }
  }
  Corners<Element> ready = {};
};

template <BlockedRules rules, template <BlockedRules> class Part>
int cast_blocked_part(const zox_Volume* volume, const zox_Rays* rays) {
  using Element = ElementOf<rules.voxel>;
  cast_ray_by_ray<rules, StepOf::kEachRay, Part<rules>>(BlockedVolume<Element>(*volume), *rays);
  return ZOX_STS_NO_ERROR;
}

// A row of the list.
#define ZOX_BLOCKED_BOUNDS(name, rules)                                                           \
  {                                                                                               \
#name, kOperations.name, cast_blocked_part < rules, Walk>, cast_blocked_part < rules, Loads>, \
        cast_blocked_part < rules, Arithmetic>                                                    \
  }

}  // namespace
}  // namespace zox::ZOX_SET
