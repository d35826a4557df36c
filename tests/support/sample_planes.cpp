#include "sample_planes.h"

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
  size_t at = 0;
  while (at < expected.size() && expected[at] == actual[at]) ++at;
  if (at == expected.size()) return "no difference";
  std::ostringstream text;
  size_t begin = 0;
  for (int k = 0; k < count(); ++k) {
    const size_t size = planes_[static_cast<size_t>(k)].size();
    const size_t end = begin + size + planes_[static_cast<size_t>(k)].margin_size();
    if (at < end) {
      text << (at - begin < size ? "ray " : "outside the plane, at byte ")
           << (at - begin < size ? (at - begin) / static_cast<size_t>(element_size_) : at - begin)
           << " sample " << k << ": expected byte " << int{expected[at]} << ", got " << int{actual[at]};
      break;
    }
    begin = end;
  }
  return text.str();
}

}  // namespace zox_test
