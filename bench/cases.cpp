#include <algorithm>
#include <tuple>

#include "ray_casters.h"
#include "workload.h"

namespace bench {
namespace {

const std::vector<std::string> kLoads = {"cached", "ragged", "short", "rays1", "rays2", "rays3", "rays7"};

void add_views(std::vector<Case>& cases, const RayCaster& caster, Shape shape, const std::string& storage,
               const std::string& load) {
  const int size = shape.edge, slices = shape.slices == size ? 0 : shape.slices;
  const bool quick = (size == 256 && load == "cached" && storage != "scattered") ||
                     (size == 256 && load == "cold" && storage != "1region");
  for (const char* view : {"z", "x", "oblique"}) {
    // The larger volumes take long; along x they are like the smaller ones.
    if (size != 512 || view != std::string("x"))
      cases.push_back({caster.name, size, view, storage, load, quick, slices});
  }
  if (caster.divergent && size != 512)
    cases.push_back({caster.name, size, "perspective", storage, load, quick, slices});
  // Rays against z start their lists at the far end.
  if (!caster.blocked && shape.slices == 256 && load != "warm" && load != "cold")
    cases.push_back({caster.name, size, "falling", storage, load, false});
}

// Volumes as files hold them, in the order in which a renderer's tiles meet them.
void add_real(std::vector<Case>& cases, const RayCaster& caster) {
  const std::string storage = caster.blocked ? "bricks" : "packed";
  for (const char* load : {"warm", "cold"})
    for (const Shape shape : {Shape{256, 256}, Shape{512, 300}, Shape{512, 512}})
      if (shape.slices < 512 || load == std::string("cold")) add_views(cases, caster, shape, storage, load);
  // What a gap between the slices changes.
  if (!caster.blocked) add_views(cases, caster, {256, 256}, "1region", "cold");
}

void add_casts(std::vector<Case>& cases, const RayCaster& caster) {
  const std::vector<std::string> storages =
      caster.blocked ? std::vector<std::string>{"bricks"} : std::vector<std::string>{"1region", "3regions"};
  for (const std::string& storage : storages)
    for (const int size : {64, 256})
      for (const std::string& load : kLoads) {
        if (size != 256 && load != "cached") continue;  // one size shows the cost of those loads
        add_views(cases, caster, {size, size}, storage, load);
      }
  if (!caster.blocked) add_views(cases, caster, {256, 256}, "scattered", "cached");
}

void add_maxima(std::vector<Case>& cases, const std::string& operation) {
  for (const char* load : {"full", "ragged"}) {
    cases.push_back({operation, 256, "padded", "64rays", load, true});
    for (const int planes : {4, 64, 512})
      cases.push_back({operation, planes, "padded", "64rays", load, false});
    for (const char* rays : {"1ray", "7rays"}) cases.push_back({operation, 256, "padded", rays, load, false});
  }
  for (const char* spacing : {"padded", "aliased"})
    cases.push_back({operation, 256, spacing, "4096rays", "full", true});
}

void add_window_levels(std::vector<Case>& cases, const std::string& operation) {
  for (const char* data : {"smooth", "random"}) {
    cases.push_back({operation, 512, data, "image", "full", true});
    for (const char* rows : {"rows512", "rows7"})
      cases.push_back({operation, 512, data, rows, "full", false});
  }
}

// The element that a case's volume has: cases that share a volume stand side by side.
int element_of(const Case& c) {
  for (const RayCaster& caster : kRayCasters)
    if (c.operation == caster.name) return static_cast<int>(caster.element);
  return -1;
}

}  // namespace

std::vector<Case> all_cases() {
  std::vector<Case> cases;
  for (const RayCaster& caster : kRayCasters) {
    add_casts(cases, caster);
    add_real(cases, caster);
  }
  std::stable_sort(cases.begin(), cases.end(), [](const Case& a, const Case& b) {
    return std::make_tuple(a.shape(), a.storage, element_of(a)) <
           std::make_tuple(b.shape(), b.storage, element_of(b));
  });
#define ZOX_MAXIMUM(Name, name, ...) add_maxima(cases, #name);
  ZOX_MAXIMA(ZOX_MAXIMUM)
#undef ZOX_MAXIMUM
#define ZOX_WINDOW_LEVEL(Name, name, ...) add_window_levels(cases, #name);
  ZOX_WINDOW_LEVELS(ZOX_WINDOW_LEVEL)
#undef ZOX_WINDOW_LEVEL
  return cases;
}

}  // namespace bench
