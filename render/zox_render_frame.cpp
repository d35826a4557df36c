// Statuses, errors, the version, pools and how work is spread.
#include "cast/work.h"
#include "failure.h"

using render::guarded;
using render::require;

extern "C" {

const char* zox_render_status_text(int status) {
  switch (status) {
    case ZOX_RENDER_OK:
      return "done";
    case ZOX_RENDER_BAD_ARGUMENT:
      return "bad argument";
    case ZOX_RENDER_NO_MEMORY:
      return "no memory";
    case ZOX_RENDER_CANCELLED:
      return "cancelled";
    case ZOX_RENDER_EMPTY:
      return "nothing seen";
    case ZOX_RENDER_FAILED:
      return "failed";
    default:
      return "unknown status";
  }
}

const char* zox_render_last_error(void) { return render::last_error(); }

const char* zox_render_version(void) { return ZOX_RENDER_VERSION; }

int zox_render_pool_create(int threads, zox_render_pool** pool) {
  return guarded([&] {
    require(pool != nullptr, "pool is null.");
    *pool = nullptr;
    require(threads >= 0 && threads <= 1024, "A pool has 1 to 1024 threads, or 0 for one a processor.");
    *pool = new zox_render_pool(threads ? threads : render::usable_processors());
  });
}

void zox_render_pool_destroy(zox_render_pool* pool) { delete pool; }

void zox_render_run_init(zox_render_run* run) {
  if (!run) return;
  *run = {};
  run->record_size = sizeof *run;
}

}  // extern "C"
