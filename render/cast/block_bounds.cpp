#include "cast/block_bounds.h"

#include <emmintrin.h>

#include <algorithm>

namespace render {
namespace {

// Chords are rounded, by far less than this; positions are not.
constexpr double kSpareUnits = 64;

}  // namespace

void Bundle::around(const LineLanes& lines, size_t begin, size_t end, double first, double last) {
  first_ = first;
  last_ = std::max(last, first + 1);
  for (size_t a = 0; a < 3; ++a) {
    const auto between = [&](double number, double& low, double& high) {
      const __m128d n = _mm_set1_pd(number);
      __m128d least = _mm_set1_pd(1e300), most = _mm_set1_pd(-1e300);
      for (size_t i = begin; i < end; i += 2) {
        const __m128d way = _mm_mul_pd(n, _mm_load_pd(&lines.step[a][i]));
        const __m128d position = _mm_add_pd(_mm_load_pd(&lines.middle[a][i]), way);
        least = _mm_min_pd(least, position);
        most = _mm_max_pd(most, position);
      }
      low = _mm_cvtsd_f64(_mm_min_pd(least, _mm_unpackhi_pd(least, least)));
      high = _mm_cvtsd_f64(_mm_max_pd(most, _mm_unpackhi_pd(most, most)));
    };
    between(first_, low_at_first_[a], high_at_first_[a]);
    between(last_, low_at_last_[a], high_at_last_[a]);
  }
}

void Bundle::add(const Bundle& other) {
  for (size_t a = 0; a < 3; ++a) {
    low_at_first_[a] = std::min(low_at_first_[a], other.low_at_first_[a]);
    low_at_last_[a] = std::min(low_at_last_[a], other.low_at_last_[a]);
    high_at_first_[a] = std::max(high_at_first_[a], other.high_at_first_[a]);
    high_at_last_[a] = std::max(high_at_last_[a], other.high_at_last_[a]);
  }
}

void Bundle::finish(const Volume& volume, bool nearest) {
  const double factor = 1 / (kGrid * (last_ - first_));
  for (size_t a = 0; a < 3; ++a) {
    const double low_slope = (low_at_last_[a] - low_at_first_[a]) * factor;
    const double high_slope = (high_at_last_[a] - high_at_first_[a]) * factor;
    const double shift = (nearest ? 0.5 : 0) - volume.first[a];
    low_.begin[a] = (low_at_first_[a] - kSpareUnits) * (1 / kGrid) + shift - first_ * low_slope;
    high_.begin[a] = (high_at_first_[a] + kSpareUnits) * (1 / kGrid) + shift - first_ * high_slope;
    low_.slope[a] = low_slope;
    high_.slope[a] = high_slope;
    most_[a] = volume.size[a] - 1;
  }
}

void Bundle::cells(double first, double last, Size3& low, Size3& high) const {
  const __m128d from = _mm_set1_pd(first), to = _mm_set1_pd(last), zero = _mm_setzero_pd();
  alignas(16) std::array<int32_t, 4> lowest, highest;
  for (size_t a = 0; a < 4; a += 2) {
    const __m128d most = _mm_load_pd(&most_[a]);
    const auto cell = [&](const Chords& chords, auto outer) {
      const __m128d slope = _mm_load_pd(&chords.slope[a]);
      const __m128d way = outer(_mm_mul_pd(from, slope), _mm_mul_pd(to, slope));
      const __m128d position = _mm_add_pd(_mm_load_pd(&chords.begin[a]), way);
      return _mm_cvttpd_epi32(_mm_min_pd(_mm_max_pd(position, zero), most));
    };
    const auto store = [&](std::array<int32_t, 4>& cells, __m128i two) {
      _mm_storel_epi64(reinterpret_cast<__m128i*>(&cells[a]), two);
    };
    store(lowest, cell(low_, [](__m128d p, __m128d q) { return _mm_min_pd(p, q); }));
    store(highest, cell(high_, [](__m128d p, __m128d q) { return _mm_max_pd(p, q); }));
  }
  std::copy_n(lowest.begin(), 3, low.begin());
  std::copy_n(highest.begin(), 3, high.begin());
}

}  // namespace render
