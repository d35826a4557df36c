// Casting only the samples that can win: the tile's rays are cut into stretches, each bounded by the blocks
// that it passes, and cast from the most promising on, with the rays alone that are still below the bound.
#include <algorithm>

#include "cast/tile.h"

namespace render {
namespace {

// Candidates that are cast before it is seen how many remain; and the share of all samples that is most.
constexpr size_t kProbes = 3;
constexpr double kMost = 0.85;

}  // namespace

int Tile::best_within(const Bundle& bundle, double first, double last, bool coarse) const {
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

void Tile::bundle_rays(Section& section) {
  section.bundle.reset(section.all.first, section.all.last);
  for (Bundle& quad : section.quads) quad.reset(section.all.first, section.all.last);
  section.quad_begins.fill(section.size);
  for (size_t ray = section.size; ray-- > 0;) {
    const size_t quad = section.pixels[ray] / (kTilePixels / kQuads);
    section.quads[quad].add(section.lines[ray]);
    for (size_t q = 0; q <= quad; ++q) section.quad_begins[q] = ray;
  }
  const bool nearest = scene_.casting.sampler.nearest;
  for (Bundle& quad : section.quads) {
    section.bundle.add(quad);
    quad.finish(scene_.volume, nearest);
  }
  section.bundle.finish(scene_.volume, nearest);
}

// Stretches begin at multiples of their length. The most promising comes first; of equals the nearest.
void Tile::find_candidates() {
  candidates_.clear();
  for (size_t j = 0; j < sections_.size(); ++j) {
    Section& section = sections_[j];
    if (section.size == 0) continue;
    bundle_rays(section);
    double first = section.all.first;
    while (first <= section.all.last) {
      const double next = (std::floor(first / scene_.stretch) + 1) * scene_.stretch;
      const double last = std::min(next - 1, section.all.last);
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

bool Tile::can_improve(size_t pixel, int best, double first) const {
  if (scene_.ceiling != scene_.order.none() && !scene_.order.better(scene_.ceiling, best_[pixel]))
    return false;
  if (scene_.order.better(best, best_[pixel])) return true;
  return scene_.casting.wanted.places && best == best_[pixel] && first < at_[pixel];
}

// Rays that are as good as can be need nothing more.
void Tile::find_worst() {
  const Order& order = scene_.order;
  int worst = order.none();
  bool found = false;
  for (const Section& section : sections_)
    for (size_t ray = 0; ray < section.size; ++ray) {
      const int best = best_[section.pixels[ray]];
      if (scene_.ceiling != order.none() && !order.better(scene_.ceiling, best)) continue;
      if (!found || order.better(worst, best)) worst = best;
      found = true;
    }
  worst_ = worst;
  done_ = !found;
}

void Tile::cast_candidates() {
  find_worst();
  for (size_t i = 0; i < candidates_.size(); ++i) {
    // Equals may still be nearer.
    if (done_ || scene_.order.better(worst_, candidates_[i].best)) break;
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
    if (section.size > 0) all += section.all.last - section.all.first + 1;
  return remaining > kMost * all;
}

// The candidates that remain, neighbours together.
void Tile::cast_runs() {
  const auto remaining = candidates_.begin() + kProbes;
  std::sort(remaining, candidates_.end(), [](const Candidate& a, const Candidate& b) {
    return a.section != b.section ? a.section < b.section : a.first < b.first;
  });
  const double most = scene_.casting.most_samples;
  for (auto begin = remaining; begin != candidates_.end();) {
    Candidate run = *begin;
    for (++begin; begin != candidates_.end(); ++begin) {
      const bool follows = begin->section == run.section && begin->first == run.last + 1;
      if (!follows || begin->last - run.first >= most) break;
      run.last = begin->last;
      if (scene_.order.better(begin->best, run.best)) run.best = begin->best;
    }
    const Section& section = sections_[static_cast<size_t>(run.section)];
    for (size_t ray = 0; ray < section.size; ++ray)
      if (can_improve(section.pixels[ray], run.best, run.first))
        add_stretch(section, ray, run.first, run.last);
  }
}

// Where any ray of a quad could gain, the quad is bounded by itself.
void Tile::add_candidate(const Candidate& candidate) {
  const Section& section = sections_[static_cast<size_t>(candidate.section)];
  for (size_t quad = 0; quad < kQuads; ++quad) {
    bool bounded = false;
    int best = candidate.best;
    for (size_t ray = section.quad_begins[quad]; ray < section.quad_begins[quad + 1]; ++ray) {
      if (!can_improve(section.pixels[ray], best, candidate.first)) continue;
      if (!bounded) {
        best = best_within(section.quads[quad], candidate.first, candidate.last, false);
        bounded = true;
        if (!can_improve(section.pixels[ray], best, candidate.first)) continue;
      }
      add_stretch(section, ray, candidate.first, candidate.last);
    }
  }
}

}  // namespace render
