// Several rays at a time, each moved on by as many samples as the others: where slices then still come in
// order, samples are staged in whole vectors, and none is compared with a slice.
#pragma once

#include "stack/ray_cursors.h"

namespace zox::ZOX_SET {
namespace {

template <SliceRules rules>
class RaysInStep {
 public:
  explicit RaysInStep(RayCursors<rules>& cursors) : cursors_(cursors) {}

  // Of lanes first .. end - 1 those at slice s, as long as all of them stay in it.
  bool choose_in_slice(int s, int first, int end) {
    const CursorLanes& lanes = cursors_.lanes;
    clear();
    for (int i = first; i < end; ++i) {
      if (lanes.slice[i] != s) continue;
      if (!add(i)) return false;
      const int64_t above = (int64_t{s} + 1 - lanes.first_slice[i]) * (1 << rules.bits) - kHalfSlice<rules>;
      const int step = lanes.step.position[i];
      const int64_t inside = step == 0 ? INT32_MAX : (above - lanes.at.position[i] - 1) / step + 1;
      if (inside < samples_) samples_ = static_cast<int>(inside);
    }
    return n_ > 0 && worthwhile();
  }

  // All lanes, in the order of their positions, if they keep that order sample after sample and none
  // overtakes another's next sample. Positions are linear: what holds for the first and the last step holds
  // between.
  bool choose_all(int nslices) {
    clear();
    for (int i = 0; i < cursors_.count(); ++i) {
      if (cursors_.lanes.slice[i] != kNoSlice && !add(i)) return false;
    }
    if (!alike()) return false;
    if (!ordered(1)) {
      if (kVector >= 8 && n_ >= kVector) return false;  // neighbours apart are stored one by one: no gain
      sort();
    }
    if (!ordered(1)) return false;
    while (worthwhile() && !ordered(samples_)) samples_ /= 2;
    return worthwhile() && highest_slice() < nslices;
  }

  int highest_slice() const {
    int64_t highest = INT64_MIN;
    for (int i = 0; i < n_; ++i) {
      const int64_t at = position_at(lane_[i], samples_ - 1);
      highest = at > highest ? at : highest;
    }
    return slice_of<rules>(static_cast<int>(highest), cursors_.lanes.first_slice[lane_[0]]);
  }

  // Stages the chosen samples and moves their lanes on.
  void stage_all(StagedSamples*& stage, const StackView& view, const StageSink& sink) {
    fill();
    if (stage->even) {
      stage_steps<true>(stage, view, sink);
    } else {
      stage_steps<false>(stage, view, sink);
    }
    for (int i = 0; i < n_; ++i) cursors_.advance(lane_[i], samples_);
  }

  // Below so many samples a ray the lanes are set up in vain: 32, of few rays 4. By bench_ratio, loads ragged
  // and rays1 to rays7.
  int shortest() const { return cursors_.count() < kVector ? 4 : 32; }

 private:
  void clear() {
    n_ = 0;
    samples_ = INT32_MAX;
  }

  // False if the lane is in another region than those before, or soon at its end.
  bool add(int lane) {
    lane_[n_++] = lane;
    const int left = cursors_.left(lane);
    samples_ = left < samples_ ? left : samples_;
    return worthwhile() && cursors_.lanes.first_slice[lane] == cursors_.lanes.first_slice[lane_[0]];
  }

  bool worthwhile() const { return samples_ >= shortest(); }

  int64_t position_at(int lane, int k) const {
    return cursors_.lanes.at.position[lane] + int64_t{cursors_.lanes.step.position[lane]} * k;
  }

  // The more rays there are, and the more their steps differ, the sooner two of them change places.
  bool alike() const {
    const Lanes<int>& step = cursors_.lanes.step.position;
    int64_t low = INT32_MAX, high = 0;
    for (int i = 0; i < n_; ++i) {
      low = step[lane_[i]] < low ? step[lane_[i]] : low;
      high = step[lane_[i]] > high ? step[lane_[i]] : high;
    }
    return (high - low) * shortest() * n_ <= high;
  }

  void sort() {
    const Lanes<int>& position = cursors_.lanes.at.position;
    for (int i = 1; i < n_; ++i) {
      const int lane = lane_[i];
      int to = i;
      for (; to > 0 && position[lane_[to - 1]] > position[lane]; --to) lane_[to] = lane_[to - 1];
      lane_[to] = lane;
    }
  }

  // Sample k - 1 of each lane in turn, and then sample k of the first.
  bool ordered(int k) const {
    int64_t before = INT64_MIN;
    for (int i = 0; i < n_; ++i) {
      const int64_t at = position_at(lane_[i], k - 1);
      if (at < before) return false;
      before = at;
    }
    return before <= position_at(lane_[0], k);
  }

  // Of few rays several samples side by side, as many as a vector has room for.
  void fill() {
    together_ = n_ < kVector ? kVector / n_ : 1;
    filled_ = n_ * together_;
    const CursorLanes& from = cursors_.lanes;
    for (auto field : kSampleFields) {
      for (int i = 0; i < n_; ++i) {
        const int at = (from.at.*field)[lane_[i]], step = (from.step.*field)[lane_[i]];
        for (int k = 0, to = i; k < together_; ++k, to += n_) {
          (at_.*field)[to] = wrap_add(at, wrap_mul(k, step));
          (step_.*field)[to] = wrap_mul(together_, step);
        }
      }
    }
  }

  // As many steps at once as there is room for, the last vector first: what it writes beyond its lanes the
  // others overwrite.
  template <bool even>
  void stage_steps(StagedSamples*& to, const StackView& view, const StageSink& sink) {
    const Vector first_slice = broadcast(cursors_.lanes.first_slice[lane_[0]]);
    StagedSamples* stage = to;
    for (int64_t left = int64_t{samples_} * n_; left > 0;) {
      const int room = (kStage - stage->n) / filled_;
      if (room == 0) {
        stage = sink.take(even);
        continue;
      }
      const int most = room * filled_;
      const int steps = most < left ? room : static_cast<int>((left + filled_ - 1) / filled_);
      const int staged = steps * filled_;
      for (int group = (filled_ - 1) & -kVector; group >= 0; group -= kVector) {
        const SampleVectors step = SampleVectors::of(step_, group);
        SampleVectors at = SampleVectors::of(at_, group);
        for (int i = 0, n = stage->n + group; i < steps; ++i, n += filled_, at.move(step)) {
          view.stage<even, !rules.half>(*stage, n, at, slices_of<rules>(at.position, first_slice),
                                        store<Vector>);
        }
        at.put_back(at_, group);
      }
      stage->n += staged < left ? staged : static_cast<int>(left);
      left -= staged;
    }
    to = StagedSamples::full(stage->n) ? sink.take(even) : stage;
  }

  RayCursors<rules>& cursors_;
  int lane_[kLanes];  // those that move together
  int n_;
  int samples_;   // of each
  int together_;  // of a ray, side by side in at_
  int filled_;    // lanes of at_
  SampleLanes at_, step_;
};

}  // namespace
}  // namespace zox::ZOX_SET
