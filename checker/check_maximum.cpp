#include "checks.h"
#include "overlap.h"
#include "records.h"

namespace zox_check {
namespace {

// A negative odd count processes ray 0.
int processed_rays(int nrays) {
  if (nrays > 0) return nrays;
  return nrays % 2 != 0 ? 1 : 0;
}

// The maxima are written while planes, counts and mask are still being read.
void check_output(Report& report, const Maximum& maximum, const zox_Rays& rays, const void* mask,
                  const void* maxima, int nrays, int planes) {
  const std::size_t width = std::size_t{1} * nrays * maximum.element_size;
  Ranges read;
  read.add_batch(rays, nrays, planes);
  for (int k = 0; k < planes; ++k) read.add(rays.planes[k], width, "planes", k);
  if (mask && planes > 0) {
    const int per_byte = maximum.samples_per_mask_byte;
    read.add(mask, (planes + per_byte - 1) / per_byte, "the mask");
  }
  const char* begin = static_cast<const char*>(maxima);
  for (const Range& range : read.all()) {
    if (begin >= range.end || range.begin >= begin + width) continue;
    if (range.number < 0) {
      report.say({}, "the array of maxima overlaps %s", range.name);
    } else {
      report.say({-1, range.number}, "the array of maxima overlaps planes[%d]", range.number);
    }
  }
}

}  // namespace

void check_maximum(const Maximum& maximum, const zox_Rays* rays, const void* mask, const void* maxima) {
  Report report(maximum.name);
  if (!present(report, rays, "the ray batch record")) return;
  const int nrays = processed_rays(rays->nrays);
  if (nrays == 0) return;
  if (!(present(report, rays->nsamples, "nsamples") & present(report, maxima, "the array of maxima"))) return;
  if (!aligned(maxima, maximum.element_size)) {
    report.say({}, "the array of maxima is not aligned to its 16-bit elements");
  }
  const int planes = largest_count(*rays, nrays);
  if (planes > 0 && maximum.samples_per_mask_byte > 0 && !present(report, mask, "the mask")) return;
  if (!check_planes(report, *rays, planes, maximum.element_size)) return;
  check_output(report, maximum, *rays, mask, maxima, nrays, planes);
}

}  // namespace zox_check
