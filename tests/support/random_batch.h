// One random batch for one ray caster: volume, rays and planes, all valid and all between guard pages.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "blocked_volume.h"
#include "rays.h"
#include "regions.h"
#include "sample_planes.h"
#include "slice_stack.h"

namespace zox_test {

enum class Validity {
  kStrict,  // nothing that the documentation does not promise to work
  kValid,   // also what it merely leaves unread or treats as empty
  kBeyond,  // also samples of slice-list casters in slices that the stack lacks
};

enum class Slices { kAnywhere, kApart };  // kApart: each on pages of its own

class RandomBatch {
 public:
  RandomBatch(const Caster& caster, uint64_t seed, Validity validity = Validity::kBeyond,
              Slices slices = Slices::kAnywhere);
  // From any source of chance: a fuzzer's bytes.
  RandomBatch(const Caster& caster, Random random, Validity validity, Slices slices = Slices::kAnywhere);

  const zox_Volume& volume() const { return volume_; }
  const zox_Rays& rays() const { return rays_; }
  Planes& planes() { return planes_; }
  const SliceStack& stack() const { return stack_; }
  uint8_t pattern() const { return pattern_; }
  bool takes_one_region_path() const;

  // Prefills the planes, runs a caster over the batch, and gives the planes' contents.
  struct Outcome {
    int status;
    std::vector<uint8_t> planes;
  };
  Outcome run(zox::RayCast cast);

  std::string describe() const;

 private:
  void make_blocked(Random& random);
  void make_general(Random& random);
  void draw(const Room& room, Random& random);
  using Paths = std::vector<std::vector<Voxel>>;
  Paths trace() const;
  void cut(Paths& paths, const std::function<bool(size_t ray, size_t sample, const Voxel&)>& good);
  bool in_stack(size_t ray, size_t sample, const Voxel& v, bool one_region, bool beyond) const;
  std::vector<Voxel> fit_slices(Paths& paths, bool one_region, bool beyond, Random& random);
  template <typename T>
  const T* sealed(const std::vector<T>& values, Random& random);
  const double* const* sealed_rows(const std::vector<Point>& rows, Random& random);
  void seal_rays(Random& random);

  const Caster& caster_;
  uint64_t seed_ = 0;
  Validity validity_;
  Slices slices_;
  uint8_t pattern_;
  zox_Volume volume_{};
  zox_Rays rays_{};
  RayList drawn_;
  Regions regions_;
  SliceStack stack_;
  Planes planes_;
  std::vector<GuardedBuffer> sealed_;
};

}  // namespace zox_test
