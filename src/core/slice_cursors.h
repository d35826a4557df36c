// The samples of a batch in slice order without lists: z runs one way along a ray, so a cursor a
// ray, turned so that its slices ascend, yields them as the sweep asks for slice after slice.
#pragma once

#include "core/region_walk.h"
#include "core/staged_samples.h"

namespace zox::ZOX_SET {
namespace {

constexpr int kNoSlice = INT32_MAX;

// The lanes' next samples, and what leads from one to the next.
struct CursorLanes {
  Lanes<int> x, y, position, node;
  Lanes<int> x_step, y_step, position_step, node_step;
  Lanes<int> left;         // samples to go in this region, this one included
  Lanes<int> first_slice;  // of this region
  Lanes<int> slice;        // of the next sample; kNoSlice when the ray is done
};

template <GeneralRules rules>
class SliceCursors {
 public:
  explicit SliceCursors(const Regions& regions) : regions_(regions) {
    for (int i = 0; i < kLanes; ++i) lanes_.slice[i] = kNoSlice;
  }

  // Whether region after region leads to higher slices only, and no position can overflow.
  static bool regions_ascend(const Regions& regions) {
    if (regions.n == 1) return true;
    for (int j = 0; j < regions.n; ++j) {
      double depth = static_cast<double>(regions.Zb[j + 1]) - regions.Zb[j];
      if (!(depth >= 0 && regions.scale[j] >= 0 && (depth + kSlack) * regions.scale[j] < kLargestPosition))
        return false;
      int last = slice_of<rules>(truncate(depth * regions.scale[j]), regions.first_slice[j]);
      if (j + 1 < regions.n && last > regions.first_slice[j + 1]) return false;
    }
    return true;
  }

  // Adds the ray as the next lane. False if its z leaves the range in which it runs one way.
  bool add(const Trace& trace, int ray) {
    if (trace.n < 1) return true;
    int lane = n_++;
    trace_[lane] = trace;
    ray_[lane] = ray;
    return regions_.n == 1 ? enter_only_region(lane) : enter_first_region(lane);
  }

  // Appends every sample of the lowest slice that any cursor stands at, until none is left below
  // `nslices`. Samples below slice 0 are passed over. flush() empties the stage.
  template <class Flush>
  void sweep(int nslices, StagedSamples& stage, Flush flush) {
    for (int s = lowest_slice(); s < nslices;) {
      int next = kNoSlice;
      for (int group = 0; group < n_; group += 8) {
        int lowest = append_group(s, group, stage, flush);
        next = lowest < next ? lowest : next;
      }
      s = next;
    }
    flush(stage);
  }

 private:
  static constexpr double kSlack = 1 << rules.bits;  // how far beyond the regions z may be
  static constexpr double kLargestPosition = 0x1p31 - 0x1p22;
  static constexpr int kHalf = rules.slice_half << (rules.bits - 1);

  int lowest_slice() const {
    int lowest = kNoSlice;
    for (int i = 0; i < padded(n_); ++i) lowest = lanes_.slice[i] < lowest ? lanes_.slice[i] : lowest;
    return lowest;
  }

  bool enter_only_region(int lane) {
    const Trace& t = trace_[lane];
    int position = regions_.position(t.z, 0), step = regions_.step(t.sz, 0);
    int64_t last = position + int64_t{step} * (t.n - 1);
    if (position > kLargestPosition || last > kLargestPosition || last < INT32_MIN) return false;
    start_segment(lane, 0, position, step, 0, t.n);
    return true;
  }

  bool enter_first_region(int lane) {
    const Trace& t = trace_[lane];
    int64_t last = t.z + int64_t{t.sz} * (t.n - 1);
    int64_t low = last < t.z ? last : t.z, high = last < t.z ? t.z : last;
    if (low < regions_.Zb[0] - kSlack || high > regions_.Zb[regions_.n] + kSlack) return false;
    int j = 0;
    if (t.sz >= 1) {
      while (j + 1 < regions_.n && regions_.Zb[j + 1] < low) ++j;
    } else {
      while (j + 1 < regions_.n && regions_.Zb[j + 1] <= low) ++j;
    }
    region_[lane] = j;
    enter_region(lane);
    return true;
  }

  // The first sample of a ray that lies beyond a boundary: above it if rising, below if falling.
  static int first_beyond(const Trace& t, int boundary) {
    bool rising = t.sz >= 1;
    int64_t gap = rising ? int64_t{boundary} - t.z : int64_t{t.z} - boundary;
    if (gap < 0) return 0;
    if (t.sz == 0) return t.n;
    int64_t k = gap / (rising ? t.sz : -int64_t{t.sz}) + 1;
    return k < t.n ? static_cast<int>(k) : t.n;
  }

  // Sets the lane to the lowest sample in the next region, upwards, that holds any.
  void enter_region(int lane) {
    const Trace& t = trace_[lane];
    bool rising = t.sz >= 1;
    lanes_.slice[lane] = kNoSlice;
    for (int j = region_[lane]; j < regions_.n; ++j) {
      int below = j == 0 ? (rising ? 0 : t.n) : first_beyond(t, regions_.Zb[j]);
      int above = j == regions_.n - 1 ? (rising ? t.n : 0) : first_beyond(t, regions_.Zb[j + 1]);
      int first = rising ? below : above, end = rising ? above : below;
      if (first >= end) continue;
      bool more = rising ? end < t.n : first > 0;
      region_[lane] = more ? j + 1 : regions_.n;
      int z = static_cast<int>(t.z + int64_t{t.sz} * first);
      start_segment(lane, j, regions_.position(z, j), regions_.step(t.sz, j), first, end);
      return;
    }
  }

  // Samples first .. end - 1 lie in region j, the first at `position`. Walked from the end whose
  // slice is lower; in 32 bits the way back comes to exactly the same positions.
  void start_segment(int lane, int j, int position, int step, int first, int end) {
    const Trace& t = trace_[lane];
    int back = step < 0 ? end - 1 - first : 0, sign = step < 0 ? -1 : 1;
    int k = first + back;
    lanes_.x[lane] = wrap_add(t.x, wrap_mul(k, t.sx));
    lanes_.y[lane] = wrap_add(t.y, wrap_mul(k, t.sy));
    lanes_.position[lane] = wrap_add(position, wrap_mul(back, step));
    lanes_.node[lane] = ray_[lane] + 64 * k;
    lanes_.x_step[lane] = wrap_mul(sign, t.sx);
    lanes_.y_step[lane] = wrap_mul(sign, t.sy);
    lanes_.position_step[lane] = sign * step;
    lanes_.node_step[lane] = sign * 64;
    lanes_.left[lane] = end - first;
    lanes_.first_slice[lane] = regions_.first_slice[j];
    lanes_.slice[lane] = slice_of<rules>(lanes_.position[lane], lanes_.first_slice[lane]);
  }

  // Appends the samples of slice s of 8 lanes and moves these on; the lowest of the slices they
  // then stand at.
  template <class Flush>
  int append_group(int s, int group, StagedSamples& stage, Flush flush);

  const Regions& regions_;
  CursorLanes lanes_;
  int n_ = 0;
  Trace trace_[kLanes];
  int ray_[kLanes];
  int region_[kLanes];  // the one to enter next
};

#if defined(__AVX2__)

// For each set of 8 lanes, their numbers moved together.
struct CompressTable {
  alignas(8) uint8_t order[256][8] = {};
  constexpr CompressTable() {
    for (int mask = 0; mask < 256; ++mask) {
      for (int lane = 0, n = 0; lane < 8; ++lane) {
        if (mask >> lane & 1) order[mask][n++] = static_cast<uint8_t>(lane);
      }
    }
  }
};
constexpr CompressTable kCompress;

inline __m256i load_8(const int* from) { return _mm256_load_si256(reinterpret_cast<const __m256i*>(from)); }
inline void store_8(int* to, __m256i v) { _mm256_store_si256(reinterpret_cast<__m256i*>(to), v); }
inline void append_8(int* to, __m256i v, __m256i order) {
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), _mm256_permutevar8x32_epi32(v, order));
}
inline unsigned mask_8(__m256i v) {
  return static_cast<unsigned>(_mm256_movemask_ps(_mm256_castsi256_ps(v)));
}

inline int lowest_of_8(__m256i v) {
  __m128i low = _mm_min_epi32(_mm256_castsi256_si128(v), _mm256_extracti128_si256(v, 1));
  low = _mm_min_epi32(low, _mm_shuffle_epi32(low, 0x4E));
  low = _mm_min_epi32(low, _mm_shuffle_epi32(low, 0xB1));
  return _mm_cvtsi128_si32(low);
}

template <GeneralRules rules>
template <class Flush>
int SliceCursors<rules>::append_group(int s, int group, StagedSamples& stage, Flush flush) {
  CursorLanes& c = lanes_;
  const __m256i wanted = _mm256_set1_epi32(s);
  __m256i slice = load_8(&c.slice[group]);
  __m256i on = _mm256_cmpeq_epi32(slice, wanted);
  if (mask_8(on) == 0) return lowest_of_8(slice);
  __m256i x = load_8(&c.x[group]), y = load_8(&c.y[group]);
  __m256i position = load_8(&c.position[group]), node = load_8(&c.node[group]), left = load_8(&c.left[group]);
  for (unsigned mask; (mask = mask_8(on)) != 0;) {
    __m256i order =
        _mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(kCompress.order[mask])));
    append_8(stage.x + stage.n, x, order);
    append_8(stage.y + stage.n, y, order);
    append_8(stage.position + stage.n, position, order);
    append_8(stage.node + stage.n, node, order);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(stage.slice + stage.n), wanted);
    stage.n += s >= 0 ? __builtin_popcount(mask) : 0;
    x = _mm256_add_epi32(x, _mm256_and_si256(on, load_8(&c.x_step[group])));
    y = _mm256_add_epi32(y, _mm256_and_si256(on, load_8(&c.y_step[group])));
    position = _mm256_add_epi32(position, _mm256_and_si256(on, load_8(&c.position_step[group])));
    node = _mm256_add_epi32(node, _mm256_and_si256(on, load_8(&c.node_step[group])));
    left = _mm256_add_epi32(left, on);
    __m256i rounded = _mm256_srai_epi32(_mm256_add_epi32(position, _mm256_set1_epi32(kHalf)), rules.bits);
    __m256i ended = _mm256_and_si256(on, _mm256_cmpeq_epi32(left, _mm256_setzero_si256()));
    slice = _mm256_blendv_epi8(slice, _mm256_add_epi32(rounded, load_8(&c.first_slice[group])), on);
    slice = _mm256_blendv_epi8(slice, _mm256_set1_epi32(kNoSlice), ended);
    unsigned lanes_ended = mask_8(ended);
    if (lanes_ended != 0 && regions_.n > 1) {
      store_8(&c.x[group], x), store_8(&c.y[group], y), store_8(&c.position[group], position);
      store_8(&c.node[group], node), store_8(&c.left[group], left), store_8(&c.slice[group], slice);
      for (; lanes_ended != 0; lanes_ended &= lanes_ended - 1)
        enter_region(group + __builtin_ctz(lanes_ended));
      x = load_8(&c.x[group]), y = load_8(&c.y[group]), position = load_8(&c.position[group]);
      node = load_8(&c.node[group]), left = load_8(&c.left[group]), slice = load_8(&c.slice[group]);
    }
    if (stage.full()) flush(stage);
    on = _mm256_cmpeq_epi32(slice, wanted);
  }
  store_8(&c.x[group], x), store_8(&c.y[group], y), store_8(&c.position[group], position);
  store_8(&c.node[group], node), store_8(&c.left[group], left), store_8(&c.slice[group], slice);
  return lowest_of_8(slice);
}

#else

template <GeneralRules rules>
template <class Flush>
int SliceCursors<rules>::append_group(int s, int group, StagedSamples& stage, Flush flush) {
  CursorLanes& c = lanes_;
  int lowest = kNoSlice;
  for (int i = group; i < group + 8; ++i) {
    while (c.slice[i] == s) {
      stage.x[stage.n] = c.x[i];
      stage.y[stage.n] = c.y[i];
      stage.position[stage.n] = c.position[i];
      stage.node[stage.n] = c.node[i];
      stage.slice[stage.n] = s;
      stage.n += s >= 0;
      c.x[i] = wrap_add(c.x[i], c.x_step[i]);
      c.y[i] = wrap_add(c.y[i], c.y_step[i]);
      c.position[i] = wrap_add(c.position[i], c.position_step[i]);
      c.node[i] += c.node_step[i];
      c.slice[i] = slice_of<rules>(c.position[i], c.first_slice[i]);
      if (--c.left[i] == 0) {
        c.slice[i] = kNoSlice;
        if (regions_.n > 1) enter_region(i);
      }
      if (stage.full()) flush(stage);
    }
    lowest = c.slice[i] < lowest ? c.slice[i] : lowest;
  }
  return lowest;
}

#endif

}  // namespace
}  // namespace zox::ZOX_SET
