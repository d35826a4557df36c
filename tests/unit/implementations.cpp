#include "implementations.h"

#include "reference.h"
#include "zox_volume_names.h"

namespace zox_unit {
namespace {

bool always() { return true; }

const Operations kReference = {
    "reference",
    always,
    reference::blocked_divergent_nearest_8u,
    reference::blocked_divergent_nearest_16s,
    reference::blocked_divergent_trilinear_8u,
    reference::blocked_divergent_trilinear_16s,
    reference::blocked_parallel_nearest_8u,
    reference::blocked_parallel_nearest_16s,
    reference::blocked_parallel_trilinear_8u,
    reference::blocked_parallel_trilinear_16s,
    reference::general_divergent_nearest_8u,
    reference::general_divergent_nearest_16s,
    reference::general_divergent_nearest_bit_8u,
    reference::general_divergent_trilinear_8u,
    reference::general_divergent_trilinear_16s,
    reference::general_parallel_nearest_8u,
    reference::general_parallel_nearest_16s,
    reference::general_parallel_nearest_bit_8u,
    reference::general_parallel_trilinear_8u,
    reference::general_parallel_trilinear_16s,
    reference::find_max_8u,
    reference::find_max_16s,
    reference::find_max_bmask_8u,
    reference::find_max_bmask_16s,
    reference::find_max_cmask_8u,
    reference::find_max_cmask_16s,
    reference::window_level_16s_8u,
};

// One list for both names: prefix is nothing or two underscores.
#define ZOX_UNIT_EXPORTED(name, prefix)                                                           \
  {                                                                                               \
    name, always, prefix##zox_Volume_RayCast_Blocked_Divergent_Nearest_8U,                        \
        prefix##zox_Volume_RayCast_Blocked_Divergent_Nearest_16S,                                 \
        prefix##zox_Volume_RayCast_Blocked_Divergent_Trilinear_8U,                                \
        prefix##zox_Volume_RayCast_Blocked_Divergent_Trilinear_16S,                               \
        prefix##zox_Volume_RayCast_Blocked_Parallel_Nearest_8U,                                   \
        prefix##zox_Volume_RayCast_Blocked_Parallel_Nearest_16S,                                  \
        prefix##zox_Volume_RayCast_Blocked_Parallel_Trilinear_8U,                                 \
        prefix##zox_Volume_RayCast_Blocked_Parallel_Trilinear_16S,                                \
        prefix##zox_Volume_RayCast_General_Divergent_Nearest_8U,                                  \
        prefix##zox_Volume_RayCast_General_Divergent_Nearest_16S,                                 \
        prefix##zox_Volume_RayCast_General_Divergent_Nearest_Bit_8U,                              \
        prefix##zox_Volume_RayCast_General_Divergent_Trilinear_8U,                                \
        prefix##zox_Volume_RayCast_General_Divergent_Trilinear_16S,                               \
        prefix##zox_Volume_RayCast_General_Parallel_Nearest_8U,                                   \
        prefix##zox_Volume_RayCast_General_Parallel_Nearest_16S,                                  \
        prefix##zox_Volume_RayCast_General_Parallel_Nearest_Bit_8U,                               \
        prefix##zox_Volume_RayCast_General_Parallel_Trilinear_8U,                                 \
        prefix##zox_Volume_RayCast_General_Parallel_Trilinear_16S, prefix##zox_Volume_FindMax_8U, \
        prefix##zox_Volume_FindMax_16S, prefix##zox_Volume_FindMaxBMask_8U,                       \
        prefix##zox_Volume_FindMaxBMask_16S, prefix##zox_Volume_FindMaxCMask_8U,                  \
        prefix##zox_Volume_FindMaxCMask_16S, prefix##zox_Volume_WindowLevel_16S_8U,               \
  }

const Operations kExported = ZOX_UNIT_EXPORTED("exported", );
const Operations kSecondNames = ZOX_UNIT_EXPORTED("second_names", __);

#undef ZOX_UNIT_EXPORTED

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
