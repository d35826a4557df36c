// What every sample of a slice stack must satisfy, whichever routine takes it.
#pragma once

#include "caster.h"
#include "contract_report.h"
#include "registry.h"

namespace zox_check {

class StackSampleCheck {
 public:
  StackSampleCheck(Report& report, const Caster& caster, const zox_Volume& volume);

  // Voxel column, row and slice of one sample; trilinear sampling reads the next of each as well.
  void voxel(Where where, double column, double row, double slice) const;

  // A position along one axis in fixed-point units of 1 / scale. False: outside the 32-bit range.
  bool fixed(Where where, const char* name, double position, double scale) const;

 private:
  void row_offset(Where where, int column, int row) const;
  void slice(Where where, double number, int row) const;

  Report& report_;
  const Caster& caster_;
  const zox_Volume& volume_;
  Bounds bounds_;
};

// Takes the parallel nearest operation the path without slice lists?
bool takes_one_region_path(const Caster& caster, const zox_Volume& volume, const zox_Rays& rays);
void check_one_region(Report& report, const Caster& caster, const zox_Volume& volume, const zox_Rays& rays);

}  // namespace zox_check
