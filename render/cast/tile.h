// Tiles of 8 x 8 pixels, each rendered by itself.
#pragma once

#include <vector>

#include "cast/batch.h"
#include "cast/block_bounds.h"
#include "picture/order.h"
#include "picture/window.h"
#include "view/clip.h"

namespace render {

inline constexpr int kTileEdge = 8, kQuadEdge = 4;
// Pixels are lanes, those of a quad one after the other.
inline constexpr size_t kQuads = 4, kQuadPixels = 16;

// What all tiles of a picture share.
struct Scene {
  const Volume& volume;
  const Rays& rays;
  Casting casting;
  Order order;
  const Shades& shades;
  zox_render_picture picture;
  int width, height;
  SampleBox owned, readable;
  bool skip;
  int stretch;  // samples, of what is skipped or not as a whole
  // Samples that are as good as none, and as the best: others than order.none() where only pixels are wanted.
  int floor, ceiling;
};

struct Counts {
  int64_t samples = 0, cast = 0, rays = 0;
  double seconds_bounds = 0, seconds_cast = 0, seconds_window = 0;
};

// One object per thread.
class Tile {
 public:
  explicit Tile(const Scene& scene);
  // Tiles of one task are neighbours: where nothing could be left out of one, the next few are not tried.
  // What is left out depends on nothing else, and the picture not even on that.
  void begin_task();
  void render(int left, int top);
  const Counts& counts() const { return counts_; }

 private:
  // The pieces of the tile's rays within one region.
  struct Section {
    LineLanes lines;
    StretchLanes samples;  // readable ones
    int first, last;       // of all
    std::array<Bundle, kQuads> quads;
    Bundle bundle;  // of all
  };
  // What the samples first .. last of a section's rays can be.
  struct Candidate {
    int best;
    int section;
    int first, last;
  };

  // Finding the samples of the rays.
  void find_rays(int left, int top);
  void clear(int left, int top);
  void find_samples(Section& section);
  void find_pieces(size_t lane, const Line& line);
  Stretch readable_of(size_t lane, const Line& line, const Stretch& owned);
  void take_end_samples(size_t lane, const Line& line, double first, double last);
  // Casting them all, or those that can win.
  void cast_everything();
  void bundle_rays(Section& section);
  void find_candidates();
  int best_within(const Bundle& bundle, int first, int last, bool coarse) const;
  void cast_candidates();
  bool can_gain(int best) const;
  bool most_remain() const;
  void cast_runs();
  void add_quad(const Candidate& candidate, size_t quad, uint32_t lanes, int first, int last);
  void add_candidate(const Candidate& candidate);
  uint32_t gaining(size_t quad, int best, int first) const;
  void add_stretch(const Section& section, size_t lane, int first, int last);
  void run_batch();
  void take_all(const Reduced& reduced);
  void find_worst();
  void take(size_t lane, int sample, int number);
  // Writing the picture.
  void write() const;
  template <class Element>
  void put(const Lanes<Element>& values, Element* plane, int64_t pitch) const;
  int mean(size_t lane) const;

  const Scene& scene_;
  bool all_readable_;
  Batch batch_;
  std::vector<Section> sections_;
  std::vector<Candidate> candidates_;
  alignas(64) Lanes<double> columns_, rows_;
  // Of each pixel: the winner, its number, and all samples so far. A winner that needs nothing more, or that
  // has no samples, is unbeatable.
  alignas(64) Lanes<int32_t> best_, at_;
  Lanes<int64_t> sum_, count_;
  uint64_t any_ = 0;   // pixels that have samples
  int worst_ = 0;      // of all winners
  bool skip_ = false;  // in this tile
  int untried_ = 0;    // tiles to come that are cast as a whole
  double now_ = 0;     // seconds, when the last of them ended
  Counts counts_;
};

}  // namespace render
