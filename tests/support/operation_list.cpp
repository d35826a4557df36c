#include "operation_list.h"

#include "reference.h"

namespace zox_test {

#define ZOX_TEST_CASTER(Name, name, rules, ...) \
  {ZOX_CASTER_WORDS(__VA_ARGS__), #Name, &zox::Operations::name, zox_Volume_RayCast_##Name, reference::name},

const Caster kCasters[kCasterCount] = {ZOX_CASTERS(ZOX_TEST_CASTER)};

}  // namespace zox_test
