#include "sample_planes.h"

#include <algorithm>
#include <cstring>
#include <sstream>

namespace zox_test {

Planes::Planes(int count, int rays, int element_size, Random& random)
    : table_(static_cast<size_t>(count) * sizeof(void*), random), element_size_(element_size) {
  const size_t bytes = static_cast<size_t>(rays) * static_cast<size_t>(element_size);
  planes_.reserve(static_cast<size_t>(count));
  for (int k = 0; k < count; ++k) {
    planes_.emplace_back(bytes, random);
    table_.as<void*>()[k] = planes_.back().data();
  }
  table_.seal();
}

void Planes::fill(uint8_t pattern) {
  for (const GuardedBuffer& plane : planes_) {
    std::memset(plane.data(), pattern, plane.size());
    std::memset(plane.margin(), pattern, plane.margin_size());
  }
}

std::vector<uint8_t> Planes::contents() const {
  std::vector<uint8_t> all;
  for (const GuardedBuffer& plane : planes_) {
    all.insert(all.end(), plane.data(), plane.data() + plane.size());
    all.insert(all.end(), plane.margin(), plane.margin() + plane.margin_size());
  }
  return all;
}

std::string Planes::first_difference(const std::vector<uint8_t>& expected,
                                     const std::vector<uint8_t>& actual) const {
  const auto at = static_cast<size_t>(std::mismatch(expected.begin(), expected.end(), actual.begin()).first -
                                      expected.begin());
  if (at == expected.size()) return "no difference";
  const size_t size = planes_[0].size(), with_margin = size + planes_[0].margin_size();
  const size_t k = at / with_margin, byte = at % with_margin;
  std::ostringstream text;
  if (byte < size) text << "ray " << byte / static_cast<size_t>(element_size_);
  if (byte >= size) text << "outside the plane, at byte " << byte;
  text << " sample " << k << ": expected byte " << int{expected[at]} << ", got " << int{actual[at]};
  return text.str();
}

}  // namespace zox_test
