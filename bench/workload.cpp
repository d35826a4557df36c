#include "workload.h"

#include <algorithm>
#include <memory>
#include <random>
#include <stdexcept>
#include <type_traits>

#include "output_planes.h"
#include "ray_casters.h"
#include "views.h"

#ifdef ZOX_BENCH_BEFORE
// The same type as today's: the order of its members must not have changed since.
extern "C" const zox::Operations before_base, before_avx2, before_avx512;
#endif

namespace bench {
namespace {

struct Set {
  std::string name;
  const zox::Operations* operations;
};

std::vector<Set> chosen(const std::vector<std::string>& sets) {
  std::vector<Set> all;
#ifdef ZOX_BENCH_BEFORE
  for (const zox::Operations* operations : {&before_base, &before_avx2, &before_avx512})
    all.push_back({std::string("before_") + operations->name, operations});
#endif
  for (const zox::Operations* operations : zox::kAllOperations) all.push_back({operations->name, operations});
  std::erase_if(all, [&](const Set& set) {
    return !set.operations->supported() || std::count(sets.begin(), sets.end(), set.name) == 0;
  });
  return all;
}

// Adds the reference, then each set that has the operation; call makes a run of a function.
template <class Function, class Call>
void add_contenders(Workload& workload, Function zox::Operations::*member, Function reference,
                    const std::vector<std::string>& sets, Call call) {
  workload.contenders.insert(workload.contenders.begin(), {"reference", call(reference)});
  for (const Set& set : chosen(sets))
    if (set.operations->*member) workload.contenders.push_back({set.name, call(set.operations->*member)});
}

// The volume of the case before, mostly the right one.
const Volume& volume_of(const RayCaster& caster, const Case& c) {
  static Volume volume;
  static std::string made;
  const std::string wanted = c.storage + std::to_string(static_cast<int>(caster.element)) + "/" + c.shape();
  const Shape shape = {c.size, c.slices > 0 ? c.slices : c.size};
  if (made != wanted) fill_volume(volume, c.storage, caster.element, shape);
  made = wanted;
  return volume;
}

struct Cast {
  std::vector<Batch> batches;
  Planes planes;
};

Workload cast_workload(const RayCaster& caster, const Case& c, const std::vector<std::string>& sets) {
  const Volume& volume = volume_of(caster, c);
  auto cast = std::make_shared<Cast>();
  cast->batches = make_batches(volume, c.view, c.load);
  Workload workload;
  int32_t longest = 1;
  for (const Batch& batch : cast->batches) {
    workload.samples += batch.samples();
    longest = std::max(longest, batch.longest());
  }
  cast->planes = Planes(longest, 64 * bytes_per_sample(caster.element) + 64);
  for (Batch& batch : cast->batches) batch.record.planes = cast->planes.pointers.data();
  workload.batches = static_cast<int>(cast->batches.size());
  workload.output = cast->planes.bytes();
  if (c.load == "warm" || c.load == "cold") workload.evict = [&volume] { evict(volume); };

  const auto call = [&volume, cast](zox::RayCast function) {
    return [&volume, cast, function](int i) { return function(&volume.record, &cast->batches[i].record); };
  };
  add_contenders(workload, caster.member, caster.reference, sets, call);
  const bool one_region = c.storage == "1region" || c.storage == "packed";
  if (caster.lists && !(caster.one_region_path && one_region))
    workload.contenders.insert(workload.contenders.begin() + 1, {"lists", call(caster.lists)});
  return workload;
}

// Planes full of noise, in four sets, so that the data of a run outgrow the first-level cache.
struct Maximum {
  std::vector<Planes> planes;
  std::vector<int32_t> counts;
  std::vector<zox_Rays> rays;
  std::vector<uint8_t> mask;
  std::vector<std::byte> maxima;
};

std::shared_ptr<Maximum> make_maximum(const Case& c, int width) {
  auto maximum = std::make_shared<Maximum>();
  std::mt19937 random(5);
  const int nrays = std::stoi(c.storage);
  const std::size_t spacing = static_cast<std::size_t>(nrays) * width + (c.view == "padded" ? 64 : 0);
  for (int i = 0; i < 4; ++i) {
    maximum->planes.emplace_back(c.size, spacing);
    for (std::byte& byte : maximum->planes.back().bytes()) byte = static_cast<std::byte>(random());
  }
  for (int r = 0; r < nrays; ++r)
    maximum->counts.push_back(c.load == "full" ? c.size : static_cast<int32_t>(random() % (c.size + 1)));
  for (int k = 0; k < c.size; ++k) maximum->mask.push_back(static_cast<uint8_t>(random()));
  maximum->maxima.resize(static_cast<std::size_t>(nrays) * width);
  for (Planes& planes : maximum->planes) {
    zox_Rays rays = {};
    rays.planes = planes.pointers.data();
    rays.nrays = nrays;
    rays.nsamples = maximum->counts.data();
    maximum->rays.push_back(rays);
  }
  return maximum;
}

template <class Value, class Function>
Workload maximum_workload(const Case& c, const std::vector<std::string>& sets,
                          Function zox::Operations::*member, Function reference) {
  auto maximum = make_maximum(c, sizeof(Value));
  Workload workload;
  workload.batches = static_cast<int>(maximum->rays.size());
  for (const int32_t count : maximum->counts) workload.samples += int64_t{count} * workload.batches;
  workload.output = maximum->maxima;
  const auto call = [maximum](Function function) {
    return [maximum, function](int i) {
      auto* maxima = reinterpret_cast<Value*>(maximum->maxima.data());
      const zox_Rays* rays = &maximum->rays[i];
      const uint8_t* mask = maximum->mask.data();
      if constexpr (std::is_invocable_v<Function, const zox_Rays*, Value*>)
        return function(rays, maxima);
      else if constexpr (std::is_invocable_v<Function, const zox_Rays*, const uint8_t*, Value*>)
        return function(rays, mask, maxima);
      else
        return function(rays, mask, 127, maxima);
    };
  };
  add_contenders(workload, member, reference, sets, call);
  return workload;
}

struct Window {
  std::vector<int16_t> src;
  std::vector<std::byte> dst;
};

template <class Function>
Workload window_workload(const Case& c, const std::vector<std::string>& sets,
                         Function zox::Operations::*member, Function reference) {
  auto window = std::make_shared<Window>();
  std::mt19937 random(3);
  const int pixels = c.size * c.size;
  const int length = c.storage == "image" ? pixels : c.storage == "rows512" ? 512 : 7;
  for (int i = 0; i < pixels; ++i) {
    // Slow ramps, a few pixels of each outside the window; or every pixel anywhere.
    const int ramp = (i % c.size + i / c.size) % 256 * 16 - 1100;
    window->src.push_back(static_cast<int16_t>(c.view == "smooth" ? ramp : random() % 8000 - 3000));
  }
  window->dst.resize(pixels);
  Workload workload;
  workload.batches = pixels / length;
  workload.samples = int64_t{workload.batches} * length;
  workload.output = window->dst;
  const auto call = [window, length](Function function) {
    return [window, length, function](int i) {
      const std::size_t at = static_cast<std::size_t>(i) * length;
      auto* dst = reinterpret_cast<uint8_t*>(window->dst.data()) + at;
      return function(window->src.data() + at, dst, length, 900, 3800, 0, 255);
    };
  };
  add_contenders(workload, member, reference, sets, call);
  return workload;
}

}  // namespace

Workload make_workload(const Case& c, const std::vector<std::string>& sets) {
  for (const RayCaster& caster : kRayCasters)
    if (c.operation == caster.name) return cast_workload(caster, c, sets);
#define ZOX_MAXIMUM(Name, name, Element, Mask) \
  if (c.operation == #name)                    \
    return maximum_workload<Element>(c, sets, &zox::Operations::name, &reference::name);
  ZOX_MAXIMA(ZOX_MAXIMUM)
#undef ZOX_MAXIMUM
#define ZOX_WINDOW_LEVEL(Name, name, Source, Target) \
  if (c.operation == #name) return window_workload(c, sets, &zox::Operations::name, &reference::name);
  ZOX_WINDOW_LEVELS(ZOX_WINDOW_LEVEL)
#undef ZOX_WINDOW_LEVEL
  throw std::invalid_argument("unknown operation " + c.operation);
}

}  // namespace bench
