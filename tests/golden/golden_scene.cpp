#include "golden_scene.h"

#include <algorithm>

namespace golden {
namespace {

constexpr int kEdge = 128;  // columns and rows
constexpr int kDepth = 64;  // z

}  // namespace

Scene::Scene(const zox_test::Caster& caster, int number) : element_size_(caster.element_size()) {
  Stream stream(static_cast<uint32_t>(number + 1));
  if (caster.blocked()) {
    make_blocked(stream);
  } else {
    make_stack(caster, number, stream);
  }
  make_rays(number, stream);
}

void Scene::make_blocked(Stream& stream) {
  voxels_.resize(static_cast<size_t>(kEdge * kEdge * kDepth * element_size_));
  for (uint8_t& byte : voxels_) byte = static_cast<uint8_t>(stream.next());
  volume_.data = voxels_.data();
  volume_.size = kEdge;
}

void Scene::make_stack(const zox_test::Caster& caster, int number, Stream& stream) {
  const bool one_region = number == 1 || number == 2, backwards = number == 2;
  const int pitch = caster.bit() ? kEdge / 8 : kEdge * element_size_;
  const size_t slice_bytes = static_cast<size_t>(kEdge * pitch);
  const int nslices = kDepth;
  voxels_.resize(slice_bytes * static_cast<size_t>(nslices + 1));
  for (uint8_t& byte : voxels_) byte = static_cast<uint8_t>(stream.next());
  for (int s = 0; s <= nslices; ++s) slices_.push_back(voxels_.data() + slice_bytes * static_cast<size_t>(s));
  for (int y = 0; y < kEdge; ++y) rowoffs_.push_back((backwards ? kEdge - 1 - y : y) * pitch);
  regbounds_ = one_region ? std::vector<double>{0, kDepth} : std::vector<double>{0, 16.25, 40.1, kDepth};
  regscale_ = one_region ? std::vector<double>{1} : std::vector<double>{1, 0.5, 0.9};
  regslice_ = one_region ? std::vector<int32_t>{0} : std::vector<int32_t>{0, 17, 30};
  volume_.slices = slices_.data();
  volume_.rowoffs = rowoffs_.data();
  volume_.nslices = nslices;
  volume_.nregions = static_cast<int32_t>(regscale_.size());
  volume_.regslice = regslice_.data();
  volume_.regbounds = regbounds_.data();
  volume_.regscale = regscale_.data();
}

// At most 30 voxels in x and y and 20 in z from the middle.
void Scene::make_rays(int number, Stream& stream) {
  const int longest = number == 3 ? 520 : 30;
  const double apart = number == 1 ? 1 : 8;
  for (size_t r = 0; r < kRays; ++r) {
    for (size_t axis = 0; axis < 3; ++axis) {
      const double middle = axis == 2 ? kDepth / 2 : kEdge / 2;
      const double reach = (axis == 2 ? 20.0 : 30.0) / longest;
      starts_[r][axis] = middle + stream.between(-apart, apart);
      steps_[r][axis] = stream.between(-reach, reach);
    }
    start_pointers_[r] = starts_[r].data();
    step_pointers_[r] = steps_[r].data();
    counts_[r] = r % 5 == 4 ? static_cast<int32_t>(stream.next() % static_cast<uint32_t>(longest)) : longest;
  }
  const size_t bytes = static_cast<size_t>(kRays * element_size_);
  planes_.assign(static_cast<size_t>(longest), std::vector<uint8_t>(bytes));
  for (auto& plane : planes_) plane_pointers_.push_back(plane.data());
  rays_ = {plane_pointers_.data(), kRays, start_pointers_.data(), step_pointers_.data(), counts_.data()};
}

uint64_t Scene::checksum(zox::RayCast cast) {
  for (auto& plane : planes_) std::fill(plane.begin(), plane.end(), uint8_t{0xA5});
  Checksum sum;
  const int status = cast(&volume_, &rays_);
  sum.add(&status, sizeof status);
  for (const auto& plane : planes_) sum.add(plane.data(), plane.size());
  return sum.value();
}

void Scene::fill_planes(Stream& stream) {
  for (auto& plane : planes_) {
    for (uint8_t& byte : plane) byte = static_cast<uint8_t>(stream.next());
  }
}

}  // namespace golden
