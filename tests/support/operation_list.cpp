#include "operation_list.h"

#include "reference.h"
#include "zox_volume_names.h"

namespace zox_test {
namespace {

bool always() { return true; }

}  // namespace

#define ZOX_TEST_CASTER(Name, name, rules, ...) \
  {ZOX_CASTER_WORDS(__VA_ARGS__), #Name, &Operations::name, zox_Volume_RayCast_##Name, reference::name},

const Caster kCasters[kCasterCount] = {ZOX_CASTERS(ZOX_TEST_CASTER)};

#define ZOX_TEST_REFERENCE(Name, name, ...) reference::name,
#define ZOX_TEST_EXPORTED_CASTER(Name, ...) zox_Volume_RayCast_##Name,
#define ZOX_TEST_EXPORTED(Name, ...) zox_Volume_##Name,
#define ZOX_TEST_SECOND_CASTER(Name, ...) __zox_Volume_RayCast_##Name,
#define ZOX_TEST_SECOND(Name, ...) __zox_Volume_##Name,
#define ZOX_TEST_TABLE(text, caster, other) \
  { #text, always, ZOX_CASTERS(caster) ZOX_MAXIMA(other) ZOX_WINDOW_LEVELS(other) }

const Operations kReference = ZOX_TEST_TABLE(reference, ZOX_TEST_REFERENCE, ZOX_TEST_REFERENCE);
const Operations kExported = ZOX_TEST_TABLE(exported, ZOX_TEST_EXPORTED_CASTER, ZOX_TEST_EXPORTED);
const Operations kSecondNames = ZOX_TEST_TABLE(second_names, ZOX_TEST_SECOND_CASTER, ZOX_TEST_SECOND);

}  // namespace zox_test
