// The largest selected sample of every ray. Planes run outermost, with a block of rays held in
// vectors: each plane is read once, in stretches.
#pragma once

#include "numbers/lanes.h"
#include "sets/set.h"
#include "zox_volume.h"

namespace zox::ZOX_SET {
namespace {

// Which sample indices take part.
struct AllSamples {
  static constexpr bool kAll = true;
  bool selects(int) const { return true; }
};

struct BitMask {  // most significant bit first
  static constexpr bool kAll = false;
  const uint8_t* mask;
  bool selects(int k) const { return (mask[k >> 3] >> (7 - (k & 7))) & 1; }
};

struct ByteMask {  // strictly above the threshold, of which only the low byte counts
  static constexpr bool kAll = false;
  const uint8_t* mask;
  uint8_t threshold;
  bool selects(int k) const { return mask[k] > threshold; }
};

// Sample counts are compared in the element's own size, as signed numbers, a run of planes at a
// time; a limit of kMostPlanes is above every count.
template <class Element>
constexpr int kMostPlanes = sizeof(Element) == 1 ? 127 : 32767;

// The lowest value of the element's type.
template <class Element>
constexpr Element kEmpty = static_cast<Element>(static_cast<Element>(-1) < 0 ? -kMostPlanes<Element> - 1 : 0);

// `bytes` of rays side by side, `each` of them to a vector.
template <class Element, int bytes, int each>
class MaximumBlock {
 public:
  static constexpr int kRays = bytes / int{sizeof(Element)};

  MaximumBlock(const zox_Rays& rays, int first) : rays_(rays), first_(first) {
    for (auto& m : maximum_.v) m = Part{} + kEmpty<Element>;
  }

  template <class Selection>
  void reduce(Selection selection) {
    const int32_t* nsamples = rays_.nsamples + first_;
    int shortest = INT32_MAX, longest = 0;
    for (int i = 0; i < kRays; ++i) {
      shortest = nsamples[i] < shortest ? nsamples[i] : shortest;
      longest = nsamples[i] > longest ? nsamples[i] : longest;
    }
    add_planes<true>(0, shortest, {}, selection);
    for (int k = shortest < 0 ? 0 : shortest, n; k < longest; k += n) {
      int left = longest - k;
      n = left < kMostPlanes<Element> ? left : kMostPlanes<Element>;
      add_planes<false>(k, k + n, counts_from(k), selection);
    }
  }

  void put(Element* result) const {
    for (int i = 0; i < kVectors; ++i) store(result + first_ + i * kPerVector, maximum_.v[i]);
  }

 private:
  using Part = NumbersOf<Element, each>;
  using Counts = decltype(Part{} > Part{});  // signed numbers of the same size
  static constexpr int kVectors = bytes / each;
  static constexpr int kPerVector = each / int{sizeof(Element)};
  template <class Numbers>
  struct Registers {
    Numbers v[kVectors];
  };

  const Element* samples(int k) const { return static_cast<const Element*>(rays_.planes[k]) + first_; }

  // How many planes from first_plane on each ray has samples of, kMostPlanes if more.
  Registers<Counts> counts_from(int first_plane) const {
    alignas(64) Element counts[kRays];
    for (int i = 0; i < kRays; ++i) {
      int n = rays_.nsamples[first_ + i];
      // The larger of the two first: clang 14 takes the difference of the smallest n into account where it
      // is not chosen, and finds samples in rays of INT32_MIN.
      const int end = n > first_plane ? n : first_plane;
      const int left = end - first_plane;
      counts[i] = static_cast<Element>(left > kMostPlanes<Element> ? kMostPlanes<Element> : left);
    }
    Registers<Counts> count;
    for (int i = 0; i < kVectors; ++i) count.v[i] = load<Counts>(counts + i * kPerVector);
    return count;
  }

  // Planes first .. end - 1: where a ray has samples of more than k - first of them, the one in plane k.
  template <bool every_ray_has_all, class Selection>
  void add_planes(int first, int end, const Registers<Counts>& counts, Selection selection) {
    Registers<Part> maximum = maximum_;
    for (int k = first; k < end; ++k) {
      const Element* from = samples(k);
      const int least = every_ray_has_all ? 0 : k - first;
      const auto most = static_cast<Element>(selection.selects(k) ? least : kMostPlanes<Element>);
      const Counts limit = Counts(Part{} + most);
      for (int i = 0; i < kVectors; ++i) {
        Part sample = load<Part>(from + i * kPerVector);
        const Counts count = every_ray_has_all ? Counts{} + 1 : counts.v[i];
        if (!every_ray_has_all || !Selection::kAll) sample = count > limit ? sample : maximum.v[i];
        maximum.v[i] = maximum.v[i] > sample ? maximum.v[i] : sample;
      }
    }
    maximum_ = maximum;
  }

  const zox_Rays& rays_;
  int first_;
  Registers<Part> maximum_;
};

// Reduces rays in blocks as far as they fill them; the last block then ends at the last ray and
// may take rays that are done already once more, to the same result. With fewer rays than one
// block, smaller blocks. Returns the first ray not done.
template <class Element, int bytes, class Selection>
int reduce_blocks(const zox_Rays& rays, int first, int n, Selection selection, Element* result) {
  using Block = MaximumBlock<Element, bytes, (bytes < kVectorBytes ? bytes : kVectorBytes)>;
  auto reduce = [&](int at) {
    Block block(rays, at);
    block.reduce(selection);
    block.put(result);
  };
  for (; n - first >= Block::kRays; first += Block::kRays) reduce(first);
  constexpr bool largest = bytes > 64;
  if (!largest && first < n && n >= Block::kRays) {
    reduce(n - Block::kRays);
    first = n;
  }
  return first;
}

// Of every other sample each, so that a comparison need not wait for the one before.
template <class Element, class Selection>
Element maximum_of_ray(const zox_Rays& rays, int r, Selection selection) {
  auto larger_at = [&](int k, Element maximum) {
    Element sample = static_cast<const Element*>(rays.planes[k])[r];
    return selection.selects(k) && sample > maximum ? sample : maximum;
  };
  Element even = kEmpty<Element>, odd = kEmpty<Element>;
  int k = 0;
  for (; k + 1 < rays.nsamples[r]; k += 2) {
    even = larger_at(k, even);
    odd = larger_at(k + 1, odd);
  }
  if (k < rays.nsamples[r]) even = larger_at(k, even);
  return odd > even ? odd : even;
}

// How many rays are processed: a negative odd count means ray 0 alone, as if it were 1.
inline int rays_to_reduce(int nrays) { return nrays >= 0 ? nrays : nrays & 1; }

template <class Element, class Selection>
int find_max(const zox_Rays* rays, Selection selection, Element* result) {
  int n = rays_to_reduce(rays->nrays);
  int first = reduce_blocks<Element, 256>(*rays, 0, n, selection, result);
  first = reduce_blocks<Element, 64>(*rays, first, n, selection, result);
  first = reduce_blocks<Element, 16>(*rays, first, n, selection, result);
  first = reduce_blocks<Element, 8>(*rays, first, n, selection, result);
  first = reduce_blocks<Element, 4>(*rays, first, n, selection, result);
  for (; first < n; ++first) result[first] = maximum_of_ray<Element>(*rays, first, selection);
  return ZOX_STS_NO_ERROR;
}

template <class Element>
int find_max_plain(const zox_Rays* rays, Element* result) {
  return find_max(rays, AllSamples{}, result);
}

template <class Element>
int find_max_bit_mask(const zox_Rays* rays, const uint8_t* mask, Element* result) {
  return find_max(rays, BitMask{mask}, result);
}

template <class Element>
int find_max_byte_mask(const zox_Rays* rays, const uint8_t* mask, int threshold, Element* result) {
  return find_max(rays, ByteMask{mask, static_cast<uint8_t>(threshold)}, result);
}

}  // namespace
}  // namespace zox::ZOX_SET
