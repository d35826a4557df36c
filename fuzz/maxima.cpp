#include <algorithm>
#include <cstring>
#include <vector>

#include "differ.h"
#include "guarded_buffer.h"
#include "operations.h"
#include "reference.h"
#include "targets.h"
#include "voxels.h"

namespace zox_fuzz {
namespace {

using zox_test::GuardedBuffer;
using zox_test::Random;

// A filled batch with a mask that serves as bits and as bytes.
struct Filled {
  Filled(int element_size, Random& random);

  std::vector<GuardedBuffer> planes;
  GuardedBuffer pointers, counts, bits, bytes;
  int threshold;
  int written;  // elements of the output
  zox_Rays rays{};
};

GuardedBuffer filled_buffer(size_t size, Random& random) {
  GuardedBuffer buffer(size, random);
  for (size_t i = 0; i < size; ++i) buffer.data()[i] = static_cast<uint8_t>(random.bits());
  buffer.seal();
  return buffer;
}

Filled::Filled(int element_size, Random& random) {
  const int nrays = random.pick({random.whole(0, 9), random.whole(-3, 70), 64, random.whole(64, 300)});
  const int longest = random.pick({random.whole(0, 9), random.whole(0, 40), random.whole(0, 140)});
  written = nrays > 0 ? nrays : nrays & 1;
  const size_t entries = static_cast<size_t>(std::max(1, nrays));
  counts = GuardedBuffer(entries * sizeof(int32_t), random);
  const bool ragged = random.chance(0.6);
  int most = 0;
  for (size_t r = 0; r < entries; ++r) {
    const int count = ragged ? random.whole(-1, longest) : longest;
    counts.as<int32_t>()[r] = count;
    if (r < static_cast<size_t>(written)) most = std::max(most, count);
  }
  counts.seal();
  const size_t used = static_cast<size_t>(most);
  pointers = GuardedBuffer(used * sizeof(void*), random);
  const zox_test::Contents contents = draw_contents(random);
  for (size_t k = 0; k < used; ++k) {
    planes.emplace_back(entries * static_cast<size_t>(element_size), random);
    fill_voxels(planes[k].data(), planes[k].size(), element_size, contents, random);
    planes[k].seal();
    pointers.as<void*>()[k] = planes[k].data();
  }
  pointers.seal();
  bits = filled_buffer((used + 7) / 8, random);
  bytes = filled_buffer(used, random);
  threshold = random.pick({random.whole(0, 255), -1, 256, random.whole(INT32_MIN, INT32_MAX)});
  rays = {pointers.as<void*>(), nrays, nullptr, nullptr, counts.as<int32_t>()};
}

template <class Element, class Call>
std::vector<Element> outcome(const Filled& in, Call call) {
  std::vector<Element> out(static_cast<size_t>(in.written) + 2, Element{91});
  if (call(out.data()) != ZOX_STS_NO_ERROR) disagree("the status of a maximum");
  return out;
}

// `reference` and `library(set)` each take the output; a null set stands for the exported function.
template <class Element, class Reference, class Library>
void compare(const char* name, const Filled& in, Reference reference, Library library) {
  const auto expected = outcome<Element>(in, reference);
  for (const zox_test::Target& target : zox_test::all_targets()) {
    if (!target.supported()) continue;
    const auto actual = outcome<Element>(in, [&](Element* out) { return library(target.operations, out); });
    if (actual == expected) continue;
    const auto first = std::mismatch(expected.begin(), expected.end(), actual.begin()).first;
    disagree(std::string(name) + ", " + target.name + ", ray " + std::to_string(first - expected.begin()));
  }
}

}  // namespace

#define ZOX_FUZZ_MASK_None
#define ZOX_FUZZ_MASK_Bits in.bits.data(),
#define ZOX_FUZZ_MASK_Bytes in.bytes.data(), in.threshold,
#define ZOX_FUZZ_MAXIMUM(Name, name, Element, Mask)                                                   \
  if (number-- == 0) {                                                                                \
    const Filled in(sizeof(Element), random);                                                         \
    return compare<Element>(                                                                          \
        #Name, in, [&](Element* out) { return reference::name(&in.rays, ZOX_FUZZ_MASK_##Mask out); }, \
        [&](const zox::Operations* set, Element* out) {                                               \
          return (set ? set->name : zox_Volume_##Name)(&in.rays, ZOX_FUZZ_MASK_##Mask out);           \
        });                                                                                           \
  }

void fuzz_maximum(int number, Random random) { ZOX_MAXIMA(ZOX_FUZZ_MAXIMUM) }

}  // namespace zox_fuzz
