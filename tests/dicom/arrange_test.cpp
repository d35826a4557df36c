// How slices become a volume, from frames that no file holds.
#include <dicom/arrange.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace zox::input::dicom {
namespace {

Frame slice(double z, int instance = 0) {
  Frame frame;
  frame.path = "slice" + std::to_string(instance);
  frame.series_uid = "1.2";
  frame.columns = frame.rows = 4;
  frame.spacing = {0.5, 0.75};
  frame.along_row = {1, 0, 0};
  frame.along_column = {0, 1, 0};
  frame.position = {10, 20, z};
  frame.instance_number = instance;
  return frame;
}

Series stack(const std::vector<double>& heights) {
  Series series;
  for (const double z : heights) series.frames.push_back(slice(z, static_cast<int>(series.frames.size())));
  return series;
}

std::vector<double> heights_of(const Arrangement& arrangement) {
  std::vector<double> heights;
  for (const Frame& frame : arrangement.frames) heights.push_back(frame.position[2]);
  return heights;
}

TEST(DicomArrangement, SlicesAreOrderedByPosition) {
  const Arrangement result = arrange(stack({4, -2, 2, 0}));
  EXPECT_EQ(heights_of(result), (std::vector<double>{-2, 0, 2, 4}));
  EXPECT_EQ(result.origin, (Vector{10, 20, -2}));
  EXPECT_EQ(result.axes[0], (Vector{0.5, 0, 0}));
  EXPECT_EQ(result.axes[1], (Vector{0, 0.75, 0}));
  EXPECT_EQ(result.axes[2], (Vector{0, 0, 2}));
  EXPECT_TRUE(result.positions.empty());
  EXPECT_TRUE(result.notes.empty());
}

// The normal of rows that lead to the right and columns to the back points to the feet.
TEST(DicomArrangement, TheOrderFollowsTheNormal) {
  Series series = stack({0, 1, 2});
  for (Frame& frame : series.frames) frame.along_row = {-1, 0, 0};
  const Arrangement result = arrange(series);
  EXPECT_EQ(heights_of(result), (std::vector<double>{2, 1, 0}));
  EXPECT_EQ(result.axes[2], (Vector{0, 0, -1}));
}

TEST(DicomArrangement, RoundedPositionsAreEven) {
  EXPECT_TRUE(arrange(stack({0, 0.667, 1.333, 2, 2.667})).positions.empty());
}

TEST(DicomArrangement, GapsStayGaps) {
  const Arrangement result = arrange(stack({0, 1.5, 3, 6, 7.5}));
  EXPECT_EQ(result.positions, (std::vector<double>{0, 1.5, 3, 6, 7.5}));
  EXPECT_EQ(result.axes[2], (Vector{0, 0, 1}));
  ASSERT_EQ(result.notes.size(), 1U);
  EXPECT_NE(result.notes[0].find("1 slice seems to be missing"), std::string::npos);
}

TEST(DicomArrangement, OfOnePlaceTheFirstInTheOrderOfAcquisitionIsTaken) {
  Series series = stack({0, 1, 1, 2});
  std::swap(series.frames[1], series.frames[2]);
  const Arrangement result = arrange(series);
  ASSERT_EQ(result.frames.size(), 3U);
  EXPECT_EQ(result.frames[1].instance_number, 1);
  EXPECT_EQ(result.notes.size(), 1U);
}

// Slanted by 3 mm sideways on 4 mm of height: a step along the stack is 5 mm long a slice.
TEST(DicomArrangement, ATiltShearsTheStack) {
  Series series = stack({0, 4, 8});
  for (Frame& frame : series.frames) frame.position[1] += 0.75 * frame.position[2];
  const Arrangement even = arrange(series);
  EXPECT_NEAR(even.axes[2][1], 3, 1e-12);
  EXPECT_NEAR(even.axes[2][2], 4, 1e-12);
  series.frames.push_back(slice(16));
  series.frames.back().position[1] += 12;
  const Arrangement uneven = arrange(series);
  ASSERT_EQ(uneven.positions.size(), 4U);
  EXPECT_NEAR(uneven.positions[1], 5, 1e-12);
  EXPECT_NEAR(uneven.positions[3], 20, 1e-12);
}

TEST(DicomArrangement, ASliceBesideTheOthersIsRefused) {
  Series series = stack({0, 1, 2, 3});
  series.frames[2].position[0] += 1;
  EXPECT_THROW(arrange(series), std::runtime_error);
}

TEST(DicomSeries, WhatDiffersIsASeriesOfItsOwn) {
  std::vector<Frame> frames = {slice(0, 1), slice(1, 2), slice(2, 3)};
  frames[1].columns = 5;
  frames[2].series_uid = "1.3";
  const std::vector<Series> all = split_into_series(frames);
  EXPECT_EQ(all.size(), 3U);
}

TEST(DicomSeries, ALineTellsWhatItIs) {
  Series series = stack({0, 1.5, 3});
  series.frames[0].modality = "CT";
  series.frames[0].description = "Head";
  EXPECT_EQ(describe(series, 2), "2: CT, 3 slices of 4 x 4, 1.5 mm apart, Head");
}

}  // namespace
}  // namespace zox::input::dicom
