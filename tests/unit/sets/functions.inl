// A set's file defines ZOX_SET and includes this; all that follows is local to that file.
#include "functions.h"
#include "sets/set.h"

namespace zox::ZOX_SET {
namespace {

template <Vector (*of)(Vector, Vector)>
void binary(const int* a, const int* b, int* to) {
  store_anywhere(to, of(load_anywhere(a), load_anywhere(b)));
}

template <int bits>
void shifted(const int* v, int* to) {
  store_anywhere(to, shift_right<bits>(load_anywhere(v)));
}

Mask mask_of(const int* a, const int* b) { return equal(load_anywhere(a), load_anywhere(b)); }

void eight_together(const uint16_t* number, void* to) {
  store_16(to, eight_numbers([=](int i) { return number[i]; }));
}

void four_together(const uint32_t* number, void* to) {
  store_16(to, four_numbers([=](int i) { return number[i]; }));
}

void thirty_two(const void* from, void* to) {
  const auto* part = static_cast<const char*>(from);
  store_32(to, load_16(part), load_16(part + 16));
}

void sixty_four(const void* from, void* to) {
  const auto* part = static_cast<const char*>(from);
  store_64(to, load_16(part), load_16(part + 16), load_16(part + 32), load_16(part + 48));
}

template <class Sample, int bytes>
constexpr zox_test::SampleFunctions<Sample> sample_functions() {
  using Part = SampleVector<bytes>;
  return {bytes,
          [](const Sample* maximum, const Sample* sample, Sample* to) {
            larger<Sample>(Part::load(maximum), Part::load(sample)).store(to);
          },
          [](Sample count, const Sample* limit, const Sample* maximum, const Sample* sample, Sample* to) {
            larger_where<Sample>(Part::all(count), Part::load(limit), Part::load(maximum), Part::load(sample))
                .store(to);
          }};
}

constexpr int kNoLanesBefore = kVector < 8 ? 1 : 8;

constexpr zox_test::SetFunctions kFunctions = {
    .lanes = kVector,
    .doubles = kDoubles,
    .copy_aligned = [](const int* from, int* to) { store_vector(to, load_vector(from)); },
    .broadcast = [](int v, int* to) { store_anywhere(to, broadcast(v)); },
    .sum = binary<sum>,
    .product = binary<product>,
    .smaller = binary<smaller>,
    .bits_in = binary<bits_in>,
    .before_1 = binary<lanes_before<1>>,
    .before_8 = binary<lanes_before<kNoLanesBefore>>,
    .equal = [](const int* a, const int* b) { return bits_of(mask_of(a, b)); },
    .both_equal = [](const int* a, const int* b, const int* c,
                     const int* d) { return bits_of(both(mask_of(a, b), mask_of(c, d))); },
    .select_equal =
        [](const int* a, const int* b, const int* yes, const int* no, int* to) {
          store_anywhere(to, select(mask_of(a, b), load_anywhere(yes), load_anywhere(no)));
        },
    .add_where_equal =
        [](const int* a, const int* b, const int* c, const int* d, int* to) {
          store_anywhere(to, add_where(mask_of(a, b), load_anywhere(c), load_anywhere(d)));
        },
    .shift_right_6 = shifted<6>,
    .shift_right_20 = shifted<20>,
    .shift_right_21 = shifted<21>,
    .shift_right = [](const int* v, int bits,
                      int* to) { store_anywhere(to, shift_right(load_anywhere(v), bits)); },
    .lowest_of = [](const int* v) { return lowest_of(load_anywhere(v)); },
    .append = [](unsigned bits, const int* v, int* to) { Packing(bits).append(to, load_anywhere(v)); },
    .put_together_16 = eight_together,
    .put_together_32 = four_together,
    .store_32 = thirty_two,
    .store_64 = sixty_four,
    .consecutive_8 = consecutive_8,
    .bytes = {sample_functions<uint8_t, 4>(), sample_functions<uint8_t, 8>(), sample_functions<uint8_t, 16>(),
              sample_functions<uint8_t, kVectorBytes>()},
    .shorts = {sample_functions<int16_t, 4>(), sample_functions<int16_t, 8>(),
               sample_functions<int16_t, 16>(), sample_functions<int16_t, kVectorBytes>()},
    .nonzero_bytes = nonzero_bytes,
    .packed_bytes = [](const int16_t* sixteen,
                       uint8_t* to) { store_16(to, packed_bytes(load_16(sixteen), load_16(sixteen + 8))); },
    .truncate = truncate,
    .truncate_vector = truncate_vector,
    .truncate_products =
        [](const int16_t* eight, double slope, double offset, int16_t* to) {
          __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(eight));
          _mm_storeu_si128(reinterpret_cast<__m128i*>(to), truncate_products(v, slope, offset));
        },
};

}  // namespace

const zox_test::SetFunctions kSetFunctions = kFunctions;

}  // namespace zox::ZOX_SET
