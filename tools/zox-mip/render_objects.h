// The rendering library's objects, with owners; what it refuses becomes a Failure.
#pragma once

#include <zox_render.h>

#include <memory>
#include <string>

namespace zox_mip {

using Pool = std::unique_ptr<zox_render_pool, decltype(&zox_render_pool_destroy)>;
using Volume = std::unique_ptr<zox_render_volume, decltype(&zox_render_volume_destroy)>;

// Throws Failure with the library's sentence about `name`, and std::bad_alloc when there is no memory
// and no sentence.
void check(int status, const std::string& name);

Pool make_pool(int threads);
Volume make_volume(const zox_render_array& array, const zox_render_volume_options& options,
                   const zox_render_run& run, const std::string& name);
zox_render_volume_info info_of(const zox_render_volume* volume);

}  // namespace zox_mip
