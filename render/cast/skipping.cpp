// Casting only the samples that can win: the tile's rays are cut into stretches, each bounded by the blocks
// that it passes, and cast from the most promising on, with the rays alone that are still below the bound.
#include <emmintrin.h>

#include <algorithm>

#include "cast/tile.h"

namespace render {
namespace {

// Candidates that are cast before it is seen how many remain; and the share of all samples that is most.
constexpr size_t kProbes = 3;
constexpr double kMost = 0.85;
// Of a stretch of a quad.
constexpr int kPieces = 4;

// The first number of the next stretch: stretches begin at multiples of their length.
int next_stretch(int number, int length) {
  const int within = number % length;
  return number + length - (within < 0 ? within + length : within);
}

// A bit for each of sixteen numbers that is smaller than one.
uint32_t smaller_than(__m128i one, const int32_t* numbers) {
  __m128i smaller[4];
  for (int i = 0; i < 4; ++i)
    smaller[i] = _mm_cmplt_epi32(_mm_load_si128(reinterpret_cast<const __m128i*>(numbers) + i), one);
  const __m128i low = _mm_packs_epi32(smaller[0], smaller[1]), high = _mm_packs_epi32(smaller[2], smaller[3]);
  return static_cast<uint32_t>(_mm_movemask_epi8(_mm_packs_epi16(low, high)));
}

// What reaches the ceiling becomes unbeatable; the smallest of all.
RENDER_IN_LANES int worst_of_largest(int ceiling, int unbeatable, Lanes<int32_t>& best) {
  int worst = unbeatable;
  for (size_t i = 0; i < kLanes; ++i) {
    best[i] = best[i] >= ceiling ? unbeatable : best[i];
    worst = best[i] < worst ? best[i] : worst;
  }
  return worst;
}

uint32_t larger_than(__m128i one, const int32_t* numbers) {
  return 0xffff & ~smaller_than(_mm_add_epi32(one, _mm_set1_epi32(1)), numbers);
}

}  // namespace

int Tile::best_within(const Bundle& bundle, int first, int last, bool coarse) const {
  Size3 low, high;
  bundle.cells(first, last, low, high);
  const Bounds& bounds = scene_.volume.bounds;
  const Wanted& wanted = scene_.casting.wanted;
  const BlockTable& table = coarse ? bounds.coarse_largest : bounds.largest;
  const int largest = wanted.largest ? table.over(low, high) : scene_.order.none();
  if (!wanted.smallest) return largest;
  const int smallest = bounds.smallest.over(low, high);
  return scene_.order.better(largest, smallest) ? largest : smallest;
}

// Lanes without samples become copies of others, which bound nothing more.
void Tile::bundle_rays(Section& section) {
  size_t seen = 0;
  while (section.samples.empty(seen)) ++seen;
  for (size_t lane = 0; lane < kLanes; ++lane)
    if (section.samples.empty(lane))
      section.lines.set(lane, section.lines.of(seen));
    else
      seen = lane;
  const bool nearest = scene_.casting.sampler.nearest;
  for (size_t quad = 0; quad < kQuads; ++quad) {
    const size_t begin = quad * kQuadPixels;
    section.quads[quad].around(section.lines, begin, begin + kQuadPixels, section.first, section.last);
  }
  section.bundle = section.quads[0];
  for (size_t quad = 1; quad < kQuads; ++quad) section.bundle.add(section.quads[quad]);
  for (Bundle& quad : section.quads) quad.finish(scene_.volume, nearest);
  section.bundle.finish(scene_.volume, nearest);
}

// The most promising comes first; of equals the nearest.
void Tile::find_candidates() {
  candidates_.clear();
  for (size_t j = 0; j < sections_.size(); ++j) {
    Section& section = sections_[j];
    if (section.first > section.last) continue;
    bundle_rays(section);
    for (int first = section.first; first <= section.last;) {
      const int next = next_stretch(first, scene_.stretch);
      const int last = std::min(next - 1, section.last);
      if (scene_.order.better(best_within(section.bundle, first, last, true), scene_.floor)) {
        const int best = best_within(section.bundle, first, last, false);
        if (scene_.order.better(best, scene_.floor))
          candidates_.push_back({best, static_cast<int>(j), first, last});
      }
      first = next;
    }
  }
  std::sort(candidates_.begin(), candidates_.end(), [this](const Candidate& a, const Candidate& b) {
    return a.best != b.best ? scene_.order.better(a.best, b.best) : a.first < b.first;
  });
}

// The pixels of a quad, a bit each, that samples of at most this bound, from this number on, could change.
uint32_t Tile::gaining(size_t quad, int best, int first) const {
  const Order& order = scene_.order;
  const size_t begin = quad * kQuadPixels;
  uint32_t lanes = 0;
  if (order.sign() == 0) {
    for (size_t i = 0; i < kQuadPixels; ++i)
      lanes |= static_cast<uint32_t>(order.better(best, best_[begin + i])) << i;
  } else {
    const __m128i bound = _mm_set1_epi32(best);
    lanes = order.sign() > 0 ? smaller_than(bound, &best_[begin]) : larger_than(bound, &best_[begin]);
  }
  // Equals may still be nearer.
  if (scene_.casting.wanted.places)
    for (size_t i = 0; i < kQuadPixels; ++i)
      lanes |= static_cast<uint32_t>((best == best_[begin + i]) & (first < at_[begin + i])) << i;
  return lanes;
}

// Rays that are as good as can be need nothing more.
void Tile::find_worst() {
  const Order& order = scene_.order;
  if (order.sign() > 0) {
    worst_ = worst_of_largest(scene_.ceiling == order.none() ? order.unbeatable() : scene_.ceiling,
                              order.unbeatable(), best_);
    return;
  }
  if (scene_.ceiling != order.none())
    for (int32_t& best : best_)
      if (!order.better(scene_.ceiling, best)) best = order.unbeatable();
  worst_ = order.unbeatable();
  for (const int32_t best : best_)
    if (order.better(worst_, best)) worst_ = best;
}

bool Tile::can_gain(int best) const {
  return scene_.order.better(best, worst_) || (scene_.casting.wanted.places && best == worst_);
}

void Tile::cast_candidates() {
  find_worst();
  for (size_t i = 0; i < candidates_.size() && can_gain(candidates_[i].best); ++i) {
    if (i == kProbes && most_remain()) {
      cast_runs();
      break;
    }
    add_candidate(candidates_[i]);
  }
  run_batch();
}

// Whether so little can be left out that long stretches, which cost less a sample, are the better way.
bool Tile::most_remain() const {
  double remaining = 0, all = 0;
  for (size_t i = kProbes; i < candidates_.size(); ++i)
    if (scene_.order.better(candidates_[i].best, worst_))
      remaining += candidates_[i].last - candidates_[i].first + 1;
  for (const Section& section : sections_)
    if (section.first <= section.last) all += section.last - section.first + 1;
  return remaining > kMost * all;
}

// The candidates that remain, neighbours together.
void Tile::cast_runs() {
  const auto remaining = candidates_.begin() + kProbes;
  std::sort(remaining, candidates_.end(), [](const Candidate& a, const Candidate& b) {
    return a.section != b.section ? a.section < b.section : a.first < b.first;
  });
  const int most = scene_.casting.most_samples;
  for (auto begin = remaining; begin != candidates_.end();) {
    Candidate run = *begin;
    for (++begin; begin != candidates_.end(); ++begin) {
      const bool follows = begin->section == run.section && begin->first == run.last + 1;
      if (!follows || begin->last - run.first >= most) break;
      run.last = begin->last;
      if (scene_.order.better(begin->best, run.best)) run.best = begin->best;
    }
    for (size_t quad = 0; quad < kQuads; ++quad)
      add_quad(run, quad, gaining(quad, run.best, run.first), run.first, run.last);
  }
}

void Tile::add_quad(const Candidate& candidate, size_t quad, uint32_t lanes, int first, int last) {
  const Section& section = sections_[static_cast<size_t>(candidate.section)];
  for (; lanes != 0; lanes &= lanes - 1)
    add_stretch(section, quad * kQuadPixels + static_cast<size_t>(__builtin_ctz(lanes)), first, last);
}

// Where any ray of a quad could gain, the pieces of its stretch are bounded by themselves. A ray is cast from
// the first to the last in which it could.
void Tile::add_candidate(const Candidate& c) {
  const Section& section = sections_[static_cast<size_t>(c.section)];
  const int count = c.last - c.first + 1;
  int begin[kPieces + 1];
  for (int p = 0; p <= kPieces; ++p) begin[p] = c.first + count * p / kPieces;
  for (size_t quad = 0; quad < kQuads; ++quad) {
    const uint32_t lanes = gaining(quad, c.best, c.first);
    if (lanes == 0) continue;
    uint32_t gain[kPieces] = {}, any = 0;
    for (int p = 0; p < kPieces; ++p) {
      if (begin[p] == begin[p + 1]) continue;
      const int best = best_within(section.quads[quad], begin[p], begin[p + 1] - 1, false);
      any |= gain[p] = lanes & gaining(quad, best, begin[p]);
    }
    for (; any != 0; any &= any - 1) {
      const int pixel = __builtin_ctz(any);
      int first = 0, last = kPieces - 1;
      while (!(gain[first] >> pixel & 1)) ++first;
      while (!(gain[last] >> pixel & 1)) --last;
      add_stretch(section, quad * kQuadPixels + static_cast<size_t>(pixel), begin[first],
                  begin[last + 1] - 1);
    }
  }
}

}  // namespace render
