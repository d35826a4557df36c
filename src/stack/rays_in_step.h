// Several rays at a time, each moved on by as many samples as the others: where slices then still come in
// order, samples are staged in whole vectors, and none is compared with a slice.
#pragma once

#include "stack/ray_cursors.h"

namespace zox::ZOX_SET {
namespace {

// What moves of one vector's lanes, and by how much.
struct StepGroup {
  Vector x, y, position, number;
  Vector x_step, y_step, position_step, number_step;

  StepGroup(const MovingLanes& from, int group)
      : x(load_vector(&from.x[group])),
        y(load_vector(&from.y[group])),
        position(load_vector(&from.position[group])),
        number(load_vector(&from.number[group])),
        x_step(load_vector(&from.x_step[group])),
        y_step(load_vector(&from.y_step[group])),
        position_step(load_vector(&from.position_step[group])),
        number_step(load_vector(&from.number_step[group])) {}
  void advance() {
    x = sum(x, x_step);
    y = sum(y, y_step);
    position = sum(position, position_step);
    number = sum(number, number_step);
  }
  void put_back(MovingLanes& to, int group) const {
    store_vector(&to.x[group], x);
    store_vector(&to.y[group], y);
    store_vector(&to.position[group], position);
    store_vector(&to.number[group], number);
  }
};

template <SliceRules rules>
class RaysInStep {
 public:
  explicit RaysInStep(RayCursors<rules>& cursors) : cursors_(cursors) {}

  // The lanes at slice s, as long as all of them stay in it; no other lane has a sample there.
  bool choose_in_slice(int s) {
    const CursorLanes& lanes = cursors_.lanes;
    clear();
    for (int i = 0; i < cursors_.count(); ++i) {
      if (lanes.slice[i] != s) continue;
      if (!add(i)) return false;
      const int64_t end = (int64_t{s} + 1 - lanes.first_slice[i]) * (1 << rules.bits) - kHalf;
      const int step = lanes.position_step[i];
      const int64_t inside = step == 0 ? INT32_MAX : (end - lanes.position[i] - 1) / step + 1;
      if (inside < samples_) samples_ = static_cast<int>(inside);
    }
    return worthwhile();
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

 private:
  static constexpr int kHalf = rules.half << (rules.bits - 1);
  // Below so many samples a ray the lanes are set up in vain: 32, of few rays 4. By bench_ratio, loads ragged
  // and rays1 to rays7.
  int shortest() const { return cursors_.count() < kVector ? 4 : 32; }

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
    return cursors_.lanes.position[lane] + int64_t{cursors_.lanes.position_step[lane]} * k;
  }

  // The more rays there are, and the more their steps differ, the sooner two of them change places.
  bool alike() const {
    const Lanes<int>& step = cursors_.lanes.position_step;
    int64_t low = INT32_MAX, high = 0;
    for (int i = 0; i < n_; ++i) {
      low = step[lane_[i]] < low ? step[lane_[i]] : low;
      high = step[lane_[i]] > high ? step[lane_[i]] : high;
    }
    return (high - low) * shortest() * n_ <= high;
  }

  void sort() {
    const Lanes<int>& position = cursors_.lanes.position;
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
    if (n_ == 1) return fill_lane(0, kVector, 1);
    for (int i = 0; i < n_; ++i) fill_lane(i, together_, n_);
  }

  // The next samples of lane number i of those chosen.
  [[gnu::always_inline]] inline void fill_lane(int i, int together, int apart) {
    const CursorLanes& from = cursors_.lanes;
    const int lane = lane_[i], x = from.x[lane], y = from.y[lane], position = from.position[lane];
    const int number = from.number[lane], x_step = from.x_step[lane], y_step = from.y_step[lane];
    const int position_step = from.position_step[lane], number_step = from.number_step[lane];
    for (int k = 0, to = i; k < together; ++k, to += apart) {
      moving_.x[to] = wrap_add(x, wrap_mul(k, x_step));
      moving_.y[to] = wrap_add(y, wrap_mul(k, y_step));
      moving_.position[to] = wrap_add(position, wrap_mul(k, position_step));
      moving_.number[to] = number + k * number_step;
      moving_.x_step[to] = wrap_mul(together, x_step);
      moving_.y_step[to] = wrap_mul(together, y_step);
      moving_.position_step[to] = wrap_mul(together, position_step);
      moving_.number_step[to] = together * number_step;
    }
  }

  template <bool even>
  void stage_steps(StagedSamples*& to, const StackView& view, const StageSink& sink) {
    const Vector first_slice = broadcast(cursors_.lanes.first_slice[lane_[0]]);
    StagedSamples* stage = to;
    int n = stage->n;
    const auto append = [&](const StepGroup& at, int lanes) {
      const Vector slice = sum(shift_right<rules.bits>(sum(at.position, broadcast(kHalf))), first_slice);
      store_anywhere(stage->place + n, even ? view.offset(at.x, at.y, view.slice_start(slice)) : slice);
      if (!even || !rules.half || view.bits_are_read) store_anywhere(stage->x + n, at.x);
      if (!even || !rules.half) store_anywhere(stage->y + n, at.y);
      if constexpr (!rules.half) store_anywhere(stage->position + n, at.position);
      store_anywhere(stage->number + n, at.number);
      n += lanes;
      if (!StagedSamples::full(n)) return;
      stage->n = n;
      stage = sink.take();
      stage->even = even;
      n = 0;
    };
    StepGroup first(moving_, 0);
    const int first_lanes = filled_ < kVector ? filled_ : kVector;
    for (int k = 0; k < samples_; k += together_) {
      const int left = (samples_ - k) * n_;
      append(first, left < first_lanes ? left : first_lanes);
      first.advance();
      for (int i = kVector; i < filled_; i += kVector) {
        StepGroup group(moving_, i);
        append(group, filled_ - i < kVector ? filled_ - i : kVector);
        group.advance();
        group.put_back(moving_, i);
      }
    }
    stage->n = n;
    to = stage;
  }

  RayCursors<rules>& cursors_;
  int lane_[kLanes];  // those that move together
  int n_;
  int samples_;   // of each
  int together_;  // of a ray, side by side in moving_
  int filled_;    // lanes of moving_
  MovingLanes moving_;
};

}  // namespace
}  // namespace zox::ZOX_SET
