#include "volume/volume.h"

#include <algorithm>
#include <cstring>

#include "volume/array_passes.h"

namespace render {
namespace {

constexpr int kAllSteps = 65534;

// Up to 512 voxels an edge a stack is as quick as bricks and often needs no copy; of 1024 voxels an edge,
// bricks take 0.72 of a stack's time. Of parts, the whole decides.
constexpr int64_t kMostOfStack = int64_t{1} << 27;

Layout chosen_layout(const zox_render_volume_options& options, const Size3& whole) {
  if (options.layout != ZOX_RENDER_AUTO)
    return options.layout == ZOX_RENDER_BRICKS ? Layout::kBricks : Layout::kStack;
  return int64_t{whole[0]} * whole[1] * whole[2] > kMostOfStack ? Layout::kBricks : Layout::kStack;
}

// Whole numbers of more than 15 bits leave no room for the bit that the bricks need: they stay a stack.
Layout possible_layout(Layout wanted, const Storage& storage) {
  return storage.highest - storage.lowest > kGuardedRange ? Layout::kStack : wanted;
}

bool kept_exactly(const Array& array, const Storage& storage, const Range& range) {
  if (is_float(array.type)) return range.lowest == range.highest;
  return storage.step <= 1 && range.highest - range.lowest <= kAllSteps;
}

void take_range(const Array& array, const Range& found, Volume& volume) {
  const double ends[2] = {found.lowest * array.slope + array.intercept,
                          found.highest * array.slope + array.intercept};
  volume.lowest = std::min(ends[0], ends[1]);
  volume.highest = std::max(ends[0], ends[1]);
  if (!array.range_given) return;
  require(found.lowest >= array.lowest && found.highest <= array.highest,
          "The array holds voxels outside of lowest and highest.");
}

void check_options(const zox_render_volume_options& options) {
  require(options.layout >= ZOX_RENDER_AUTO && options.layout <= ZOX_RENDER_STACK,
          "The layout is none of the layouts.");
  require(options.precision >= ZOX_RENDER_PRECISION_AUTO && options.precision <= ZOX_RENDER_PRECISION_FINE,
          "The precision is none of the precisions.");
  require((options.copy | 1) == 1 && (options.bounds | 1) == 1, "copy and bounds must be 0 or 1.");
}

}  // namespace

int Volume::sample(int x, int y, int z) const {
  if (layout == Layout::kStack) return stack.row(y, z)[x];
  return from_guarded(bricks.data[bricks.x_term(x) | bricks.y_term(y) | bricks.z_term(z)]) + bricks.middle;
}

void Volume::read_row(int y, int z, int16_t* samples) const {
  const size_t columns = static_cast<size_t>(size[0]);
  if (layout == Layout::kStack) {
    std::memcpy(samples, stack.row(y, z), columns * sizeof(int16_t));
    return;
  }
  bricks.read_row(y, z, size[0], samples);
}

const Statistics& Volume::counted(Work& work) const {
  Statistics::Box owned{{}, owned_size};
  for (size_t a = 0; a < 3; ++a) owned.first[a] = owned_first[a] - first[a];
  statistics.count(
      size[0], owned, [this](int y, int z, int16_t* samples) { read_row(y, z, samples); }, work);
  return statistics;
}

std::unique_ptr<Volume> make_volume(const zox_render_array& record, const zox_render_volume_options& options,
                                    Work& work) {
  check_options(options);
  const Array array = checked_array(record);
  auto volume = std::make_unique<Volume>();
  volume->frame = checked_frame(record, array.whole);
  volume->size = array.size;
  volume->first = array.first;
  volume->owned_first = array.owned_first;
  volume->owned_size = array.owned_size;

  const Range found = find_range(array, work, 0.3);
  take_range(array, found, *volume);
  const Range range = array.range_given ? Range{array.lowest, array.highest} : found;
  const Layout wanted = chosen_layout(options, array.whole);
  volume->storage =
      choose_storage(array, range.lowest, range.highest, options.precision != ZOX_RENDER_PRECISION_VOXEL,
                     wanted == Layout::kBricks ? kGuardedRange : kAllSteps);
  volume->exact = kept_exactly(array, volume->storage, range);
  const Layout layout = possible_layout(wanted, volume->storage);
  if (layout == Layout::kStack && !options.copy && fits_stack(array, volume->storage)) {
    refer_to_slices(array, *volume);
  } else {
    const uint64_t bytes = layout == Layout::kBricks ? bricks_bytes(array.size) : stack_bytes(array.size);
    require_memory(options.bounds ? bytes + bytes / 32 : bytes, options.memory_limit);
    layout == Layout::kBricks ? copy_bricks(array, *volume, work) : copy_stack(array, *volume, work);
  }
  // The caller's rows are read faster than bricks.
  if (options.bounds)
    volume->bounds = make_bounds(
        array.size, levels_of(array, volume->storage),
        [&](int y, int z, int16_t* samples) { sample_row(array, volume->storage, y, z, samples); }, work);
  return volume;
}

}  // namespace render
