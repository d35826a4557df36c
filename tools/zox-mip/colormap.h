// Colours for the greys of a picture.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "picture_file.h"

namespace zox_mip {

enum class Colormap { kGray, kInverse, kHot, kDiverging };

// The grey that the diverging map shows black: the middle of the window.
inline constexpr uint8_t kBlackOfDiverging = 128;

extern const std::map<std::string, Colormap> kColormaps;

// The colours of a map, from black to white of the window.
zox::output::Palette palette_of(Colormap colormap);

}  // namespace zox_mip
