// A ray caster as the checks know it: what its name says, and the rules that the library follows.
#pragma once

#include <cstdint>

#include "operations/rules.h"
#include "zox_volume.h"

namespace zox_check {

using zox::Voxel;

struct Caster : zox::CasterWords {
  const char* name;
  const zox::GeneralRules* general_rules;  // of slice stacks, otherwise null
  const zox::BlockedRules* blocked_rules;  // of blocked volumes, otherwise null

  constexpr Caster(const char* exported, zox::CasterWords words, const zox::GeneralRules& rules)
      : CasterWords(words), name(exported), general_rules(&rules), blocked_rules(nullptr) {}
  constexpr Caster(const char* exported, zox::CasterWords words, const zox::BlockedRules& rules)
      : CasterWords(words), name(exported), general_rules(nullptr), blocked_rules(&rules) {}

  // Trilinear sampling also reads the voxel one further along each axis.
  constexpr int reach() const { return trilinear() ? 1 : 0; }
};

// Fixed-point positions are followed as doubles that hold whole numbers: exact as long as they are
// inside the signed 32-bit range, and visibly outside it otherwise, where the operation's own
// integers would wrap.
inline bool fits_fixed(double value) { return value >= INT32_MIN && value <= INT32_MAX; }

}  // namespace zox_check
