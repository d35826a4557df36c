// The vectors of the set that a file is compiled for, each set's under the same names:
//   kVector lanes of 32 bits, Vector and Mask, with what loops over lanes cannot say: picking some lanes
//   out of a vector and packing them;
//   SampleVector<kVectorBytes>, samples as they lie in a plane;
//   conversions of doubles.
#pragma once

#if defined(__AVX512F__)
#include "sets/avx512.h"
#elif defined(__AVX2__)
#include "sets/avx2.h"
#else
#include "sets/base.h"
#endif

namespace zox::ZOX_SET {
namespace {

constexpr int kVectorBytes = 4 * kVector;

// The larger of the running maximum and the sample, lane by lane.
template <class Element, class W>
W larger(W maximum, W sample) {
  return {larger_of(Element{}, maximum.v, sample.v)};
}

// The same where limit < count, as signed numbers of the element's size; elsewhere the maximum.
template <class Element, class W>
W larger_where(W count, W limit, W maximum, W sample) {
  auto on = above(Element{}, count.v, limit.v);
  return {larger_of(Element{}, maximum.v, where(on, sample.v, maximum.v))};
}

}  // namespace
}  // namespace zox::ZOX_SET
