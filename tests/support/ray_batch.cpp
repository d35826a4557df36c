#include "ray_batch.h"

#include <algorithm>
#include <sstream>

namespace zox_test {
namespace {

// No row or column beyond: keeps volumes small enough to make thousands of them.
constexpr int kMostColumns = 2049;
constexpr int kMostSlices = 900;

template <typename T>
GuardedBuffer sealed_copy(const std::vector<T>& values, size_t count, Random& random) {
  GuardedBuffer buffer(count * sizeof(T), random);
  std::copy(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(count), buffer.as<T>());
  buffer.seal();
  return buffer;
}

}  // namespace

Batch::Batch(const Caster& caster, uint64_t seed, Validity validity, Slices slices)
    : Batch(caster, Random(seed * kCasterCount + static_cast<uint64_t>(&caster - kCasters)), validity,
            slices) {
  seed_ = seed;
}

Batch::Batch(const Caster& caster, Random random, Validity validity, Slices slices)
    : caster_(caster), validity_(validity), slices_(slices) {
  pattern_ = static_cast<uint8_t>(random.whole(1, 254));
  if (caster.blocked()) {
    make_blocked(random);
  } else {
    make_general(random);
  }
  seal_rays(random);
}

void Batch::draw(const Room& room, Random& random) {
  drawn_ = draw_rays(caster_, room, random);
  for (const Vector& start : drawn_.starts) starts_.push_back(start.data());
  for (const Vector& step : drawn_.steps) steps_.push_back(step.data());
  rays_ = {nullptr, drawn_.nrays, starts_.data(), steps_.data(), drawn_.counts.data()};
}

void Batch::make_blocked(Random& random) {
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
  cut_to_blocked(volume);
  if (volume.sparse) fill_sparse(volume, random);
}

void Batch::fill_sparse(const BlockedVolume& volume, Random& random) {
  const Contents contents = draw_contents(random);
  for (const std::vector<Voxel>& path : trace(caster_, volume_, rays_)) {
    for (const Voxel& v : path) fill_cell(volume, v, caster_.element_size(), contents, random);
  }
}

void Batch::cut_to_blocked(const BlockedVolume& volume) {
  const int reach = caster_.trilinear() ? 1 : 0;
  const auto inside = [&](const Voxel& v) {
    return v.x >= 0 && v.x + reach < volume.edge && v.y >= 0 && v.y + reach < volume.edge && v.z >= 0 &&
           v.z + reach < volume.depth;
  };
  const std::vector<std::vector<Voxel>> paths = trace(caster_, volume_, rays_);
  for (size_t r = 0; r < paths.size(); ++r) {
    const auto outside = std::find_if_not(paths[r].begin(), paths[r].end(), inside);
    if (outside != paths[r].end()) drawn_.counts[r] = static_cast<int32_t>(outside - paths[r].begin());
  }
}

void Batch::make_general(Random& random) {
  const bool strict = validity_ == Validity::kStrict;
  regions_ = draw_regions(caster_, strict, random);
  volume_.size = static_cast<int32_t>(random.bits());  // not read
  volume_.nregions = regions_.count();
  volume_.regslice = regions_.slices.data();
  volume_.regbounds = regions_.bounds.data();
  volume_.regscale = regions_.scales.data();
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
  const bool one_region = takes_one_region_path(caster_, volume_, rays_);
  if (one_region) beyond = false;  // this path makes no lists: a sample reads what it falls on
  cut_to_general(beyond);
  const std::vector<Voxel> samples = fit_slices(beyond, random);
  const int entries = volume_.nslices + (caster_.trilinear() ? 1 : 0);
  if (one_region) regions_.slices[0] = 0;
  if (one_region && !strict) {
    // This path reads neither the number of slices nor the region's first slice.
    volume_.nslices = random.pick({volume_.nslices, volume_.nslices, 0, -5, 2000000000});
    regions_.slices[0] = random.pick({0, 0, 7, -3});
  }
  stack_ = SliceStack(caster_, samples, entries, one_region, slices_ == Slices::kApart, strict, random);
  seal_volume(random);
}

void Batch::cut_to_general(bool beyond) {
  const bool strict = validity_ == Validity::kStrict;
  const bool one_region = takes_one_region_path(caster_, volume_, rays_);
  const std::vector<std::vector<Voxel>> paths = trace(caster_, volume_, rays_);
  for (size_t r = 0; r < paths.size(); ++r) {
    int32_t& count = drawn_.counts[r];
    const std::vector<Voxel>& path = paths[r];
    const double start = starts_[r][2];
    const double step = steps_[caster_.parallel() ? 0 : r][2];
    for (int k = 0; k < static_cast<int>(path.size()); ++k) {
      const Voxel& v = path[static_cast<size_t>(k)];
      const double z = start + (k == 0 ? 0.0 : k * step);
      // With one region the samples go on at its spacing past its ends.
      const bool in_regions =
          (volume_.nregions == 1 && !strict) || (z >= regions_.bounds.front() && z <= regions_.bounds.back());
      const bool in_slice = v.x >= 0 && v.x < kMostColumns && v.y >= 0 && v.y < kMostColumns;
      const bool in_stack = !one_region || v.z >= 0;
      const bool deep = !one_region && !beyond && (v.z < -kMostSlices || v.z > kMostSlices);
      if (!in_slice || !in_stack || deep || (!in_regions && !beyond)) {
        count = k;
        break;
      }
    }
  }
}

// Numbers the slices so that the samples fall into them, cuts rays that need too many, sets
// nslices, and returns the samples.
std::vector<Voxel> Batch::fit_slices(bool beyond, Random& random) {
  const bool one_region = takes_one_region_path(caster_, volume_, rays_);
  std::vector<std::vector<Voxel>> paths = trace(caster_, volume_, rays_);
  int32_t lowest = 0;
  for (const std::vector<Voxel>& path : paths) {
    for (const Voxel& v : path) lowest = std::min(lowest, v.z);
  }
  const int32_t shift = one_region || beyond ? 0 : -lowest + (random.chance(0.03) ? random.whole(0, 480) : 0);
  for (int32_t& slice : regions_.slices) slice += shift;
  const int most = caster_.fixed_tables() && !one_region ? 512 : kMostSlices;
  int slices = 0;
  for (size_t r = 0; r < paths.size(); ++r) {
    for (Voxel& v : paths[r]) v.z += shift;
    const auto deep =
        std::find_if(paths[r].begin(), paths[r].end(), [&](const Voxel& v) { return v.z >= most; });
    if (deep != paths[r].end() && !beyond) {
      drawn_.counts[r] = static_cast<int32_t>(deep - paths[r].begin());
      paths[r].erase(deep, paths[r].end());
    }
    for (const Voxel& v : paths[r]) slices = std::max(slices, std::min(v.z, most - 1) + 1);
  }
  const int spare = random.pick({0, 0, 0, 1, random.chance(0.05) ? random.whole(0, 600) : 3});
  slices = std::min(most, slices + spare);
  if (beyond && !one_region) slices = random.whole(random.chance(0.1) ? -3 : 0, slices);
  volume_.nslices = slices;
  std::vector<Voxel> samples;
  for (const std::vector<Voxel>& path : paths) samples.insert(samples.end(), path.begin(), path.end());
  return samples;
}

void Batch::seal_volume(Random& random) {
  const size_t count = regions_.scales.size();
  volume_.slices = stack_.slices();
  volume_.rowoffs = stack_.rowoffs();
  sealed_.push_back(sealed_copy(regions_.slices, count, random));
  volume_.regslice = sealed_.back().as<int32_t>();
  sealed_.push_back(sealed_copy(regions_.bounds, count + 1, random));
  volume_.regbounds = sealed_.back().as<double>();
  sealed_.push_back(sealed_copy(regions_.scales, count, random));
  volume_.regscale = sealed_.back().as<double>();
}

// The rays as the caster sees them: tables with no entry too many.
void Batch::seal_rays(Random& random) {
  int longest = 0;
  for (int r = 0; r < drawn_.nrays; ++r) longest = std::max(longest, drawn_.counts[static_cast<size_t>(r)]);
  planes_ = Planes(longest, std::max(0, drawn_.nrays), caster_.element_size(), random);
  const auto seal_vectors = [&](const std::vector<Vector>& vectors) {
    const bool apart = random.chance(0.1);
    std::vector<const double*> pointers;
    if (!apart) sealed_.push_back(sealed_copy(vectors, vectors.size(), random));
    for (size_t r = 0; r < vectors.size(); ++r) {
      if (apart) sealed_.push_back(sealed_copy(std::vector<Vector>{vectors[r]}, 1, random));
      pointers.push_back(apart ? sealed_.back().as<double>() : sealed_.back().as<double>() + 3 * r);
    }
    sealed_.push_back(sealed_copy(pointers, pointers.size(), random));
    return sealed_.back().as<const double*>();
  };
  rays_.planes = planes_.pointers();
  rays_.starts = seal_vectors(drawn_.starts);
  rays_.steps = seal_vectors(drawn_.steps);
  sealed_.push_back(sealed_copy(drawn_.counts, drawn_.counts.size(), random));
  rays_.nsamples = sealed_.back().as<int32_t>();
}

Batch::Outcome Batch::run(zox::RayCast cast) {
  planes_.fill(pattern_);
  const int status = cast(&volume_, &rays_);
  return {status, planes_.contents()};
}

std::string Batch::describe() const {
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
