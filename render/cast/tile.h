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
inline constexpr size_t kTilePixels = 64, kQuads = 4;

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
  double stretch;  // samples, of what is skipped or not as a whole
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
  void begin_task() { untried_ = 0; }
  void render(int left, int top);
  const Counts& counts() const { return counts_; }

 private:
  // The pieces of the tile's rays within one region, those of a quad one after the other.
  struct Section {
    size_t size = 0;
    std::array<Line, kTilePixels> lines;
    std::array<Stretch, kTilePixels> samples;  // readable ones
    std::array<uint8_t, kTilePixels> pixels;
    std::array<size_t, kQuads + 1> quad_begins;
    std::array<Bundle, kQuads> quads;
    Bundle bundle;  // of all
    Stretch all;
  };
  // What the samples first .. last of a section's rays can be.
  struct Candidate {
    int best;
    int section;
    double first, last;
  };

  // Finding the samples of the rays.
  void find_rays(int left, int top);
  void add_ray(size_t pixel, const Line& line);
  void add_piece(size_t region, size_t pixel, const Line& line, const Stretch& owned);
  Stretch readable_of(const Line& line, const Stretch& owned) const;
  void take_end_samples(size_t pixel, const Line& line, double first, double last);
  // Casting them all, or those that can win.
  void cast_everything();
  void bundle_rays(Section& section);
  void find_candidates();
  int best_within(const Bundle& bundle, double first, double last, bool coarse) const;
  void cast_candidates();
  bool most_remain() const;
  void cast_runs();
  void add_candidate(const Candidate& candidate);
  bool can_improve(size_t pixel, int best, double first) const;
  void add_stretch(const Section& section, size_t ray, double first, double last);
  void run_batch();
  void find_worst();
  void take(size_t pixel, int sample, double number);
  // Writing the picture.
  void write(int left, int top) const;
  void write_pixel(size_t pixel, int64_t column, int64_t row) const;
  int final_sample(size_t pixel) const;

  const Scene& scene_;
  bool all_readable_;
  Batch batch_;
  std::vector<Section> sections_;
  std::vector<Candidate> candidates_;
  // Of each pixel: the winner, its number, and all samples so far.
  std::array<int, kTilePixels> best_;
  std::array<double, kTilePixels> at_;
  std::array<int64_t, kTilePixels> sum_, count_;
  std::array<bool, kTilePixels> any_;
  int worst_ = 0;      // of all winners that can still be beaten
  bool done_ = false;  // there is none
  bool skip_ = false;  // in this tile
  int untried_ = 0;    // tiles to come that are cast as a whole
  Counts counts_;
};

}  // namespace render
