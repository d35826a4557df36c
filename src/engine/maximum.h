// The largest selected sample of every ray. Planes run outermost, with a block of rays held in
// vectors: each plane is read once, in stretches.
#pragma once

#include "core/lanes.h"
#include "zox_volume.h"

namespace zox::ZOX_SET {
namespace {

// Which sample indices take part. Asked in ascending order.
struct AllSamples {
  bool selects(int) const { return true; }
};

struct BitMask {  // most significant bit first
  const uint8_t* mask;
  bool selects(int k) const { return (mask[k >> 3] >> (7 - (k & 7))) & 1; }
};

struct ByteMask {  // strictly above the threshold, of which only the low byte counts
  const uint8_t* mask;
  uint8_t threshold;
  bool selects(int k) const { return mask[k] > threshold; }
};

template <class Element>
constexpr Element kEmpty = sizeof(Element) == 1 ? 0 : -32768;

template <class Element>
Element larger(Element a, Element b) {
  return a > b ? a : b;
}

// A block of `width` rays: its running maxima stay in registers while the planes pass.
template <class Element, int width>
struct MaximumBlock {
  Element maxima[width];

  MaximumBlock() {
    for (int i = 0; i < width; ++i) maxima[i] = kEmpty<Element>;
  }

  void add_all(const Element* samples) {
    for (int i = 0; i < width; ++i) maxima[i] = larger(maxima[i], samples[i]);
  }

  // Only where the ray still has samples: `on` is all ones there, else 0.
  void add_where(const Element* samples, const Element* on) {
    for (int i = 0; i < width; ++i) {
      Element sample = static_cast<Element>((samples[i] & on[i]) | (kEmpty<Element> & ~on[i]));
      maxima[i] = larger(maxima[i], sample);
    }
  }
};

// The next sample index, after k, at which a ray of the block ends; rays of more than k samples
// are on until then. Returns k itself when none is left.
template <class Element, int width>
int next_event(const int32_t* nsamples, int k, Element* on) {
  int next = INT32_MAX;
  bool any = false;
  for (int i = 0; i < width; ++i) {
    bool more = nsamples[i] > k;
    on[i] = more ? static_cast<Element>(-1) : 0;
    any |= more;
    int end = more ? nsamples[i] : INT32_MAX;
    next = end < next ? end : next;
  }
  return any ? next : k;
}

template <class Element, int width, class Selection>
void find_block(const zox_Rays& rays, int first, Selection selection, Element* result) {
  MaximumBlock<Element, width> block;
  alignas(64) Element on[width];
  const int32_t* nsamples = rays.nsamples + first;
  int shortest = nsamples[0];
  for (int i = 1; i < width; ++i) shortest = nsamples[i] < shortest ? nsamples[i] : shortest;
  int k = 0;
  for (; k < shortest; ++k) {
    if (selection.selects(k)) block.add_all(static_cast<const Element*>(rays.planes[k]) + first);
  }
  for (int end; (end = next_event<Element, width>(nsamples, k, on)) > k;) {
    for (; k < end; ++k) {
      if (selection.selects(k)) block.add_where(static_cast<const Element*>(rays.planes[k]) + first, on);
    }
  }
  for (int i = 0; i < width; ++i) result[first + i] = block.maxima[i];
}

// How many rays are processed: a negative odd count means ray 0 alone, as if it were 1.
inline int rays_to_reduce(int nrays) { return nrays >= 0 ? nrays : nrays & 1; }

template <class Element, class Selection>
int find_max(const zox_Rays* rays, Selection selection, Element* result) {
  int n = rays_to_reduce(rays->nrays), first = 0;
  for (; n - first >= 64; first += 64) find_block<Element, 64>(*rays, first, selection, result);
  for (; n - first >= 16; first += 16) find_block<Element, 16>(*rays, first, selection, result);
  for (; n - first >= 4; first += 4) find_block<Element, 4>(*rays, first, selection, result);
  for (; n - first >= 1; first += 1) find_block<Element, 1>(*rays, first, selection, result);
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
