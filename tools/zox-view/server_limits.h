// What one server takes on at most.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace zox::view {

// Open connections that have not yet asked for anything with the token. One more ends the oldest.
inline constexpr size_t kMaxStrangers = 400;
// From the first byte to the last, of a request and of an answer.
inline constexpr std::chrono::seconds kRequestTime{10};
inline constexpr std::chrono::seconds kAnswerTime{60};
inline constexpr uint32_t kMaxRequestBytes = 8192;

// Views at a time; each is one WebSocket with at most one picture in the making.
inline constexpr size_t kMaxViews = 64;
inline constexpr size_t kMaxMessageBytes = 4096;
// A view whose peer does not fetch its answers is not read from beyond this many.
inline constexpr size_t kMaxUnsent = 8;
// The least time from message to message of a view, beyond which the rest waits in the network.
inline constexpr std::chrono::milliseconds kMessageTime{1};

inline constexpr int kMaxSide = 4096;        // pixels
inline constexpr int kBins = 256;            // of the histogram
inline constexpr size_t kMaxEntries = 2000;  // of one folder that are listed
inline constexpr int kRenderJobs = 4;        // pictures in the making, of all views

}  // namespace zox::view
