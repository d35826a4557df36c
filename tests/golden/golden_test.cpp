// Frozen results: one checksum an operation over fixed scenes, in checksums.txt, for every instruction
// set, the exported functions and the reference alike. The file is the reference's: --record prints it.
#include <gtest/gtest.h>

#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "golden_scene.h"
#include "operation_list.h"
#include "reference.h"

namespace golden {
namespace {

using zox_test::Operations;

struct Operation {
  std::string name;
  std::function<uint64_t(const Operations&)> checksum;
};

uint64_t checksum_of(const zox_test::Caster& caster, const Operations& target) {
  Checksum sum;
  for (int number = 0; number < kScenes; ++number) {
    Scene scene(caster, number);
    const uint64_t part = scene.checksum(target.*caster.member);
    sum.add(&part, sizeof part);
  }
  return sum.value();
}

// Fills planes of a caster of that element, and a mask; reduce(rays, mask, threshold, maxima).
template <typename Element, typename Reduce>
uint64_t checksum_of_maxima(Reduce reduce) {
  Checksum sum;
  for (const zox_test::Caster& caster : zox_test::kCasters) {
    if (caster.element_size() != sizeof(Element) || !caster.blocked()) continue;
    Scene scene(caster, 3);
    Stream stream(99);
    const zox_Rays rays = scene.filled_rays(stream);
    std::vector<uint8_t> mask(600);
    stream.fill(mask.data(), mask.size());
    std::vector<Element> maxima(static_cast<size_t>(rays.nrays));
    const int status = reduce(&rays, mask.data(), 100, maxima.data());
    sum.add(&status, sizeof status);
    sum.add(maxima.data(), maxima.size() * sizeof(Element));
    break;
  }
  return sum.value();
}

// Every value of 16 bits through a few windows.
template <typename Map>
uint64_t checksum_of_window_level(Map map) {
  Checksum sum;
  std::vector<int16_t> values(65536);
  for (size_t i = 0; i < values.size(); ++i) values[i] = static_cast<int16_t>(i);
  std::vector<uint8_t> bytes(values.size());
  const int windows[][4] = {{40, 400, 0, 255}, {-600, 1501, 3, 250}, {0, 2, 10, 20}, {0, 65534, 0, 255}};
  for (const auto& w : windows) {
    const int status = map(values.data(), bytes.data(), 65536, w[0], w[1], w[2], w[3]);
    sum.add(&status, sizeof status);
    sum.add(bytes.data(), bytes.size());
  }
  return sum.value();
}

#define GOLDEN_MAXIMUM(Name, name, Element, Mask)                                                            \
  operations.push_back(                                                                                      \
      {"zox_Volume_" #Name, [](const Operations& target) {                                                   \
         return checksum_of_maxima<Element>(                                                                 \
             [&](const zox_Rays* rays, [[maybe_unused]] const uint8_t* mask, [[maybe_unused]] int threshold, \
                 Element* maxima) { return target.name(rays, ZOX_MASK_ARGUMENTS_##Mask maxima); });          \
       }});
#define GOLDEN_WINDOW_LEVEL(Name, name, Source, Target_) \
  operations.push_back({"zox_Volume_" #Name,             \
                        [](const Operations& target) { return checksum_of_window_level(target.name); }});

std::vector<Operation> all_operations() {
  std::vector<Operation> operations;
  for (const zox_test::Caster& caster : zox_test::kCasters) {
    operations.push_back({std::string("zox_Volume_RayCast_") + caster.name,
                          [&caster](const Operations& target) { return checksum_of(caster, target); }});
  }
  ZOX_MAXIMA(GOLDEN_MAXIMUM)
  ZOX_WINDOW_LEVELS(GOLDEN_WINDOW_LEVEL)
  return operations;
}

std::map<std::string, uint64_t> recorded() {
  std::map<std::string, uint64_t> checksums;
  std::ifstream file(GOLDEN_FILE);
  std::string name, checksum;
  while (file >> name >> checksum) checksums[name] = std::stoull(checksum, nullptr, 16);
  return checksums;
}

TEST(Golden, EveryOperationIsRecorded) { EXPECT_EQ(recorded().size(), all_operations().size()); }

TEST(Golden, TheReferenceGivesTheRecordedResults) {
  for (const Operation& operation : all_operations()) {
    EXPECT_EQ(operation.checksum(zox_test::kReference), recorded()[operation.name]) << operation.name;
  }
}

TEST(Golden, EverySetGivesTheRecordedResults) {
  for (const zox_test::Operations* target : zox_test::all_targets()) {
    if (!target->supported()) continue;
    for (const Operation& operation : all_operations()) {
      EXPECT_EQ(operation.checksum(*target), recorded()[operation.name])
          << operation.name << ", " << target->name;
    }
  }
}

void record() {
  for (const Operation& operation : all_operations()) {
    std::printf("%s %016" PRIx64 "\n", operation.name.c_str(), operation.checksum(zox_test::kReference));
  }
}

}  // namespace
}  // namespace golden

int main(int argc, char** argv) {
  if (argc == 2 && std::strcmp(argv[1], "--record") == 0) {
    golden::record();
    return 0;
  }
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
