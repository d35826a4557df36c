// The values of staged samples of a slice stack.
#pragma once

#include "numbers/cache_lines.h"
#include "numbers/value.h"
#include "numbers/voxel_pair.h"
#include "sets/set.h"
#include "stack/stack_view.h"

namespace zox::ZOX_SET {
namespace {

// Eight samples whose numbers follow one another lie side by side in one plane.
inline bool side_by_side(const int* number) {
  return ray_of(number[0]) <= ZOX_MAX_GENERAL_RAYS - 8 && consecutive_8(number);
}

// Writes value(i) of sample i to its plane and ray.
template <class Element, class Value>
void store_samples(const int* number, int n, void* const* planes, Value value) {
  int i = 0;
  for (; i + 8 <= n; i += 8) {
    if (side_by_side(number + i)) {
      Element* to = sample_at<Element>(planes, number[i]);
      for (int j = 0; j < 8; ++j) to[j] = value(i + j);
    } else {
      for (int j = i; j < i + 8; ++j) *sample_at<Element>(planes, number[j]) = value(j);
    }
  }
  for (; i < n; ++i) *sample_at<Element>(planes, number[i]) = value(i);
}

// The lines of a full stage are asked for while the stage before is read. Where choosing samples by their
// lines costs about as much as it saves, every second one is taken: neighbours in slice order lie in
// several rows.
template <FetchRules rules>
[[gnu::always_inline]] inline void ask_evenly(const StackView& view, const StagedSamples& stage) {
  if constexpr (!rules.trilinear && (kVector < 16 || !rules.in_slice_order)) {
    for (int i = 0; i < stage.n; i += 2) __builtin_prefetch(view.origin + stage.place[i]);
    return;
  }
  alignas(64) int line_offset[kStageRoom];
  const int lines = lines_of(view.origin, stage.place, stage.n, line_offset);
  for (int i = 0; i < lines; ++i) {
    const char* at = view.origin + line_offset[i];
    __builtin_prefetch(at);
    if constexpr (rules.trilinear) {
      __builtin_prefetch(at + view.row_pitch);
      __builtin_prefetch(at + view.slice_pitch);
      __builtin_prefetch(at + view.slice_pitch + view.row_pitch);
    }
  }
}

// Of columns and rows the low 16 bits count, unsigned, or all.
template <FetchRules rules>
int index_of(int fixed) {
  return (fixed >> (rules.trilinear ? 20 : 21)) & (rules.index_in_16_bits ? 0xFFFF : -1);
}

template <FetchRules rules>
int64_t offset_in_slice(const StackView& view, int x, int y, int beyond) {
  int column = index_of<rules>(x) * int{sizeof(ElementOf<rules.voxel>)};
  return byte_offset<rules.row_sum>(view.rowoffs[index_of<rules>(y) + beyond], column);
}

// By the tables, every second sample.
template <FetchRules rules>
[[gnu::always_inline]] inline void ask_corners(const StackView& view, const StagedSamples& stage) {
  for (int i = 0; i < stage.n; i += 2) {
    for (int beyond = 0; beyond < 2; ++beyond) {
      int64_t row = offset_in_slice<rules>(view, stage.x[i], stage.y[i], beyond);
      __builtin_prefetch(static_cast<const char*>(view.slices[stage.place[i]]) + row);
      __builtin_prefetch(static_cast<const char*>(view.slices[stage.place[i] + 1]) + row);
    }
  }
}

// Nearest samples by the tables: their addresses, kept for the reading, and every second line asked for.
template <FetchRules rules>
[[gnu::always_inline]] inline void look_up(const StackView& view, StagedSamples& __restrict stage) {
  constexpr bool bit = rules.voxel == Voxel::kBit;
  alignas(64) int column[kStageRoom], row[kStageRoom];
  const int n = stage.n;
  for (int i = 0; i < padded(n); ++i) {
    int index = index_of<rules>(stage.x[i]);
    column[i] = bit ? index >> 3 : index * int{sizeof(ElementOf<rules.voxel>)};
    row[i] = index_of<rules>(stage.y[i]);
  }
  for (int i = 0; i < n; ++i) {
    const char* slice = static_cast<const char*>(view.slices[stage.place[i]]);
    stage.address[i] = slice + byte_offset<rules.row_sum>(view.rowoffs[row[i]], column[i]);
  }
  if (bit || n < kFewToAsk) return;
  for (int i = 0; i < n; i += 2) __builtin_prefetch(stage.address[i]);
}

// address(i) is where sample i is read; all that it needs it holds by value.
template <FetchRules rules, class Address>
void read_nearest_at(Address address, const StagedSamples& stage, void* const* planes) {
  using Element = ElementOf<rules.voxel>;
  alignas(64) int shift[kStageRoom];
  if constexpr (rules.voxel == Voxel::kBit) {
    for (int i = 0; i < padded(stage.n); ++i) shift[i] = bit_shift(index_of<rules>(stage.x[i]));
  }
  [[maybe_unused]] const int* const bits = shift;
  store_samples<Element>(stage.number, stage.n, planes, [=](int i) {
    Element element = load<Element>(address(i));
    keep_order();
    if constexpr (rules.voxel == Voxel::kBit) element = bit_of(element, bits[i]);
    return element;
  });
}

template <FetchRules rules>
void read_nearest(const StackView& view, const StagedSamples& stage, void* const* planes) {
  if (stage.even) {
    auto address = [origin = view.origin, place = stage.place](int i) { return origin + place[i]; };
    return read_nearest_at<rules>(address, stage, planes);
  }
  auto address = [to = stage.address](int i) { return static_cast<const char*>(to[i]); };
  read_nearest_at<rules>(address, stage, planes);
}

// Samples number `first` to `first + n - 1` of the stage, n up to 64.
template <FetchRules rules, class Element>
void fetch_stack_corners(const StackView& view, const StagedSamples& stage, int first, int n,
                         Corners<Element>& corners) {
  using Pair = typename VoxelPair<Element>::Type;
  const int *x = stage.x + first, *y = stage.y + first, *place = stage.place + first;
  if (stage.even) {
    const char *origin = view.origin, *next_row = origin + view.row_pitch;
    const char *next_slice = origin + view.slice_pitch, *next_both = next_slice + view.row_pitch;
    for (int i = 0; i < n; ++i, keep_order()) {
      corners.pair[0][i] = load<Pair>(origin + place[i]);
      corners.pair[1][i] = load<Pair>(next_row + place[i]);
      corners.pair[2][i] = load<Pair>(next_slice + place[i]);
      corners.pair[3][i] = load<Pair>(next_both + place[i]);
    }
    return;
  }
  for (int i = 0; i < n; ++i, keep_order()) {
    int64_t row_0 = offset_in_slice<rules>(view, x[i], y[i], 0);
    int64_t row_1 = offset_in_slice<rules>(view, x[i], y[i], 1);
    const char* lower = static_cast<const char*>(view.slices[place[i]]);
    const char* upper = static_cast<const char*>(view.slices[place[i] + 1]);
    corners.pair[0][i] = load<Pair>(lower + row_0);
    corners.pair[1][i] = load<Pair>(lower + row_1);
    corners.pair[2][i] = load<Pair>(upper + row_0);
    corners.pair[3][i] = load<Pair>(upper + row_1);
  }
}

// Writes the samples number `first` to `first + n - 1` of the stage, given their corners.
template <FetchRules rules, class Element>
void interpolate_block(const Corners<Element>& corners, const StagedSamples& stage, int first, int n,
                       void* const* planes) {
  const int *x = stage.x + first, *y = stage.y + first, *position = stage.position + first;
  Lanes<Element> values;
  if constexpr (rules.voxel == Voxel::k8U) {
    for (int i = 0; i < padded(n); ++i) {
      values[i] = static_cast<Element>(corners.interpolated(trilinear_fixed, i, x[i], y[i], position[i]));
    }
  } else {
    Lanes<double> real;
    Lanes<int> truncated;
    for (int i = 0; i < padded(n); ++i) {
      real[i] = corners.interpolated(trilinear_real, i, x[i], y[i], position[i]);
    }
    truncate_lanes(real.at, truncated.at, n);
    for (int i = 0; i < padded(n); ++i) values[i] = static_cast<Element>(truncated[i]);
  }
  store_samples<Element>(stage.number + first, n, planes, [&](int i) { return values[i]; });
}

// What is done with a full stage: asked for, and read when the next one is full.
template <FetchRules rules>
struct StageReading {
  [[gnu::always_inline]] static void ask(const StackView& view, StagedSamples& stage) {
    if constexpr (!rules.trilinear) {
      if (!stage.even) look_up<rules>(view, stage);
    }
    if (stage.n < kFewToAsk || rules.voxel == Voxel::kBit) return;
    if constexpr (kOffsetsPay) {
      if (stage.even) ask_evenly<rules>(view, stage);
    }
    if constexpr (rules.trilinear) {
      if (!stage.even) ask_corners<rules>(view, stage);
    }
  }

  static void read(const StackView& view, const StagedSamples& stage, void* const* planes) {
    if constexpr (rules.trilinear) {
      for (int first = 0; first < stage.n; first += kLanes) {
        int n = stage.n - first < kLanes ? stage.n - first : kLanes;
        Corners<ElementOf<rules.voxel>> corners;
        fetch_stack_corners<rules>(view, stage, first, n, corners);
        interpolate_block<rules>(corners, stage, first, n, planes);
      }
    } else {
      read_nearest<rules>(view, stage, planes);
    }
  }
};

// Two stages by turns: while one is filled, the lines of the other have been asked for.
template <FetchRules rules, class Reading = StageReading<rules>>
class StackSampler {
 public:
  StackSampler(const zox_Volume& volume, void* const* to) : view(volume, rules), planes(to) {}

  StageSink sink() { return {swap, this}; }

  // Samples all that is staged.
  void finish() {
    swap(this);
    swap(this);
  }

  StackView view;
  void* const* planes;

 private:
  [[gnu::noinline]] static StagedSamples* swap(void* self) {
    StackSampler& s = *static_cast<StackSampler*>(self);
    Reading::ask(s.view, s.stages_[s.filled_]);
    s.filled_ ^= 1;
    StagedSamples& asked = s.stages_[s.filled_];
    Reading::read(s.view, asked, s.planes);
    asked.n = 0;
    return &asked;
  }

  StagedSamples stages_[2];
  int filled_ = 0;
};

}  // namespace
}  // namespace zox::ZOX_SET
