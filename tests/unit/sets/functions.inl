// A set's file defines ZOX_SET and includes this; all that follows is local to that file.
#include "functions.h"
#include "sets/set.h"

namespace zox::ZOX_SET {
namespace {

template <Vector (*of)(Vector, Vector)>
void binary(const int* a, const int* b, int* to) {
  store(to, of(load<Vector>(a), load<Vector>(b)));
}

Mask mask_of(const int* a, const int* b) { return equal(load<Vector>(a), load<Vector>(b)); }

void eight_together(const uint16_t* number, void* to) {
  store(to, eight_numbers([=](int i) { return number[i]; }));
}

void four_together(const uint32_t* number, void* to) {
  store(to, four_numbers([=](int i) { return number[i]; }));
}

void thirty_two(const void* from, void* to) {
  const auto* part = static_cast<const char*>(from);
  store_32(to, load<Sixteen>(part), load<Sixteen>(part + 16));
}

void sixty_four(const void* from, void* to) {
  const auto* part = static_cast<const char*>(from);
  store_64(to, load<Sixteen>(part), load<Sixteen>(part + 16), load<Sixteen>(part + 32),
           load<Sixteen>(part + 48));
}

constexpr int kNoLanesBefore = kVector < 8 ? 1 : 8;

constexpr zox_test::SetFunctions kFunctions = {
    .lanes = kVector,
    .doubles = kDoubles,
    .broadcast = [](int v, int* to) { store(to, broadcast(v)); },
    .smaller = binary<smaller>,
    .before_1 = binary<lanes_before<1>>,
    .before_8 = binary<lanes_before<kNoLanesBefore>>,
    .equal = [](const int* a, const int* b) { return bits_of(mask_of(a, b)); },
    .both_equal = [](const int* a, const int* b, const int* c,
                     const int* d) { return bits_of(mask_of(a, b) & mask_of(c, d)); },
    .select_equal = [](const int* a, const int* b, const int* yes, const int* no,
                       int* to) { store(to, select(mask_of(a, b), load<Vector>(yes), load<Vector>(no))); },
    .add_where_equal = [](const int* a, const int* b, const int* c, const int* d,
                          int* to) { store(to, add_where(mask_of(a, b), load<Vector>(c), load<Vector>(d))); },
    .shift_right = [](const int* v, int bits, int* to) { store(to, shift_right(load<Vector>(v), bits)); },
    .lowest_of = [](const int* v) { return lowest_of(load<Vector>(v)); },
    .append = [](unsigned bits, const int* v, int* to) { Packing(bits).append(to, load<Vector>(v)); },
    .put_together_16 = eight_together,
    .put_together_32 = four_together,
    .store_32 = thirty_two,
    .store_64 = sixty_four,
    .consecutive_8 = consecutive_8,
    .nonzero_bytes = nonzero_bytes,
    .packed_bytes =
        [](const int16_t* sixteen, uint8_t* to) {
          store(to, packed_bytes(load<Sixteen>(sixteen), load<Sixteen>(sixteen + 8)));
        },
    .truncate = truncate,
    .truncate_vector = [](const double* from, int* to) { store_truncated(to, load<Doubles>(from)); },
    .truncate_products =
        [](const int16_t* eight, double slope, double offset, int16_t* to) {
          store(to, truncate_products(load<Sixteen>(eight), slope, offset));
        },
};

}  // namespace

const zox_test::SetFunctions kSetFunctions = kFunctions;

}  // namespace zox::ZOX_SET
