#include "presets.h"

#include <strings.h>

namespace zox::display {
namespace {

constexpr Preset kPresets[] = {
    {"abdomen", 50, 400, "soft tissue of the belly"},
    {"angiography", 300, 600, "vessels with contrast medium"},
    {"bone", 480, 2500, "bone, its marrow and its edges"},
    {"brain", 40, 80, "grey and white matter"},
    {"liver", 60, 160, "differences within the liver"},
    {"lung", -600, 1500, "lung and airways"},
    {"mediastinum", 50, 350, "heart, vessels and nodes of the chest"},
    {"skull", 1100, 2200, "the skull in a maximum-intensity picture"},
    {"soft-tissue", 50, 450, "muscle, fat and organs"},
    {"stroke", 40, 40, "early loss of contrast in the brain"},
    {"subdural", 75, 215, "blood along the skull"},
    {"temporal-bone", 600, 2800, "the fine bones of the ear"},
};

}  // namespace

std::span<const Preset> presets() { return kPresets; }

std::optional<Preset> preset(const std::string& name) {
  for (const Preset& preset : kPresets)
    if (strcasecmp(preset.name, name.c_str()) == 0) return preset;
  return std::nullopt;
}

}  // namespace zox::display
