// The sampling operation that pictures of stacks are made with, by itself: batches as full and as long as the
// renderer's without skipping, their largest samples, and nothing else. No picture can be had for less.
#include <zox_volume.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "contender.h"

namespace bench {
namespace {

constexpr int kTile = 8, kRays = kTile * kTile, kLongest = 128, kPlanePitch = 96;

struct Ray {
  Vec start, step;  // in voxels, of sample 0
  int first = 0, last = -1;
};

Vec in_voxels(const Vec& v, const Vec& spacing) {
  return {v[0] / spacing[0], v[1] / spacing[1], v[2] / spacing[2]};
}

Vec sum(const Vec& a, double s, const Vec& b) { return {a[0] + s * b[0], a[1] + s * b[1], a[2] + s * b[2]}; }

class Kernel : public Contender {
 public:
  explicit Kernel(const Voxels& voxels) : size_(voxels.size) {
    const size_t columns = static_cast<size_t>(size_[0]), rows = static_cast<size_t>(size_[1]);
    const size_t pitch = (((columns + 1) * 2 + 63) / 64 | 1) * 32;  // as the renderer lays rows
    stack_.resize(pitch * rows * static_cast<size_t>(size_[2]));
    const bool bytes = voxels.type == ZOX_RENDER_UINT8;
    for (size_t row = 0; row < rows * static_cast<size_t>(size_[2]); ++row)
      for (size_t x = 0; x < columns; ++x) {
        int16_t value = static_cast<int16_t>(voxels.bytes[row * columns + x]);
        if (!bytes) std::memcpy(&value, &voxels.bytes[2 * (row * columns + x)], 2);
        stack_[row * pitch + x] = value;
      }
    for (size_t y = 0; y <= rows; ++y)
      row_offsets_.push_back(static_cast<int32_t>(std::min(y, rows - 1) * pitch * 2));
    for (size_t z = 0; z <= static_cast<size_t>(size_[2]); ++z)
      slices_.push_back(&stack_[std::min(z, static_cast<size_t>(size_[2]) - 1) * rows * pitch]);
    for (int k = 0; k < kLongest; ++k) planes_.push_back(&samples_[static_cast<size_t>(k) * kPlanePitch]);
  }

  void draw(const Job& job) override {
    image_.edge = job.edge;
    image_.pixels.assign(static_cast<size_t>(job.edge) * static_cast<size_t>(job.edge), 0);
    for (int top = 0; top < job.edge; top += kTile)
      for (int left = 0; left < job.edge; left += kTile) draw_tile(job, left, top);
  }
  Image image() const override { return image_; }

 private:
  Ray ray_of(const Job& job, int column, int row) const {
    const double aside = (column + 0.5 - job.edge / 2.0) * job.pixel_size;
    const double above = (job.edge / 2.0 - row - 0.5) * job.pixel_size;
    Vec middle = sum(sum(job.center, aside, job.right), above, job.up), direction = job.forward;
    if (job.perspective) {
      const Vec eye = sum(job.center, -job.eye_distance, job.forward);
      const Vec far = sum(middle, -1, eye);
      const double length = std::hypot(far[0], far[1], far[2]);
      direction = {far[0] / length, far[1] / length, far[2] / length};
      middle = sum(eye, job.eye_distance, direction);
    }
    const Vec& spacing = job.voxels->spacing;
    return {in_voxels(middle, spacing), in_voxels(sum({}, job.step, direction), spacing), 0, -1};
  }

  void clip(Ray& ray) const {
    constexpr double kInside = 1e-3;
    double first = -1e9, last = 1e9;
    for (size_t a = 0; a < 3; ++a) {
      const double near = (kInside - ray.start[a]) / ray.step[a];
      const double far = (size_[a] - 1 - kInside - ray.start[a]) / ray.step[a];
      first = std::max(first, std::min(near, far));
      last = std::min(last, std::max(near, far));
    }
    if (first > last) return;
    ray.first = static_cast<int>(std::ceil(first));
    ray.last = static_cast<int>(std::floor(last));
  }

  void draw_tile(const Job& job, int left, int top) {
    Ray rays[kRays];
    int16_t best[kRays];
    std::fill_n(best, kRays, INT16_MIN);
    int first = INT32_MAX, last = INT32_MIN;
    for (int i = 0; i < kRays; ++i) {
      rays[i] = ray_of(job, left + i % kTile, top + i / kTile);
      clip(rays[i]);
      if (rays[i].first > rays[i].last) continue;
      first = std::min(first, rays[i].first);
      last = std::max(last, rays[i].last);
    }
    for (int n = first; n <= last; n += kLongest) cast(rays, n, std::min(n + kLongest - 1, last), best);
    for (int i = 0; i < kRays; ++i) {
      const double between = (best[i] - job.black) / (job.white - job.black) * 255;
      image_.pixels[static_cast<size_t>((top + i / kTile) * job.edge + left + i % kTile)] =
          static_cast<unsigned char>(std::clamp(between, 0.0, 255.0));
    }
  }

  // Samples first .. last of all rays of a tile that have any.
  void cast(const Ray* rays, int first, int last, int16_t* best) {
    Vec starts[kRays], steps[kRays];
    const double *start_at[kRays], *step_at[kRays];
    int32_t counts[kRays];
    int of[kRays], count = 0;
    double low = 1e9, high = 0;
    for (int i = 0; i < kRays; ++i) {
      const int from = std::max(first, rays[i].first), to = std::min(last, rays[i].last);
      if (from > to) continue;
      starts[count] = sum(rays[i].start, from, rays[i].step);
      steps[count] = rays[i].step;
      const double end = starts[count][2] + (to - from) * steps[count][2];
      low = std::min({low, starts[count][2], end});
      high = std::max({high, starts[count][2], end});
      start_at[count] = starts[count].data();
      step_at[count] = steps[count].data();
      counts[count] = to - from + 1;
      of[count++] = i;
    }
    if (count == 0) return;
    const int base = static_cast<int>(low);
    for (int r = 0; r < count; ++r) starts[r][2] -= base;
    zox_Volume volume{};
    const int32_t first_slice = 0;
    const double scale = 1;
    volume.slices = slices_.data() + base;
    volume.rowoffs = row_offsets_.data();
    volume.nslices = static_cast<int>(high) - base + 1;
    const double bounds[2] = {0, static_cast<double>(volume.nslices)};
    volume.nregions = 1;
    volume.regslice = &first_slice;
    volume.regbounds = bounds;
    volume.regscale = &scale;
    zox_Rays batch{};
    batch.planes = planes_.data();
    batch.nrays = count;
    batch.starts = start_at;
    batch.steps = step_at;
    batch.nsamples = counts;
    int16_t largest[kRays];
    if (zox_Volume_RayCast_General_Divergent_Trilinear_16S(&volume, &batch) != ZOX_STS_NO_ERROR) std::exit(1);
    zox_Volume_FindMax_16S(&batch, largest);
    for (int r = 0; r < count; ++r) best[of[r]] = std::max(best[of[r]], largest[r]);
  }

  std::array<int, 3> size_;
  std::vector<int16_t> stack_, samples_ = std::vector<int16_t>(kLongest * kPlanePitch);
  std::vector<int32_t> row_offsets_;
  std::vector<const void*> slices_;
  std::vector<void*> planes_;
  Image image_;
};

}  // namespace

std::unique_ptr<Contender> make_kernel(const Voxels& voxels) { return std::make_unique<Kernel>(voxels); }

}  // namespace bench
