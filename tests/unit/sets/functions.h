// What src/sets/ says for one instruction set, as functions of arrays: a file is compiled for each set, and
// shares no inline function with the rest of the program.
#pragma once

#include <stdint.h>

namespace zox_test {

// Masks are where a equals b. Arrays of Lanes hold `lanes` numbers, at any address.
struct SetFunctions {
  using Binary = void (*)(const int* a, const int* b, int* to);
  int lanes, doubles;

  void (*broadcast)(int v, int* to);
  Binary smaller, before_1, before_8;  // before_8: of sets that have 8 lanes
  unsigned (*equal)(const int* a, const int* b);
  unsigned (*both_equal)(const int* a, const int* b, const int* c, const int* d);
  void (*select_equal)(const int* a, const int* b, const int* yes, const int* no, int* to);
  void (*add_where_equal)(const int* a, const int* b, const int* c, const int* d, int* to);
  void (*shift_right)(const int* v, int bits, int* to);
  int (*lowest_of)(const int* v);
  void (*append)(unsigned bits, const int* v, int* to);
  void (*put_together_16)(const uint16_t* eight, void* to);
  void (*put_together_32)(const uint32_t* four, void* to);
  void (*store_32)(const void* from, void* to);
  void (*store_64)(const void* from, void* to);
  bool (*consecutive_8)(const int* number);
  unsigned (*nonzero_bytes)(const uint8_t* sixteen);
  void (*packed_bytes)(const int16_t* sixteen, uint8_t* to);
  int (*truncate)(double v);
  void (*truncate_vector)(const double* from, int* to);
  void (*truncate_products)(const int16_t* eight, double slope, double offset, int16_t* to);
};

}  // namespace zox_test

namespace zox::base {
extern const zox_test::SetFunctions kSetFunctions;
}
namespace zox::avx2 {
extern const zox_test::SetFunctions kSetFunctions;
}
namespace zox::avx512 {
extern const zox_test::SetFunctions kSetFunctions;
}
