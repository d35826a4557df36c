#include "stack_samples.h"

#include <algorithm>

#include "records.h"

namespace zox_check {

StackSampleCheck::StackSampleCheck(Report& report, const Caster& caster, const zox_Volume& volume)
    : report_(report), caster_(caster), volume_(volume), bounds_(registered_bounds(volume.slices)) {
  // Nearest sampling keeps columns and rows in 16 bits.
  if (caster.trilinear()) return;
  bounds_.columns = std::min(bounds_.columns, 65536);
  bounds_.rows = std::min(bounds_.rows, 65536);
}

bool StackSampleCheck::fixed(Where where, const char* name, double position, double scale) const {
  if (fits_fixed(position)) return true;
  const double end = 2147483648.0 / scale;
  report_.say(where, "its fixed-point %s is %.9g, outside -%g to %g", name, position / scale, end, end);
  return false;
}

void StackSampleCheck::voxel(Where where, double column, double row, double slice_number) const {
  const int reach = caster_.reach();
  if (column < 0 || column + reach >= bounds_.columns) {
    report_.say(where, "it reads columns %g to %g, but a row has columns 0 to %d", column, column + reach,
                bounds_.columns - 1);
    return;
  }
  if (row < 0 || row + reach >= bounds_.rows) {
    report_.say(where, "it reads rows %g to %g, but a slice has rows 0 to %d", row, row + reach,
                bounds_.rows - 1);
    return;
  }
  const int x = static_cast<int>(column);
  const int y = static_cast<int>(row);
  for (int used = y; used <= y + reach; ++used) row_offset(where, x + reach, used);
  slice(where, slice_number, y);
}

// The bytes' sum of row offset and column is formed in 32 bits; 16-bit voxels are found in 64.
void StackSampleCheck::row_offset(Where where, int column, int row) const {
  if (caster_.voxel == Voxel::k16S) return;
  const int64_t sum = int64_t{volume_.rowoffs[row]} + (caster_.voxel == Voxel::kBit ? column >> 3 : column);
  if (sum >= INT32_MIN && sum <= INT32_MAX) return;
  report_.say(where, "rowoffs[%d] is %d, so that column %d lies beyond 32 bits", row, volume_.rowoffs[row],
              column);
}

void StackSampleCheck::slice(Where where, double number, int row) const {
  if (number < 0 || number >= volume_.nslices) {
    report_.say(where, "it falls into slice %g, but the stack has slices 0 to %d", number,
                volume_.nslices - 1);
    return;
  }
  const int s = static_cast<int>(number);
  for (int used = s; used <= s + caster_.reach(); ++used) {
    if (!volume_.slices[used]) {
      report_.say(where, "it reads slices[%d], which is null", used);
    } else if (!aligned(static_cast<const char*>(volume_.slices[used]) + volume_.rowoffs[row],
                        caster_.element_size())) {
      report_.say(where, "row %d of slice %d is not aligned to 16-bit voxels", row, used);
    }
  }
}

}  // namespace zox_check
