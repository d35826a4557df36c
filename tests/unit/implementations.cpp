#include "implementations.h"

#include "reference.h"
#include "zox_volume_names.h"

namespace zox_unit {
namespace {

bool always() { return true; }

#define ZOX_UNIT_REFERENCE(Name, name, ...) reference::name,

const Operations kReference = {"reference", always,
                               ZOX_CASTERS(ZOX_UNIT_REFERENCE) ZOX_MAXIMA(ZOX_UNIT_REFERENCE)
                                   ZOX_WINDOW_LEVELS(ZOX_UNIT_REFERENCE)};

#define ZOX_UNIT_CASTER(Name, ...) zox_Volume_RayCast_##Name,
#define ZOX_UNIT_OTHER(Name, ...) zox_Volume_##Name,
#define ZOX_UNIT_SECOND_CASTER(Name, ...) __zox_Volume_RayCast_##Name,
#define ZOX_UNIT_SECOND_OTHER(Name, ...) __zox_Volume_##Name,

const Operations kExported = {"exported", always,
                              ZOX_CASTERS(ZOX_UNIT_CASTER) ZOX_MAXIMA(ZOX_UNIT_OTHER)
                                  ZOX_WINDOW_LEVELS(ZOX_UNIT_OTHER)};
const Operations kSecondNames = {"second_names", always,
                                 ZOX_CASTERS(ZOX_UNIT_SECOND_CASTER) ZOX_MAXIMA(ZOX_UNIT_SECOND_OTHER)
                                     ZOX_WINDOW_LEVELS(ZOX_UNIT_SECOND_OTHER)};

}  // namespace

std::vector<const Operations*> implementations() {
  std::vector<const Operations*> all = {&kReference, &kExported, &kSecondNames};
  for (const Operations* set : zox::kAllOperations) {
    if (set->supported()) all.push_back(set);
  }
  return all;
}

bool in_library(const Operations& implementation) { return &implementation != &kReference; }

std::vector<const Caster*> casters_where(Chooses chooses) {
  std::vector<const Caster*> chosen;
  for (const Caster& caster : zox_test::kCasters) {
    if (chooses(caster)) chosen.push_back(&caster);
  }
  return chosen;
}

std::string implementation_name(const testing::TestParamInfo<const Operations*>& info) {
  return info.param->name;
}

std::string case_name(const testing::TestParamInfo<CasterCase>& info) {
  return std::string(std::get<0>(info.param)->name) + "_" + std::get<1>(info.param)->name;
}

}  // namespace zox_unit
