// Tiles of 8 x 8 pixels, each rendered by itself.
#pragma once

#include <vector>

#include "cast/batch.h"
#include "cast/block_bounds.h"
#include "picture/order.h"
#include "picture/window.h"
#include "view/clip.h"

namespace render {

inline constexpr int kTileEdge = 8;

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
  // Samples that are as good as none, and as the best: not Order::kNone where only pixels are wanted.
  int floor = Order::kNone, ceiling = Order::kNone;
};

struct Counts {
  int64_t samples = 0, cast = 0, rays = 0;
  double seconds_bounds = 0, seconds_cast = 0, seconds_window = 0;
};

// One object per thread.
class Tile {
 public:
  explicit Tile(const Scene& scene);
  void render(int left, int top);
  const Counts& counts() const { return counts_; }

 private:
  // The pieces of the tile's rays within one region.
  struct Section {
    std::vector<Line> lines;  // of readable samples
    std::vector<Stretch> samples;
    std::vector<int> pixels;
    Bundle bundle;
    Stretch all;
  };
  // What the samples first .. last of a section's rays can be.
  struct Candidate {
    int best;
    size_t section;
    double first, last;
  };
  struct Pixel {
    int best;
    double at;  // sample number
    int64_t sum, count;
    bool any;
  };

  void find_rays(int left, int top);
  void add_ray(int pixel, const Line& line);
  void add_piece(size_t region, int pixel, const Line& line, const Stretch& owned);
  void take_end_samples(int pixel, const Line& line, double first, double last);
  void find_candidates();
  int best_within(const Section& section, double first, double last) const;
  void cast_candidates();
  void cast_everything();
  bool can_improve(const Pixel& pixel, const Candidate& candidate) const;
  void add_items(const Section& section, size_t ray, double first, double last);
  void run_batch();
  void take(Pixel& pixel, int sample, double number);
  void write(int left, int top);
  void write_pixel(const Pixel& pixel, int64_t column, int64_t row) const;
  int final_sample(const Pixel& pixel) const;

  const Scene& scene_;
  Batch batch_;
  std::vector<Section> sections_;
  std::vector<Candidate> candidates_;
  std::array<Pixel, kTileEdge * kTileEdge> pixels_;
  Counts counts_;
};

}  // namespace render
