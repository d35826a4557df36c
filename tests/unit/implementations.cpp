#include "implementations.h"

namespace zox_test {

std::vector<const Operations*> implementations() {
  std::vector<const Operations*> all = {&zox_test::kReference, &zox_test::kExported, &zox_test::kSecondNames};
  for (const Operations* set : zox::kAllOperations) {
    if (set->supported()) all.push_back(set);
  }
  return all;
}

bool in_library(const Operations& implementation) { return &implementation != &zox_test::kReference; }

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

}  // namespace zox_test
