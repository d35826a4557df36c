#include "golden_scene.h"

namespace golden {
namespace {

constexpr int kEdge = 128;  // columns and rows
constexpr int kDepth = 64;  // z
constexpr int kRays = 64;

}  // namespace

Scene::Scene(const zox_test::Caster& caster, int number)
    : is_blocked_(caster.blocked()),
      plane_bytes_(static_cast<size_t>(kRays * caster.element_size())),
      blocked_(caster.element_size(), kEdge, kDepth),
      stack_(caster, caster.bit() ? kEdge / 8 : kEdge, kEdge, kDepth),
      batch_(caster.element_size()) {
  Stream stream(static_cast<uint32_t>(number + 1));
  const auto fill = [&](uint8_t* at, size_t bytes) { stream.fill(at, bytes); };
  if (is_blocked_) {
    blocked_.fill_memory(fill);
  } else {
    stack_.fill_memory(fill);
    make_stack(number);
  }
  make_rays(number, stream);
}

void Scene::make_stack(int number) {
  const bool one_region = number == 1 || number == 2;
  if (!one_region) stack_.regions({0, 16.25, 40.1, kDepth}, {0, 17, 30}, {1, 0.5, 0.9});
  if (number == 2) stack_.turn_upside_down();
}

// At most 30 voxels in x and y and 20 in z from the middle.
void Scene::make_rays(int number, Stream& stream) {
  const int longest = number == 3 ? 520 : 30;
  const double apart = number == 1 ? 1 : 8;
  for (int r = 0; r < kRays; ++r) {
    zox_test::Point start, step;
    for (size_t axis = 0; axis < 3; ++axis) {
      const double middle = axis == 2 ? kDepth / 2 : kEdge / 2;
      const double reach = (axis == 2 ? 20.0 : 30.0) / longest;
      start[axis] = middle + stream.between(-apart, apart);
      step[axis] = stream.between(-reach, reach);
    }
    const int count = r % 5 == 4 ? static_cast<int>(stream.next() % static_cast<uint32_t>(longest)) : longest;
    batch_.add(start, step, count);
  }
}

uint64_t Scene::checksum(zox::RayCast cast) {
  Checksum sum;
  const int status = batch_.run(cast, is_blocked_ ? blocked_.volume() : stack_.volume());
  sum.add(&status, sizeof status);
  for (int k = 0; k < batch_.longest(); ++k) sum.add(batch_.plane(k), plane_bytes_);
  return sum.value();
}

zox_Rays Scene::filled_rays(Stream& stream) {
  const zox_Rays rays = batch_.rays();
  for (int k = 0; k < batch_.longest(); ++k) stream.fill(batch_.plane(k), plane_bytes_);
  return rays;
}

}  // namespace golden
