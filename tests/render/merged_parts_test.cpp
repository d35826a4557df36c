// Pictures of parts, reduced pixel by pixel, are the picture of the whole.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "effort.h"
#include "library.h"

using namespace zox_test;

namespace {

// The voxels that a part owns along each axis.
struct Box {
  std::array<int, 3> first, size;
};

// Cuts the whole by planes anywhere, one voxel thin parts among them.
std::vector<Box> cut(Random& random, const std::array<int, 3>& size) {
  std::vector<int> planes[3];
  for (size_t a = 0; a < 3; ++a) {
    planes[a] = {0, size[a]};
    const int cuts = random.whole(0, 2);
    for (int i = 0; i < cuts; ++i) planes[a].push_back(random.whole(0, size[a]));
    std::sort(planes[a].begin(), planes[a].end());
    planes[a].erase(std::unique(planes[a].begin(), planes[a].end()), planes[a].end());
  }
  std::vector<Box> boxes;
  for (size_t z = 0; z + 1 < planes[2].size(); ++z)
    for (size_t y = 0; y + 1 < planes[1].size(); ++y)
      for (size_t x = 0; x + 1 < planes[0].size(); ++x)
        boxes.push_back({{planes[0][x], planes[1][y], planes[2][z]},
                         {planes[0][x + 1] - planes[0][x], planes[1][y + 1] - planes[1][y],
                          planes[2][z + 1] - planes[2][z]}});
  for (size_t i = 1; i < boxes.size(); ++i)
    std::swap(boxes[i], boxes[static_cast<size_t>(random.whole(0, static_cast<int>(i)))]);
  return boxes;
}

// The part's own array: what it owns, the next voxels and sometimes more.
std::unique_ptr<Scene> part_of(const Scene& whole, const Box& box, Random& random) {
  const int32_t* size = whole.array.size;
  std::array<int, 3> first, count;
  for (size_t a = 0; a < 3; ++a) {
    first[a] = std::max(0, box.first[a] - random.whole(0, 2));
    const int end = std::min(size[a], box.first[a] + box.size[a] + 1 + random.whole(0, 2));
    count[a] = end - first[a];
  }
  std::vector<double> voxels;
  for (int z = first[2]; z < first[2] + count[2]; ++z)
    for (int y = first[1]; y < first[1] + count[1]; ++y)
      for (int x = first[0]; x < first[0] + count[0]; ++x)
        voxels.push_back(whole.voxels[static_cast<size_t>((z * size[1] + y) * size[0] + x)]);
  auto part = make_scene(whole.array.type, count, std::move(voxels));
  std::copy(&whole.array.axes[0][0], &whole.array.axes[0][0] + 9, &part->array.axes[0][0]);
  std::copy(whole.array.origin, whole.array.origin + 3, part->array.origin);
  part->array.slope = whole.array.slope;
  part->array.intercept = whole.array.intercept;
  part->array.positions = whole.array.positions;
  for (size_t a = 0; a < 3; ++a) {
    part->array.whole_size[a] = size[a];
    part->array.first[a] = first[a];
    part->array.owned_first[a] = box.first[a];
    part->array.owned_size[a] = box.size[a];
  }
  const auto [lowest, highest] = std::minmax_element(whole.voxels.begin(), whole.voxels.end());
  part->array.lowest = *lowest;
  part->array.highest = *highest;
  return part;
}

void merge(const zox_render_volume_info& info, const zox_render_view& view, Picture& into,
           const Picture& other) {
  ASSERT_EQ(zox_render_merge(view.reduction, info.sample_slope, info.sample_intercept,
                             static_cast<int64_t>(into.samples.size()), into.samples.data(),
                             into.depths.data(), other.samples.data(), other.depths.data()),
            ZOX_RENDER_OK)
      << zox_render_last_error();
}

void compare_parts(uint64_t seed, int type, int layout, bool uneven, int64_t* merged) {
  Random random(seed);
  auto whole = random_scene(random, type, 30);
  // Both 0 would mean "found from the array", which the parts do for themselves.
  whole->voxels.front() = traits_of(type).highest;
  if (type == ZOX_RENDER_FLOAT32) whole->voxels.front() = static_cast<float>(whole->voxels.front());
  auto packed =
      make_scene(type, {whole->array.size[0], whole->array.size[1], whole->array.size[2]}, whole->voxels);
  draw_axes(*packed, random);
  if (uneven) draw_positions(*packed, random);
  zox_render_view view = random_view(random, 40);
  view.reduction = random.pick({ZOX_RENDER_MAXIMUM, ZOX_RENDER_MINIMUM, ZOX_RENDER_LARGEST_MAGNITUDE});
  view.skip = random.whole(0, 1);
  const Volume volume = make_volume(*packed, layout);
  ASSERT_NE(volume, nullptr);
  const Picture picture = render(volume, view);
  Picture sum = picture;
  std::fill(sum.samples.begin(), sum.samples.end(), int16_t{ZOX_RENDER_NOTHING});
  std::fill(sum.depths.begin(), sum.depths.end(), ZOX_RENDER_NO_DEPTH);
  const Picture nothing = sum;
  for (const Box& box : cut(random, {packed->array.size[0], packed->array.size[1], packed->array.size[2]})) {
    const auto scene = part_of(*packed, box, random);
    const Volume part = make_volume(*scene, layout);
    ASSERT_NE(part, nullptr);
    const Picture piece = render(part, view);
    if (piece.status == ZOX_RENDER_EMPTY) continue;
    ASSERT_EQ(piece.status, ZOX_RENDER_OK) << zox_render_last_error();
    merge(info_of(volume), view, sum, piece);
    ++*merged;
  }
  if (picture.status == ZOX_RENDER_EMPTY) {
    EXPECT_EQ(sum.samples, nothing.samples);
    return;
  }
  sum.pixels = picture.pixels;
  EXPECT_EQ(difference(picture, sum), "");
}

class Parts : public testing::TestWithParam<std::tuple<int, bool>> {};

TEST_P(Parts, MakeTheWhole) {
  const auto& [layout, uneven] = GetParam();
  int64_t merged = 0;
  const Seeds seeds = zox_test::seeds(1, 40);
  for (uint64_t seed = seeds.first; seed < seeds.first + seeds.count; ++seed)
    for (const int type : {ZOX_RENDER_UINT8, ZOX_RENDER_INT16, ZOX_RENDER_FLOAT32}) {
      SCOPED_TRACE(std::string(traits_of(type).name) + ", ZOX_TEST_SEED=" + std::to_string(seed));
      compare_parts(seed, type, layout, uneven, &merged);
      if (HasFailure()) return;
    }
  EXPECT_GT(merged, 0);
}

std::string name_of(const testing::TestParamInfo<std::tuple<int, bool>>& info) {
  const char* const layouts[] = {"auto", "bricks", "stack"};
  return std::string(layouts[std::get<0>(info.param)]) + (std::get<1>(info.param) ? "_uneven" : "_even");
}

INSTANTIATE_TEST_SUITE_P(
    , Parts,
    testing::Combine(testing::Values(ZOX_RENDER_AUTO, ZOX_RENDER_BRICKS, ZOX_RENDER_STACK), testing::Bool()),
    name_of);

}  // namespace
