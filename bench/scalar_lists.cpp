// Apart from the library's own lists, which change with it: a yardstick has to stay as long as it was. It is
// compiled as the reference is, and its results are compared with the reference's before it is timed.
#include "scalar_lists.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace lists {
namespace {

constexpr uint32_t kEnd = 0xFFFFFFFF;

// A node's number is r + 64 * k: it names the sample's plane and ray.
struct NearestNode {
  uint32_t next;
  uint16_t x, y;
};
struct TrilinearNode {
  uint32_t next;
  int32_t x, y, z;
};

// How an operation turns coordinates into fixed point: a value v becomes trunc(v * scale + round).
struct Rules {
  bool shared_step;
  double scale;
  double start_shift;                        // added to x and y before they are scaled
  double start_round;                        // of x, y and z
  double step_round_one_region, step_round;  // of x and y
  double step_z_round;
  double bounds_round;
};

constexpr double kScale21 = 2097152.0, kScale20 = 1048576.0;
constexpr Rules kDivergentNearest = {false, kScale21, 0.5, 0.0, 0.5, 0.0, 0.0, 0.0};
constexpr Rules kDivergentBit = {false, kScale21, 0.5, 0.0, 0.0, 0.0, 0.0, 0.0};
constexpr Rules kDivergentTrilinear8u = {false, kScale20, 0.0, 0.5, 0.5, 0.5, 0.5, 0.5};
constexpr Rules kDivergentTrilinear16s = {false, kScale20, 0.0, 0.5, 0.5, 0.5, 0.5, 0.0};
constexpr Rules kParallelNearest = {true, kScale21, 0.5, 0.0, 0.0, 0.0, 0.0, 0.0};
constexpr Rules kParallelTrilinear = {true, kScale20, 0.0, 0.5, 0.5, 0.5, 0.5, 0.5};

// Kept from call to call, so that this baseline pays for no allocation.
template <class Node>
struct Scratch {
  std::vector<int32_t> bounds;
  std::vector<uint32_t> heads;
  std::vector<Node> nodes;
};

int32_t fixed(double value, const Rules& rules, double round) {
  return static_cast<int32_t>(value * rules.scale + round);
}

int32_t slice_of(const NearestNode&, int32_t position) { return (position + (1 << 20)) >> 21; }
int32_t slice_of(const TrilinearNode&, int32_t position) { return position >> 20; }

void place(NearestNode& node, int32_t x, int32_t y, int32_t) {
  node.x = static_cast<uint16_t>(x >> 21);
  node.y = static_cast<uint16_t>(y >> 21);
}
void place(TrilinearNode& node, int32_t x, int32_t y, int32_t position) {
  node.x = x;
  node.y = y;
  node.z = position;
}

template <class Node>
void trace_ray(const zox_Volume& volume, const zox_Rays& rays, const Rules& rules, int32_t r,
               Scratch<Node>& scratch) {
  const double* start = rays.starts[r];
  const double* step = rays.steps[rules.shared_step ? 0 : r];
  const int32_t nregions = volume.nregions;
  const double step_round = nregions == 1 ? rules.step_round_one_region : rules.step_round;
  const int32_t step_x = fixed(step[0], rules, step_round), step_y = fixed(step[1], rules, step_round);
  const int32_t step_z = fixed(step[2], rules, rules.step_z_round);
  int32_t x = fixed(start[0] + rules.start_shift, rules, rules.start_round);
  int32_t y = fixed(start[1] + rules.start_shift, rules, rules.start_round);
  int32_t z = fixed(start[2], rules, rules.start_round);

  const int32_t* bounds = scratch.bounds.data();
  const bool rising = step_z >= 1;
  int32_t region = rising ? 0 : nregions - 1;
  int32_t position = static_cast<int32_t>((double)(z - bounds[region]) * volume.regscale[region]);
  int32_t step_position = static_cast<int32_t>((double)step_z * volume.regscale[region]);
  uint32_t* heads = scratch.heads.data();
  Node* nodes = scratch.nodes.data();
  for (int32_t k = 0; k < rays.nsamples[r]; ++k) {
    if (nregions != 1) {
      const int32_t before = region;
      if (rising)
        while (bounds[region + 1] < z) ++region;
      else
        while (z < bounds[region]) --region;
      if (region != before) {
        position = static_cast<int32_t>((double)(z - bounds[region]) * volume.regscale[region]);
        step_position = static_cast<int32_t>((double)step_z * volume.regscale[region]);
      }
    }
    const uint32_t number = r + 64 * k;
    Node& node = nodes[number];
    place(node, x, y, position);
    uint32_t& head = heads[volume.regslice[region] + slice_of(node, position)];
    node.next = head;
    head = number;
    x += step_x;
    y += step_y;
    z += step_z;
    position += step_position;
  }
}

template <class Node>
void build(const zox_Volume& volume, const zox_Rays& rays, const Rules& rules, Scratch<Node>& scratch) {
  scratch.bounds.resize(volume.nregions + 1);
  for (int32_t j = 0; j <= volume.nregions; ++j)
    scratch.bounds[j] = fixed(volume.regbounds[j], rules, rules.bounds_round);
  scratch.heads.assign(volume.nslices, kEnd);
  int32_t longest = rays.nsamples[0];
  for (int32_t r = 1; r < rays.nrays; ++r) longest = std::max(longest, rays.nsamples[r]);
  const std::size_t needed = 64 * static_cast<std::size_t>(std::max(longest, 0));
  if (scratch.nodes.size() < needed) scratch.nodes.resize(needed);
  for (int32_t r = 0; r < rays.nrays; ++r) trace_ray(volume, rays, rules, r, scratch);
}

// The value of a node in slice lower, or between it and upper.
struct Nearest8u {
  using Node = NearestNode;
  using Value = uint8_t;
  static Value at(const uint8_t* lower, const uint8_t*, const int32_t* rows, const Node& node) {
    return lower[rows[node.y] + node.x];
  }
};

struct Nearest16s {
  using Node = NearestNode;
  using Value = int16_t;
  static Value at(const uint8_t* lower, const uint8_t*, const int32_t* rows, const Node& node) {
    return reinterpret_cast<const int16_t*>(lower + rows[node.y])[node.x];
  }
};

struct NearestBit {
  using Node = NearestNode;
  using Value = uint8_t;
  static Value at(const uint8_t* lower, const uint8_t*, const int32_t* rows, const Node& node) {
    const uint32_t byte = node.x >> 3;
    // The bit number is x - x / 8, not x modulo 8: from column 9 on most bits read as 0.
    return (uint32_t{lower[rows[node.y] + byte]} >> ((7 - (node.x - byte)) & 31)) & 1;
  }
};

struct Trilinear8u {
  using Node = TrilinearNode;
  using Value = uint8_t;
  static int32_t row(const uint8_t* at, int32_t fx) { return at[0] * (1 << 20) + (at[1] - at[0]) * fx; }
  static int32_t between(int32_t a, int32_t b, int32_t weight) { return ((b - a) >> 10) * weight + a; }
  static Value at(const uint8_t* lower, const uint8_t* upper, const int32_t* rows, const Node& node) {
    const int32_t x = node.x >> 20, y = node.y >> 20, fx = node.x & 0xFFFFF;
    const int32_t fy = (node.y >> 10) & 0x3FF, fz = (node.z >> 10) & 0x3FF;
    const int32_t r0 = rows[y] + x, r1 = rows[y + 1] + x;
    const int32_t lo = between(row(lower + r0, fx), row(lower + r1, fx), fy);
    const int32_t hi = between(row(upper + r0, fx), row(upper + r1, fx), fy);
    return static_cast<Value>(between(lo, hi, fz) >> 20);
  }
};

struct Trilinear16s {
  using Node = TrilinearNode;
  using Value = int16_t;
  static double row(const uint8_t* slice, int32_t offset, int32_t x, double fx) {
    const auto* at = reinterpret_cast<const int16_t*>(slice + offset) + x;
    return at[0] + (at[1] - at[0]) * fx;
  }
  static double fraction(int32_t fixed) { return (fixed & 0xFFFFF) * 0x1p-20; }
  static Value at(const uint8_t* lower, const uint8_t* upper, const int32_t* rows, const Node& node) {
    const int32_t x = node.x >> 20, y = node.y >> 20;
    const double fx = fraction(node.x), fy = fraction(node.y), fz = fraction(node.z);
    const int32_t r0 = rows[y], r1 = rows[y + 1];
    const double l0 = row(lower, r0, x, fx), l1 = row(lower, r1, x, fx);
    const double h0 = row(upper, r0, x, fx), h1 = row(upper, r1, x, fx);
    const double lo = l0 + (l1 - l0) * fy, hi = h0 + (h1 - h0) * fy;
    return static_cast<Value>(static_cast<int32_t>(lo + (hi - lo) * fz));
  }
};

template <class Sampling>
void sweep(const zox_Volume& volume, const zox_Rays& rays, const Scratch<typename Sampling::Node>& scratch) {
  const auto* nodes = scratch.nodes.data();
  for (int32_t s = 0; s < volume.nslices; ++s) {
    const auto* lower = static_cast<const uint8_t*>(volume.slices[s]);
    const auto* upper = static_cast<const uint8_t*>(volume.slices[s + 1]);
    for (uint32_t number = scratch.heads[s]; number != kEnd; number = nodes[number].next) {
      auto* plane = static_cast<typename Sampling::Value*>(rays.planes[number >> 6]);
      plane[number & 63] = Sampling::at(lower, upper, volume.rowoffs, nodes[number]);
    }
  }
}

template <class Sampling>
int ray_cast(const zox_Volume* volume, const zox_Rays* rays, const Rules& rules) {
  static Scratch<typename Sampling::Node> scratch;
  build(*volume, *rays, rules, scratch);
  sweep<Sampling>(*volume, *rays, scratch);
  return ZOX_STS_NO_ERROR;
}

}  // namespace

int general_divergent_nearest_8u(const zox_Volume* volume, const zox_Rays* rays) {
  return ray_cast<Nearest8u>(volume, rays, kDivergentNearest);
}
int general_divergent_nearest_16s(const zox_Volume* volume, const zox_Rays* rays) {
  return ray_cast<Nearest16s>(volume, rays, kDivergentNearest);
}
int general_divergent_nearest_bit_8u(const zox_Volume* volume, const zox_Rays* rays) {
  return ray_cast<NearestBit>(volume, rays, kDivergentBit);
}
int general_divergent_trilinear_8u(const zox_Volume* volume, const zox_Rays* rays) {
  return ray_cast<Trilinear8u>(volume, rays, kDivergentTrilinear8u);
}
int general_divergent_trilinear_16s(const zox_Volume* volume, const zox_Rays* rays) {
  return ray_cast<Trilinear16s>(volume, rays, kDivergentTrilinear16s);
}
int general_parallel_nearest_8u(const zox_Volume* volume, const zox_Rays* rays) {
  return ray_cast<Nearest8u>(volume, rays, kParallelNearest);
}
int general_parallel_nearest_16s(const zox_Volume* volume, const zox_Rays* rays) {
  return ray_cast<Nearest16s>(volume, rays, kParallelNearest);
}
int general_parallel_nearest_bit_8u(const zox_Volume* volume, const zox_Rays* rays) {
  return ray_cast<NearestBit>(volume, rays, kParallelNearest);
}
int general_parallel_trilinear_8u(const zox_Volume* volume, const zox_Rays* rays) {
  return ray_cast<Trilinear8u>(volume, rays, kParallelTrilinear);
}
int general_parallel_trilinear_16s(const zox_Volume* volume, const zox_Rays* rays) {
  return ray_cast<Trilinear16s>(volume, rays, kParallelTrilinear);
}

}  // namespace lists
