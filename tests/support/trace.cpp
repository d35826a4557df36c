// The walks once more, apart from those of the reference, which cannot serve: it reads as it walks, while the
// volume is made, and rays are cut where they would leave it, by what is found here. A mistake here hides
// none there: the batch still runs by the library and by the reference, and the two are compared.
#include "trace.h"

#include <cmath>

namespace zox_test {
namespace {

// As the processor's truncating conversion: what does not fit becomes the smallest integer.
int32_t to_int(double value) {
  return value > -2147483649.0 && value < 2147483648.0 ? static_cast<int32_t>(value) : INT32_MIN;
}

int32_t wrap_add(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}

int32_t wrap_sub(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b));
}

const double* step_of(const Caster& caster, const zox_Rays& rays, int ray) {
  return rays.steps[caster.parallel() ? 0 : ray];
}

std::vector<Voxel> trace_blocked_fixed(const Caster& caster, const zox_Rays& rays, int ray, bool second_way) {
  const double* start = rays.starts[ray];
  const double* step = step_of(caster, rays, ray);
  const double half = caster.trilinear() ? 0.0 : 0.5;
  int32_t position[3], advance[3];
  for (int a = 0; a < 3; ++a) {
    position[a] = to_int((start[a] + half) * 0x1p20);
    advance[a] = to_int(step[a] * 0x1p20);
    if (!second_way) continue;
    const int32_t base = to_int(rays.starts[0][a] * 0x1p20);
    position[a] = wrap_add(base, to_int(start[a] * 0x1p20 - base));
  }
  std::vector<Voxel> path;
  for (int k = 0; k < rays.nsamples[ray]; ++k) {
    path.push_back({position[0] >> 20, position[1] >> 20, position[2] >> 20});
    for (int a = 0; a < 3; ++a) position[a] = wrap_add(position[a], advance[a]);
  }
  return path;
}

std::vector<Voxel> trace_blocked_real(const Caster& caster, const zox_Rays& rays, int ray, bool second_way) {
  const double* step = step_of(caster, rays, ray);
  const double half = caster.trilinear() ? 0.0 : 0.5;
  double running[3], offset[3];
  for (int a = 0; a < 3; ++a) {
    const double first = rays.starts[0][a];
    running[a] = (second_way ? first : rays.starts[ray][a]) + half;
    offset[a] = second_way ? rays.starts[ray][a] - first : 0.0;
  }
  std::vector<Voxel> path;
  for (int k = 0; k < rays.nsamples[ray]; ++k) {
    int32_t voxel[3];
    for (int a = 0; a < 3; ++a) {
      const double position = offset[a] + running[a];
      // Below zero the conversion would round up to a voxel that the layout does not promise.
      voxel[a] = position < 0 ? -1 : to_int(position);
      running[a] += step[a];
    }
    path.push_back({voxel[0], voxel[1], voxel[2]});
  }
  return path;
}

// The two fixed points of the slice-stack casters, and what each rounds.
struct Scale {
  const Caster& caster;
  bool one_region;

  double factor() const { return caster.trilinear() ? 0x1p20 : 0x1p21; }
  int bits() const { return caster.trilinear() ? 20 : 21; }
  int32_t start_xy(double v) const {
    return caster.trilinear() ? to_int(v * factor() + 0.5) : to_int((v + 0.5) * factor());
  }
  int32_t step_xy(double v) const {
    const bool rounds = caster.trilinear() || (!caster.parallel() && !caster.bit() && one_region);
    return to_int(rounds ? v * factor() + 0.5 : v * factor());
  }
  int32_t z(double v) const { return to_int(caster.trilinear() ? v * factor() + 0.5 : v * factor()); }
  int32_t boundary(double v) const {
    const bool rounds = caster.trilinear() && (caster.parallel() || caster.element_size() == 1);
    return to_int(rounds ? v * factor() + 0.5 : v * factor());
  }
};

std::vector<Voxel> trace_regions(const Caster& caster, const zox_Volume& volume, const zox_Rays& rays,
                                 int ray) {
  const int last = volume.nregions - 1;
  const Scale scale{caster, last == 0};
  const double* step = step_of(caster, rays, ray);
  const int32_t advance_x = scale.step_xy(step[0]);
  const int32_t advance_y = scale.step_xy(step[1]);
  const int32_t advance_z = scale.z(step[2]);
  int32_t x = scale.start_xy(rays.starts[ray][0]);
  int32_t y = scale.start_xy(rays.starts[ray][1]);
  int32_t z = scale.z(rays.starts[ray][2]);
  const bool rising = advance_z >= 1;
  int region = rising ? 0 : last;
  int32_t position = 0, advance = 0;
  const auto rebase = [&] {
    const int32_t from = scale.boundary(volume.regbounds[region]);
    position = to_int(static_cast<double>(wrap_sub(z, from)) * volume.regscale[region]);
    advance = to_int(static_cast<double>(advance_z) * volume.regscale[region]);
  };
  rebase();
  std::vector<Voxel> path;
  for (int k = 0; k < rays.nsamples[ray]; ++k) {
    const int before = region;
    while (rising && region < last && scale.boundary(volume.regbounds[region + 1]) < z) ++region;
    while (!rising && region > 0 && z < scale.boundary(volume.regbounds[region])) --region;
    if (region != before) rebase();
    const int32_t half = caster.trilinear() ? 0 : 1 << 20;
    path.push_back({x >> scale.bits(), y >> scale.bits(),
                    wrap_add(volume.regslice[region], wrap_add(position, half) >> scale.bits())});
    x = wrap_add(x, advance_x);
    y = wrap_add(y, advance_y);
    z = wrap_add(z, advance_z);
    position = wrap_add(position, advance);
  }
  return path;
}

std::vector<Voxel> trace_one_region(const zox_Volume& volume, const zox_Rays& rays, int ray) {
  const double* first = rays.starts[0];
  const double* start = rays.starts[ray];
  const double scale = volume.regscale[0];
  double running[3] = {first[0], first[1], scale * (first[2] - volume.regbounds[0])};
  const double step[3] = {rays.steps[0][0], rays.steps[0][1], rays.steps[0][2] * scale};
  const double apart[3] = {start[0] - first[0], start[1] - first[1], (start[2] - first[2]) * scale};
  std::vector<Voxel> path;
  for (int k = 0; k < rays.nsamples[ray]; ++k) {
    int32_t voxel[3];
    for (int a = 0; a < 3; ++a) {
      const int32_t offset = wrap_add(to_int(apart[a] * 0x1p21), 1 << 20);
      voxel[a] = wrap_add(offset, to_int(running[a] * 0x1p21)) >> 21;
      running[a] += step[a];
    }
    path.push_back({voxel[0], voxel[1], voxel[2]});
  }
  return path;
}

}  // namespace

bool takes_one_region_path(const Caster& caster, const zox_Volume& volume, const zox_Rays& rays) {
  if (caster.blocked() || !caster.parallel() || caster.trilinear() || volume.nregions != 1) return false;
  double spread = 0.0;
  for (int r = 0; r < rays.nrays; ++r) {
    const double distance = std::fabs(rays.starts[r][2] - rays.starts[0][2]);
    if (distance > spread) spread = distance;
  }
  return (volume.regbounds[1] - volume.regbounds[0]) * 0.2 > spread;
}

std::vector<Voxel> trace(const Caster& caster, const zox_Volume& volume, const zox_Rays& rays, int ray,
                         bool second_way) {
  if (caster.blocked()) {
    const bool fixed =
        caster.parallel() ? caster.trilinear() && caster.element_size() == 1 : !caster.trilinear();
    return fixed ? trace_blocked_fixed(caster, rays, ray, second_way)
                 : trace_blocked_real(caster, rays, ray, second_way);
  }
  if (takes_one_region_path(caster, volume, rays)) return trace_one_region(volume, rays, ray);
  return trace_regions(caster, volume, rays, ray);
}

}  // namespace zox_test
