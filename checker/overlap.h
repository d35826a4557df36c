// Memory that an operation writes must be no other memory that it uses.
#pragma once

#include <cstddef>
#include <vector>

#include "caster.h"
#include "contract_report.h"

namespace zox_check {

struct Range {
  const char* begin;
  const char* end;
  int number;  // of the plane, or of the ray that a start point belongs to; -1 for a whole array
  const char* name;
};

class Ranges {
 public:
  void add(const void* begin, std::size_t bytes, const char* name, int number = -1);

  // The batch as a maximum operation reads it: record, plane pointers and counts.
  void add_batch(const zox_Rays& rays, int nrays, int planes);
  // Start points and step vectors as well.
  void add_paths(const zox_Rays& rays, bool parallel);
  void add_stack(const zox_Volume& volume);

  const std::vector<Range>& all() const { return ranges_; }

 private:
  std::vector<Range> ranges_;
};

// Planes 0 .. planes - 1 of `width` bytes each: overlaps among them and with what is read.
void check_plane_overlaps(Report& report, const zox_Rays& rays, int planes, std::size_t width,
                          const Ranges& read);

}  // namespace zox_check
