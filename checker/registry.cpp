#include "registry.h"

#include <mutex>
#include <shared_mutex>
#include <unordered_map>

#include "zox_volume_check.h"

namespace {

std::shared_mutex mutex;

// Never destroyed: other threads may still cast rays while the process ends.
std::unordered_map<const void*, zox_check::Bounds>& table() {
  static auto& bounds = *new std::unordered_map<const void*, zox_check::Bounds>;
  return bounds;
}

void store(const void* volume_pointer, const zox_check::Bounds& bounds) {
  const std::unique_lock lock(mutex);
  table()[volume_pointer] = bounds;
}

}  // namespace

namespace zox_check {

Bounds registered_bounds(const void* volume_pointer) {
  const std::shared_lock lock(mutex);
  const auto found = table().find(volume_pointer);
  return found == table().end() ? Bounds{} : found->second;
}

}  // namespace zox_check

#pragma GCC visibility push(default)
extern "C" {

void zox_check_stack(const void* const* slices, int columns, int rows) {
  zox_check::Bounds bounds;
  bounds.columns = columns;
  bounds.rows = rows;
  store(slices, bounds);
}

void zox_check_blocked(const void* data, int depth) {
  zox_check::Bounds bounds;
  bounds.depth = depth;
  store(data, bounds);
}

void zox_check_forget(const void* volume_pointer) {
  const std::unique_lock lock(mutex);
  table().erase(volume_pointer);
}

}  // extern "C"
#pragma GCC visibility pop
