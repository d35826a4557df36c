#include "rays.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace zox_test {
namespace {

// Positions that are multiples of a fraction of a voxel, or of that and a half; any, if there is none.
struct Grid {
  double per_voxel;
  double shift;
};

// Tenths are no doubles: their sums miss whole numbers by a last bit, this way or that.
Grid draw_grid(double unit, Random& random) {
  return random.pick({Grid{0, 0}, Grid{0, 0}, Grid{1, 0}, Grid{2, 0}, Grid{4, 0}, Grid{10, 0},
                      Grid{1 / unit, 0}, Grid{1 / unit, 0.5}});
}

double snap(double value, const Grid& grid) {
  if (grid.per_voxel == 0) return value;
  return (std::floor(value * grid.per_voxel + (0.5 - grid.shift)) + grid.shift) / grid.per_voxel;
}

int draw_ray_count(const Caster& caster, const Room& room, Random& random) {
  // Parallel casters look at ray 0 before they look at the count; the divergent ones take none.
  const bool may_be_none = !room.strict || (!caster.parallel() || caster.trilinear());
  if (may_be_none && random.chance(0.02)) return room.strict && caster.blocked() ? 1 : 0;
  if (!room.strict && random.chance(0.01)) return -random.whole(1, 70);
  if (caster.blocked() && random.chance(0.15)) return random.pick({65, 66, 100, random.whole(65, 300)});
  return random.pick({1, 2, 7, 8, 9, 16, 33, 63, 64, 64, 64, random.whole(1, 64)});
}

// Negative counts stand for none in the casters that say so.
bool may_be_negative(const Caster& caster, const Room& room) {
  if (!caster.parallel()) return true;
  return !caster.blocked() && (caster.trilinear() || (!room.strict && room.marks.size() > 2));
}

std::vector<int32_t> draw_counts(const Caster& caster, const Room& room, int rays, Random& random) {
  int longest = random.pick({1, 2, 5, 17, 40, 40, random.whole(1, 100)});
  if (random.chance(0.02)) longest = random.pick({511, 512, 513, random.whole(500, 700)});
  const bool ragged = random.chance(0.5);
  const double empty = random.pick({0.0, 0.0, 0.05, 0.4});
  std::vector<int32_t> counts;
  for (int r = 0; r < rays; ++r) {
    int count = ragged ? random.whole(1, longest) : longest;
    if (random.chance(empty)) count = 0;
    if (count == 0 && may_be_negative(caster, room) && random.chance(0.3))
      count = random.chance(0.1) ? INT32_MIN : -random.whole(1, 600);
    counts.push_back(count);
  }
  return counts;
}

// Voxels a sample along each axis: along one axis, in a plane, oblique, standing, or crawling.
Point draw_direction(Random& random) {
  const double speed = random.pick({1.0, 0.5, 0.01, random.real(0, 1), random.real(0, 4)});
  Point direction{};
  const int shape = random.whole(0, 9);
  if (shape < 4) {
    direction[static_cast<size_t>(random.pick({0, 1, 2, 2}))] = 1.0;
  } else if (shape < 9) {
    for (double& d : direction) d = random.real(0, 1);
    if (shape < 6) direction[static_cast<size_t>(random.whole(0, 2))] = random.pick({0.0, 1e-7, 1e-3});
  }
  for (double& d : direction) d *= random.chance(0.5) ? speed : -speed;
  return direction;
}

// Shrinks the step until `count` samples fit into the room, whatever the start.
Point fit_step(Point step, const Room& room, int count) {
  for (size_t a = 0; a < 3; ++a) {
    const double length = std::fabs(step[a]) * std::max(1, std::max(1, count) - 1);
    const double space = room.high[a] - room.low[a];
    if (length > space) step[a] *= space / length;
  }
  return step;
}

// A start from which `count` samples stay inside, often touching a side of the room.
double draw_start(double low, double high, double way, Random& random) {
  if (std::fabs(way) > high - low) return way > 0 ? low : high;
  const double first = low - std::min(0.0, way);
  const double last = std::max(first, high - std::max(0.0, way));
  return random.pick({random.real(first, last), random.real(first, last), first, last});
}

double near_mark(const Room& room, Random& random) {
  const double mark =
      room.marks[static_cast<size_t>(random.whole(0, static_cast<int>(room.marks.size()) - 1))];
  return mark + room.unit * random.pick({0.0, 0.0, 1.0, -1.0, 0.5, -0.5, 0.25});
}

struct Style {
  Grid starts;
  Grid steps;
  bool tile;        // rays side by side, as those of an image
  bool level_tile;  // all of them start on one z
  bool on_marks;
  double spacing;
  double spread;  // by how much divergent steps of a tile differ
};

Style draw_style(const Room& room, Random& random) {
  Style style{};
  style.starts = draw_grid(room.unit, random);
  style.steps = draw_grid(room.unit, random);
  style.tile = random.chance(0.5);
  style.level_tile = random.chance(0.5);
  style.on_marks = !room.marks.empty() && random.chance(0.2);
  style.spacing = random.pick({0.0, 0.1, 1.0, random.real(0, 2)});
  style.spread = random.pick({0.0, 0.001, 0.1});
  return style;
}

Point draw_step(const Room& room, const Style& style, const Point& direction, int count, Random& random) {
  Point step = fit_step(direction, room, count);
  for (size_t a = 0; a < 3; ++a) {
    // A step that is nothing on an axis stays so: a unit would turn level rays.
    if (step[a] != 0 || random.chance(0.1)) step[a] = snap(step[a], style.steps);
  }
  return step;
}

Point draw_start(const Room& room, const Style& style, const Point& step, int count, Random& random) {
  Point start;
  for (size_t a = 0; a < 3; ++a) {
    const double way = step[a] * (std::max(1, count) - 1);
    start[a] = snap(draw_start(room.low[a], room.high[a], way, random), style.starts);
  }
  if (style.on_marks) start[2] = near_mark(room, random);
  return start;
}

Point beside(const Point& first, const Style& style, int ray) {
  const double u = style.spacing * (ray % 8), v = style.spacing * (ray / 8);
  if (style.level_tile) return {first[0] + u, first[1] + v, first[2]};
  return {first[0] + u * 0.5, first[1] + v, first[2] + u * 0.3 + v * 0.1};
}

// Nobody reads the step of a ray with one sample, so it may be anything.
void draw_unread_steps(const Caster& caster, RayList& rays, Random& random) {
  for (size_t r = 0; r < rays.steps.size(); ++r) {
    const int count =
        caster.parallel() ? *std::max_element(rays.counts.begin(), rays.counts.end()) : rays.counts[r];
    if (count > 1) continue;
    for (double& d : rays.steps[r])
      d = random.pick({1000.0, -1000.0, 1e9, -1e300, 0.0, random.real(-50, 50)});
  }
}

// The start of a ray without samples may be anything too, but it counts where rays are compared.
void draw_missed_starts(RayList& rays, Random& random) {
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  for (size_t r = random.chance(0.1) ? 0 : 1; r < rays.starts.size(); ++r) {
    if (rays.counts[r] > 0 || random.chance(0.5)) continue;
    const bool everywhere = random.chance(0.3);
    const double far =
        random.pick({kNaN, kInfinity, -kInfinity, 1e9, -1e9, -1e300, random.real(-9999, 9999)});
    for (double& s : rays.starts[r]) {
      if (everywhere || random.chance(0.4)) s = far;
    }
  }
}

// The rays' starts on both sides of, and exactly at, the fifth of a region's depth that decides
// between the two ways of the parallel nearest casters of slice stacks.
void spread_to_threshold(const Room& room, RayList& rays, Random& random) {
  const double threshold = (room.marks[1] - room.marks[0]) * 0.2;
  const double distance = random.pick({threshold, threshold - room.unit, threshold + room.unit,
                                       std::nextafter(threshold, 0.0), threshold * random.real(0, 2)});
  const double base = random.pick({0.0, room.marks[0], rays.starts[0][2]});
  for (size_t r = 0; r < rays.starts.size(); ++r) rays.starts[r][2] = base;
  rays.starts[static_cast<size_t>(random.whole(0, static_cast<int>(rays.starts.size()) - 1))][2] +=
      random.chance(0.5) ? distance : -distance;
}

// Parallel blocked casters weigh the step against the rays' spacing, x at a twelfth or a sixth: one of
// the two along x and the other along z, in proportions around both weights. Starts half a unit or
// a last bit below where another voxel begins make the two ways of walking differ.
void spread_around_weights(const Caster& caster, const Room& room, RayList& rays, Random& random) {
  const double ratio = random.pick({1.0 / 12, 1.0 / 6, random.real(1.0 / 14, 1.0 / 5)});
  const size_t wide = random.chance(0.5) ? 0 : 2;
  // In doubles only starts far smaller than their distances lose bits on the one way alone.
  const bool fixed = caster.trilinear() && caster.element_size() == 1;
  const double sign = fixed && random.chance(0.5) ? -1 : 1;
  if (!fixed) rays.starts[0][wide] = random.real(0, 0.5);
  for (size_t r = 1; r < rays.starts.size(); ++r) {
    const double seam =
        std::floor(rays.starts[0][wide]) + sign * static_cast<double>(r) + (caster.trilinear() ? 0.0 : 0.5);
    rays.starts[r] = rays.starts[0];
    rays.starts[r][wide] = fixed ? seam - room.unit / 2 : std::nextafter(seam, 0);
  }
  Point step{};
  step[2 - wide] = sign * (wide == 0 ? ratio : 1 / ratio);
  rays.steps.assign(rays.steps.size(), step);
}

}  // namespace

zox_Rays RayList::record(void* const* planes) {
  start_pointers.clear();
  step_pointers.clear();
  for (const Point& start : starts) start_pointers.push_back(start.data());
  for (const Point& step : steps) step_pointers.push_back(step.data());
  return {planes, nrays, start_pointers.data(), step_pointers.data(), counts.data()};
}

RayList draw_rays(const Caster& caster, const Room& room, Random& random) {
  RayList rays{};
  rays.nrays = draw_ray_count(caster, room, random);
  const int entries = std::max(1, rays.nrays);
  rays.counts = draw_counts(caster, room, entries, random);
  const int longest = *std::max_element(rays.counts.begin(), rays.counts.end());
  const Style style = draw_style(room, random);
  Point direction = draw_direction(random);
  for (int r = 0; r < entries; ++r) {
    const int count = caster.parallel() ? longest : rays.counts[static_cast<size_t>(r)];
    if (r > 0 && !caster.parallel()) {
      if (!style.tile) direction = draw_direction(random);
      for (double& d : direction) d += style.tile ? style.spread * random.real(-1, 1) : 0.0;
    }
    const bool own_step = r == 0 || !caster.parallel();
    if (own_step) rays.steps.push_back(draw_step(room, style, direction, count, random));
    const bool beside_first = style.tile && r > 0;
    rays.starts.push_back(beside_first ? beside(rays.starts[0], style, r)
                                       : draw_start(room, style, rays.steps.back(), count, random));
  }
  if (caster.parallel() && room.marks.size() == 2 && random.chance(0.3))
    spread_to_threshold(room, rays, random);
  if (caster.blocked() && caster.parallel() && random.chance(0.1))
    spread_around_weights(caster, room, rays, random);
  if (!room.strict && random.chance(0.05)) draw_unread_steps(caster, rays, random);
  if (!room.strict && random.chance(0.2)) draw_missed_starts(rays, random);
  return rays;
}

}  // namespace zox_test
