// Colours for the greys of a picture.
#pragma once

#include <map>
#include <string>

#include "picture_file.h"

namespace zox_mip {

enum class Colormap { kGray, kInverse, kHot, kDiverging };

extern const std::map<std::string, Colormap> kColormaps;

// The colours of a map, from black to white of the window.
zox::output::Palette palette_of(Colormap colormap);

}  // namespace zox_mip
