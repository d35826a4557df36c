// One picture.
#pragma once

#include "volume/volume.h"

namespace render {

void render_view(const Volume& volume, const zox_render_view& view, const zox_render_picture& picture,
                 Work& work, zox_render_stats& stats);

}  // namespace render
