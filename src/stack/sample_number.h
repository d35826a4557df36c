// Sample k of ray r has the number r + 64 k: one number names a sample's ray and its plane.
#pragma once

#include "zox_volume.h"

namespace zox::ZOX_SET {
namespace {

constexpr int kRayBits = 6;
static_assert(ZOX_MAX_GENERAL_RAYS == 1 << kRayBits);

constexpr int sample_number(int r, int k) { return r + k * (1 << kRayBits); }
constexpr int ray_of(int number) { return number & (ZOX_MAX_GENERAL_RAYS - 1); }
constexpr int plane_of(int number) { return number >> kRayBits; }

// Where a sample is written.
template <class Element>
Element* sample_at(void* const* planes, int number) {
  return static_cast<Element*>(planes[plane_of(number)]) + ray_of(number);
}

}  // namespace
}  // namespace zox::ZOX_SET
