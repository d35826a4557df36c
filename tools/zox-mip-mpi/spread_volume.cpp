#include "spread_volume.h"

#include <algorithm>

#include "reduce_ranks.h"

namespace zox_mip_mpi {
namespace {

namespace parts = zox::parts;

// Each rank looks at its share of the slices, or the root at all of them.
parts::Measure measure_together(const Group& group, const SpreadSource& from) {
  const int32_t slices = from.source.whole().size[2];
  const int readers = from.everywhere ? group.size() : 1;
  const auto at = [&](int rank) {
    return static_cast<int32_t>(int64_t{slices} * std::min(rank, readers) / readers);
  };
  parts::Measure measure;
  group.together([&] {
    measure = parts::measure(from.source, at(group.rank()), at(group.rank() + 1) - at(group.rank()));
  });
  reduce(group, measure);
  return measure;
}

uint64_t voxels_of(const parts::Part& part) {
  return uint64_t(part.size[0]) * uint64_t(part.size[1]) * uint64_t(part.size[2]);
}

}  // namespace

SpreadVolume::SpreadVolume(const Group& group, const SpreadSource& from, const parts::Settings& settings,
                           int32_t longest, uint64_t memory)
    : group_(group), source_(from.source) {
  measure_ = measure_together(group, from);
  std::vector<std::vector<parts::Part>> parts_of_ranks;
  group.together([&] {
    const zox_render_array& whole = source_.whole();
    const parts::Size size = {whole.size[0], whole.size[1], whole.size[2]};
    const parts::Limits limits{longest, memory / parts::bytes_a_voxel(whole), group.size()};
    const auto all = parts::cut(size, limits, measure_.slice_weights);
    parts_of_ranks = parts::shares(all, measure_.slice_weights, group.size());
    parts_ = parts_of_ranks[static_cast<size_t>(group.rank())];
    corner_ = parts::corner(source_, measure_, settings);
  });
  if (from.distribute) from.distribute(parts_of_ranks);
  for (const parts::Part& part : parts_) voxels_ += voxels_of(part);
  group.together([&] {
    // What does not fit is packed again for each picture, part after part. Ranks differ in that.
    if (voxels_ * parts::bytes_a_voxel(source_.whole()) > memory) return;
    for (const parts::Part& part : parts_)
      kept_.push_back(std::make_unique<parts::PartVolume>(source_, measure_, part, settings));
  });
}

parts::Picture SpreadVolume::render(const parts::Settings& settings, int64_t& cast) const {
  parts::Picture picture = parts::empty_picture(settings);
  group_.together([&] {
    for (const auto& volume : kept_) volume->add_to(picture, settings);
    if (!kept_.empty()) return;
    for (const parts::Part& part : parts_)
      parts::PartVolume(source_, measure_, part, settings).add_to(picture, settings);
  });
  cast = picture.samples_cast;
  reduce(group_, settings, picture);
  return picture;
}

}  // namespace zox_mip_mpi
