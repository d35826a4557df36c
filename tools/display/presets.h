// Windows by name, in Hounsfield units, as radiology uses them.
#pragma once

#include <optional>
#include <span>
#include <string>

namespace zox::display {

struct Preset {
  const char* name;
  double center, width;
  const char* shows;
};

std::span<const Preset> presets();

// By name, capitals or not.
std::optional<Preset> preset(const std::string& name);

}  // namespace zox::display
