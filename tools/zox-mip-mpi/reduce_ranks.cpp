#include "reduce_ranks.h"

#include <cmath>

namespace zox_mip_mpi {
namespace {

using zox::parts::Picture;
using zox::parts::Settings;

// A pixel on its way: what the library's merge needs of it.
struct Pixel {
  int32_t depth;
  int16_t sample;
  int16_t unused;
};

// The merge of the reduction under way: MPI gives an operation no place for arguments.
struct Merge {
  int32_t reduction = 0;
  double slope = 1, intercept = 0;
} merge;

void merge_pixels(void* other, void* into, int* count, MPI_Datatype*) {
  const size_t n = static_cast<size_t>(*count);
  const auto* from = static_cast<const Pixel*>(other);
  auto* to = static_cast<Pixel*>(into);
  std::vector<int16_t> samples[2];
  std::vector<int32_t> depths[2];
  for (size_t i = 0; i < n; ++i) {
    samples[0].push_back(to[i].sample);
    samples[1].push_back(from[i].sample);
    depths[0].push_back(to[i].depth);
    depths[1].push_back(from[i].depth);
  }
  zox_render_merge(merge.reduction, merge.slope, merge.intercept, *count, samples[0].data(), depths[0].data(),
                   samples[1].data(), depths[1].data());
  for (size_t i = 0; i < n; ++i) to[i] = {depths[0][i], samples[0][i], 0};
}

bool is_plain_maximum(const Settings& settings) {
  return settings.view.reduction == ZOX_RENDER_MAXIMUM && !settings.depths;
}

// Largest samples alone are the field's plainest reduction; all others go by the library's merge.
void reduce_pixels(const Group& group, const Settings& settings, Picture& picture) {
  const int count = static_cast<int>(picture.samples.size());
  const void* own = group.is_root() ? MPI_IN_PLACE : static_cast<const void*>(picture.samples.data());
  if (is_plain_maximum(settings)) {
    MPI_Reduce(own, picture.samples.data(), count, MPI_SHORT, MPI_MAX, 0, group.communicator());
    return;
  }
  std::vector<Pixel> pixels;
  for (size_t i = 0; i < picture.samples.size(); ++i)
    pixels.push_back({settings.depths ? picture.depths[i] : 0, picture.samples[i], 0});
  MPI_Datatype type;
  MPI_Type_contiguous(sizeof(Pixel), MPI_BYTE, &type);
  MPI_Type_commit(&type);
  MPI_Op operation;
  MPI_Op_create(merge_pixels, 1, &operation);
  merge = {settings.view.reduction, picture.sample_slope, picture.sample_intercept};
  MPI_Reduce(group.is_root() ? MPI_IN_PLACE : pixels.data(), pixels.data(), count, type, operation, 0,
             group.communicator());
  MPI_Op_free(&operation);
  MPI_Type_free(&type);
  for (size_t i = 0; i < picture.samples.size(); ++i) {
    picture.samples[i] = pixels[i].sample;
    if (settings.depths) picture.depths[i] = pixels[i].depth;
  }
}

// Ranks without parts have no scale of samples of their own; it is the same for all others.
void share_scale(const Group& group, Picture& picture) {
  const double mine[3] = {picture.sample_slope,
                          picture.sample_slope > 0 ? picture.sample_intercept : -HUGE_VAL,
                          static_cast<double>(picture.most_part_bytes)};
  double all[3];
  MPI_Allreduce(mine, all, 3, MPI_DOUBLE, MPI_MAX, group.communicator());
  picture.sample_slope = all[0];
  picture.sample_intercept = all[1];
  picture.most_part_bytes = static_cast<uint64_t>(all[2]);
}

template <class Number>
void sum_at_root(const Group& group, Number* numbers, size_t count, MPI_Datatype type) {
  MPI_Reduce(group.is_root() ? MPI_IN_PLACE : static_cast<void*>(numbers), numbers, static_cast<int>(count),
             type, MPI_SUM, 0, group.communicator());
}

}  // namespace

void reduce(const Group& group, zox::parts::Measure& measure) {
  double ends[2] = {-measure.lowest, measure.highest};
  MPI_Allreduce(MPI_IN_PLACE, ends, 2, MPI_DOUBLE, MPI_MAX, group.communicator());
  measure.lowest = -ends[0];
  measure.highest = ends[1];
  MPI_Allreduce(MPI_IN_PLACE, measure.slice_weights.data(), static_cast<int>(measure.slice_weights.size()),
                MPI_DOUBLE, MPI_SUM, group.communicator());
}

void reduce(const Group& group, const Settings& settings, Picture& picture) {
  share_scale(group, picture);
  reduce_pixels(group, settings, picture);
  sum_at_root(group, picture.counts.data(), picture.counts.size(), MPI_UINT64_T);
  sum_at_root(group, &picture.samples_asked, 1, MPI_INT64_T);
  sum_at_root(group, &picture.samples_cast, 1, MPI_INT64_T);
}

int64_t reduced_bytes(const Settings& settings) {
  const size_t pixel = is_plain_maximum(settings) ? sizeof(int16_t) : sizeof(Pixel);
  const int64_t pixels = int64_t{settings.view.width} * settings.view.height;
  constexpr int64_t kCounts = 65536 * sizeof(uint64_t);
  return pixels * static_cast<int64_t>(pixel) + kCounts;
}

}  // namespace zox_mip_mpi
