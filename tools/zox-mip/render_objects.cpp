#include "render_objects.h"

#include <new>

#include "exit_failure.h"

namespace zox_mip {

void check(int status, const std::string& name) {
  if (status == ZOX_RENDER_OK) return;
  std::string reason = zox_render_last_error();
  if (reason.empty()) reason = zox_render_status_text(status);
  if (reason.back() != '.') reason += '.';
  fail(name + ": " + reason);
}

Pool make_pool(int threads) {
  zox_render_pool* pool = nullptr;
  check(zox_render_pool_create(threads, &pool), "threads");
  return {pool, &zox_render_pool_destroy};
}

Volume make_volume(const zox_render_array& array, const zox_render_volume_options& options,
                   const zox_render_run& run, const std::string& name) {
  zox_render_volume* volume = nullptr;
  check(zox_render_volume_create(&array, &options, &run, &volume), name);
  return {volume, &zox_render_volume_destroy};
}

zox_render_volume_info info_of(const zox_render_volume* volume) {
  zox_render_volume_info info;
  zox_render_volume_info_init(&info);
  check(zox_render_volume_get_info(volume, &info), "volume");
  return info;
}

}  // namespace zox_mip
