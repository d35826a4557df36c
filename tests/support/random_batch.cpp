#include "random_batch.h"

#include <algorithm>
#include <sstream>

#include "arithmetic.h"
#include "reference.h"

namespace zox_test {
namespace {

// No row or column beyond: keeps volumes small enough to make thousands of them.
constexpr int kMostColumns = 2049;
constexpr int kMostSlices = 900;

}  // namespace

RandomBatch::RandomBatch(const Caster& caster, uint64_t seed, Validity validity, Slices slices)
    : RandomBatch(caster, Random(seed * kCasterCount + static_cast<uint64_t>(&caster - kCasters)), validity,
                  slices) {
  seed_ = seed;
}

RandomBatch::RandomBatch(const Caster& caster, Random random, Validity validity, Slices slices)
    : caster_(caster), validity_(validity), slices_(slices) {
  pattern_ = static_cast<uint8_t>(random.whole(1, 254));
  if (caster.blocked()) {
    make_blocked(random);
  } else {
    make_general(random);
  }
  seal_rays(random);
}

void RandomBatch::draw(const Room& room, Random& random) {
  drawn_ = draw_rays(caster_, room, random);
  rays_ = drawn_.record(nullptr);
}

// Which voxel each sample of a ray reads, as the reference finds them: the volume is made around these.
RandomBatch::Paths RandomBatch::trace() const {
  std::vector<reference::Place> places;
  reference::noted_places = &places;
  caster_.reference(&volume_, &rays_);
  reference::noted_places = nullptr;
  Paths paths(static_cast<size_t>(std::max(0, rays_.nrays)));
  for (const reference::Place& at : places) paths[static_cast<size_t>(at.ray)].push_back({at.x, at.y, at.z});
  return paths;
}

bool RandomBatch::takes_one_region_path() const {
  return !caster_.blocked() && caster_.parallel() && !caster_.trilinear() &&
         reference::takes_one_region_path(volume_, rays_);
}

// Ends each ray before its first sample that is not good.
void RandomBatch::cut(Paths& paths,
                      const std::function<bool(size_t ray, size_t sample, const Voxel&)>& good) {
  for (size_t r = 0; r < paths.size(); ++r) {
    size_t k = 0;
    while (k < paths[r].size() && good(r, k, paths[r][k])) ++k;
    if (k == paths[r].size()) continue;
    drawn_.counts[r] = static_cast<int32_t>(k);
    paths[r].resize(k);
  }
}

void RandomBatch::make_blocked(Random& random) {
  const BlockedVolume volume = draw_blocked_volume(caster_, random);
  volume_.data = volume.buffer->data();
  volume_.size = volume.size;
  const double low = caster_.trilinear() ? 0.0 : -0.5;
  const double high = (caster_.trilinear() ? 1.0 : 0.5) + 0x1p-20;
  // Often a small corner of the volume, so that rays meet its sides and the seams of its bricks.
  Room room{{low, low, low},
            {volume.edge - high, volume.edge - high, volume.depth - high},
            {},
            0x1p-20,
            validity_ == Validity::kStrict};
  for (size_t a = 0; a < 3; ++a) {
    if (random.chance(0.4)) room.low[a] = std::max(low, room.high[a] - random.real(0, 20));
  }
  draw(room, random);
  const int edge = volume.edge - (caster_.trilinear() ? 1 : 0);
  const int depth = volume.depth - (caster_.trilinear() ? 1 : 0);
  Paths paths = trace();
  cut(paths, [&](size_t, size_t, const Voxel& v) {
    return v.x >= 0 && v.x < edge && v.y >= 0 && v.y < edge && v.z >= 0 && v.z < depth;
  });
  if (!volume.sparse) return;
  const Contents contents = draw_contents(random);
  for (const std::vector<Voxel>& path : paths) {
    for (const Voxel& v : path) fill_cell(volume, v, caster_.element_size(), contents, random);
  }
}

void RandomBatch::make_general(Random& random) {
  const bool strict = validity_ == Validity::kStrict;
  regions_ = draw_regions(caster_, strict, random);
  volume_.size = static_cast<int32_t>(random.bits());  // not read
  regions_.put_into(volume_);
  bool beyond = validity_ == Validity::kBeyond && random.chance(0.2);
  const double low = caster_.trilinear() ? 0.0 : -0.5;
  // Ray 0 may stand beyond the fixed point's range where it has no samples; others follow it there.
  const double far = random.chance(0.02) && !strict ? 1000.0 : low;
  const double wide = random.pick({0.0, 8.0, 30.0, 30.0, random.real(0, 20), random.real(0, 100)});
  const double outside = beyond ? 10.0 : 0.0;
  draw({{far, low, regions_.bounds.front() - outside},
        {far + wide, low + random.pick({wide, 10.0}), regions_.bounds.back() + outside},
        regions_.bounds,
        caster_.trilinear() ? 0x1p-20 : 0x1p-21,
        strict},
       random);
  const bool one_region = takes_one_region_path();
  if (one_region) beyond = false;  // this path makes no lists: a sample reads what it falls on
  Paths paths = trace();
  cut(paths, [&](size_t r, size_t k, const Voxel& v) { return in_stack(r, k, v, one_region, beyond); });
  const std::vector<Voxel> samples = fit_slices(paths, one_region, beyond, random);
  const int entries = volume_.nslices + (caster_.trilinear() ? 1 : 0);
  if (one_region) regions_.slices[0] = 0;
  if (one_region && !strict) {
    // This path reads neither the number of slices nor the region's first slice.
    volume_.nslices = random.pick({volume_.nslices, volume_.nslices, 0, -5, 2000000000});
    regions_.slices[0] = random.pick({0, 0, 7, -3});
  }
  stack_ = SliceStack(caster_, samples, entries, one_region, slices_ == Slices::kApart, strict, random);
  volume_.slices = stack_.slices();
  volume_.rowoffs = stack_.rowoffs();
  volume_.regslice = sealed(regions_.slices, random);
  volume_.regbounds = sealed(regions_.bounds, random);
  volume_.regscale = sealed(regions_.scales, random);
}

bool RandomBatch::in_stack(size_t ray, size_t sample, const Voxel& v, bool one_region, bool beyond) const {
  const double step = drawn_.steps[caster_.parallel() ? 0 : ray][2];
  const double z = drawn_.starts[ray][2] + (sample == 0 ? 0.0 : static_cast<double>(sample) * step);
  // With one region the samples go on at its spacing past its ends.
  const bool in_regions = (volume_.nregions == 1 && validity_ != Validity::kStrict) ||
                          (z >= regions_.bounds.front() && z <= regions_.bounds.back());
  const bool in_slice = v.x >= 0 && v.x < kMostColumns && v.y >= 0 && v.y < kMostColumns;
  if (one_region) return in_slice && in_regions && v.z >= 0;
  return in_slice && (beyond || (in_regions && v.z >= -kMostSlices && v.z <= kMostSlices));
}

// Numbers the slices so that the samples fall into them, cuts rays that need too many, sets
// nslices, and returns the samples.
std::vector<Voxel> RandomBatch::fit_slices(Paths& paths, bool one_region, bool beyond, Random& random) {
  int32_t lowest = 0;
  for (const std::vector<Voxel>& path : paths) {
    for (const Voxel& v : path) lowest = std::min(lowest, v.z);
  }
  const int32_t shift = one_region || beyond ? 0 : -lowest + (random.chance(0.03) ? random.whole(0, 480) : 0);
  for (int32_t& slice : regions_.slices) slice += shift;
  for (std::vector<Voxel>& path : paths) {
    for (Voxel& v : path) v.z += shift;
  }
  const int most = caster_.fixed_tables() && !one_region ? 512 : kMostSlices;
  if (!beyond) cut(paths, [&](size_t, size_t, const Voxel& v) { return v.z < most; });
  int slices = 0;
  std::vector<Voxel> samples;
  for (const std::vector<Voxel>& path : paths) {
    samples.insert(samples.end(), path.begin(), path.end());
    for (const Voxel& v : path) slices = std::max(slices, std::min(v.z, most - 1) + 1);
  }
  const int spare = random.pick({0, 0, 0, 1, random.chance(0.05) ? random.whole(0, 600) : 3});
  slices = std::min(most, slices + spare);
  if (beyond && !one_region) slices = random.whole(random.chance(0.1) ? -3 : 0, slices);
  volume_.nslices = slices;
  return samples;
}

// The same values in a buffer that ends with them and that nobody may write to.
template <typename T>
const T* RandomBatch::sealed(const std::vector<T>& values, Random& random) {
  GuardedBuffer& buffer = sealed_.emplace_back(values.size() * sizeof(T), random);
  std::copy(values.begin(), values.end(), buffer.as<T>());
  buffer.seal();
  return buffer.as<T>();
}

const double* const* RandomBatch::sealed_rows(const std::vector<Point>& rows, Random& random) {
  const bool apart = random.chance(0.1);
  const Point* all = apart ? nullptr : sealed(rows, random);
  std::vector<const double*> pointers;
  for (size_t r = 0; r < rows.size(); ++r)
    pointers.push_back(apart ? sealed(std::vector<Point>{rows[r]}, random)->data() : all[r].data());
  return sealed(pointers, random);
}

// The rays as the caster sees them: tables with no entry too many.
void RandomBatch::seal_rays(Random& random) {
  int longest = 0;
  for (int r = 0; r < drawn_.nrays; ++r) longest = std::max(longest, drawn_.counts[static_cast<size_t>(r)]);
  planes_ = Planes(longest, std::max(0, drawn_.nrays), caster_.element_size(), random);
  rays_.planes = planes_.pointers();
  rays_.starts = sealed_rows(drawn_.starts, random);
  rays_.steps = sealed_rows(drawn_.steps, random);
  rays_.nsamples = sealed(drawn_.counts, random);
}

RandomBatch::Outcome RandomBatch::run(zox::RayCast cast) {
  planes_.fill(pattern_);
  const int status = cast(&volume_, &rays_);
  return {status, planes_.contents()};
}

std::string RandomBatch::describe() const {
  std::ostringstream text;
  text.precision(17);
  text << caster_.name << " seed " << seed_ << ": rays " << rays_.nrays << ", planes " << planes_.count();
  if (caster_.blocked()) {
    text << ", size " << volume_.size;
  } else {
    text << ", slices " << volume_.nslices << ", regions " << volume_.nregions << ":";
    for (int j = 0; j < std::min(6, volume_.nregions); ++j) {
      text << " [" << volume_.regbounds[j] << ", " << volume_.regbounds[j + 1] << ") x "
           << volume_.regscale[j] << " from slice " << volume_.regslice[j];
    }
  }
  for (int r = 0; r < std::min(4, std::max(1, rays_.nrays)); ++r) {
    const double* start = rays_.starts[r];
    const double* step = rays_.steps[caster_.parallel() ? 0 : r];
    text << "\n  ray " << r << ": " << rays_.nsamples[r] << " samples from (" << start[0] << ", " << start[1]
         << ", " << start[2] << ") by (" << step[0] << ", " << step[1] << ", " << step[2] << ")";
  }
  return text.str();
}

}  // namespace zox_test
