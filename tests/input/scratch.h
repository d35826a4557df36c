// A folder for the files of one test, and the text of headers.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "files.h"
#include "scan.h"

class ScratchTest : public testing::Test {
 protected:
  ScratchTest();
  ~ScratchTest() override;
  std::string path(const std::string& name) const { return (folder_ / name).string(); }
  // The path of a file of these bytes.
  std::string write(const std::string& name, const std::string& bytes) const;

 private:
  std::filesystem::path folder_;
};

// Value of a voxel as the scan's array has it.
double value_of(const zox::input::Scan& scan, int x, int y, int z);

// Expects every voxel of the volume in the scan.
void expect_values(const zox::input::Scan& scan, const TestVolume& volume);

// `more`: further lines of the header, then the voxels.
std::string meta_image(const TestVolume& volume, const std::string& type, const std::string& more);

// A zlib stream.
std::string deflated(const std::string& bytes);
