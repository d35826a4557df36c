#include "filled_planes.h"

#include <algorithm>
#include <climits>
#include <sstream>

namespace zox_test {
namespace {

// Rays that are processed: pairs, a last odd one, and ray 0 for a negative odd count.
int rays_reached(int nrays) { return nrays > 0 ? nrays : nrays & 1; }

}  // namespace

#define ZOX_TEST_MASK_None
#define ZOX_TEST_MASK_Bits in.mask,
#define ZOX_TEST_MASK_Bytes in.mask, in.threshold,
#define ZOX_TEST_MAXIMUM(Name, name, Element, Mask_)                                                         \
  {#Name, Mask::k##Mask_, sizeof(Element), [](const Operations& target, const MaximumInput& in, void* out) { \
     return target.name(in.rays, ZOX_TEST_MASK_##Mask_ static_cast<Element*>(out));                          \
   }},

const Maximum kMaxima[kMaximumCount] = {ZOX_MAXIMA(ZOX_TEST_MAXIMUM)};

FilledPlanes::FilledPlanes(const Maximum& maximum, Random random) : random_(random) {
  draw_size();
  draw_counts();
  fill_planes(maximum.element_size);
  draw_mask(maximum.mask);
  const void* unread = reinterpret_cast<const void*>(16);
  rays_ = {planes_.pointers(), nrays_, static_cast<const double* const*>(unread),
           static_cast<const double* const*>(unread), counts_.as<int32_t>()};
  maxima_ = Planes(1, rays_reached(nrays_), maximum.element_size, random_);
  pattern_ = static_cast<uint8_t>(random_.bits());
}

void* FilledPlanes::prefilled_maxima() {
  maxima_.fill(pattern_);
  return maxima_.pointers()[0];
}

std::string FilledPlanes::describe() const {
  std::ostringstream text;
  text << "rays " << nrays_ << ", planes " << planes_.count() << ", threshold " << threshold_ << ", counts";
  for (int r = 0; r < std::min(20, std::max(1, nrays_)); ++r) text << " " << counts_.as<int32_t>()[r];
  return text.str();
}

void FilledPlanes::draw_size() {
  nrays_ = random_.pick({0, 1, 2, 3, 64, 64, -1, -2, -random_.whole(1, 999), random_.whole(1, 70),
                         random_.whole(1, 70), random_.whole(1, 300), random_.whole(1, 1000)});
  longest_ = random_.pick({1, 2, 3, 8, 9, random_.whole(1, 40), random_.whole(1, 40), random_.whole(1, 130)});
  if (random_.chance(0.01)) longest_ = random_.whole(500, 1100);
}

void FilledPlanes::draw_counts() {
  const int shape = random_.whole(0, 3);
  counts_ = GuardedBuffer(sizeof(int32_t) * static_cast<size_t>(std::max(1, nrays_)), random_);
  const int entries = std::max(1, nrays_);
  int reached = 0;
  for (int r = 0; r < entries; ++r) {
    int count = longest_;
    if (shape == 1) count = random_.whole(0, longest_);
    if (shape == 2) count = random_.chance(0.1) ? random_.whole(-3, longest_) : longest_;
    if (shape == 3) count = random_.pick({0, -1, INT_MIN, 1, random_.whole(0, longest_)});
    counts_.as<int32_t>()[r] = count;
    if (r < rays_reached(nrays_)) reached = std::max(reached, count);
  }
  longest_ = reached;
  counts_.seal();
}

void FilledPlanes::fill_planes(int element_size) {
  planes_ = Planes(longest_, rays_reached(nrays_), element_size, random_);
  const Contents contents = draw_contents(random_);
  const bool lowest = element_size == 2 && random_.chance(0.05);
  for (GuardedBuffer& plane : planes_.buffers()) {
    fill_voxels(plane.data(), plane.size(), element_size, contents, random_);
    // Nothing is smaller than the value that stands for no sample.
    if (lowest) std::fill_n(plane.as<int16_t>(), plane.size() / 2, int16_t{-32768});
    plane.seal();
  }
}

void FilledPlanes::draw_mask(Mask mask) {
  const size_t samples = static_cast<size_t>(longest_);
  const size_t bytes = mask == Mask::kNone ? 0 : mask == Mask::kBits ? (samples + 7) / 8 : samples;
  mask_ = GuardedBuffer(bytes, random_);
  const int shape = random_.whole(0, 3);
  // The bits above the low byte of a threshold mean nothing.
  threshold_ = random_.pick({0, 1, 127, 128, 254, 255, random_.whole(0, 255)});
  for (size_t i = 0; i < bytes; ++i) {
    int value = random_.whole(0, 255);
    if (shape == 1) value = random_.chance(0.5) ? 255 : 0;
    if (shape == 2) value = threshold_ + random_.whole(-1, 1);
    if (shape == 3) value = random_.chance(0.9) ? 255 : random_.whole(0, 255);
    mask_.data()[i] = static_cast<uint8_t>(value);
  }
  mask_.seal();
  if (random_.chance(0.5)) threshold_ |= static_cast<int>(random_.bits() << 8);
}

}  // namespace zox_test
