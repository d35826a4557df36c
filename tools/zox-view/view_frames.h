// The answers to a view's requests: pictures, and what a pixel shows.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "shown_volume.h"
#include "view_request.h"

namespace zox::view {

// One message to the page. Binary ones are the length of the JSON in 4 bytes (lowest first), the JSON
// and a picture.
struct Answer {
  bool binary = false;
  std::string data;
};

Answer cancelled(uint32_t number);
Answer complaint(uint32_t number, const std::string& sentence);

// The pictures of one view. One call at a time; `cancel` set by anybody ends it soon.
class Frames {
 public:
  Frames(std::shared_ptr<Volume> volume, zox_render_pool* pool) : volume_(std::move(volume)), pool_(pool) {}

  Answer draw(const FrameRequest& request, std::atomic<bool>& cancel);
  // What the picture that was drawn last shows in a pixel.
  Answer pick(const PickRequest& request, std::atomic<bool>& cancel);

 private:
  int render(const FrameRequest& request, std::atomic<bool>& cancel, const zox_render_picture& picture,
             zox_render_stats& stats);
  int find_depths(std::atomic<bool>& cancel);
  std::string found(const PickRequest& request) const;

  std::shared_ptr<Volume> volume_;
  zox_render_pool* pool_;
  FrameRequest last_;
  bool drawn_ = false;
  // Of the last picture, made when first asked for.
  std::vector<int16_t> samples_;
  std::vector<int32_t> depths_;
};

}  // namespace zox::view
