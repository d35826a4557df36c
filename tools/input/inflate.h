// Unpacking of gzip and zlib streams.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace zox::input {

using Bytes = std::span<const std::byte>;

// The first `bytes` bytes (fewer where there are fewer) of what is packed, not caring for the rest.
std::string inflate_head(Bytes packed, size_t bytes);

// Leaves out the first `skip` unpacked bytes and puts the following ones into `out`, whose size must be
// had in full; whatever comes then is unpacked too, for the checksum at its end. `total` is how many
// bytes there ought to be in all, which only speed depends on. In front of `out` there must be room for
// `skip` bytes, unless more than kSkipInPlace are to be left out. False when the stream is damaged or
// ends too early.
inline constexpr uint64_t kSkipInPlace = 1 << 20;
bool inflate_into(Bytes packed, uint64_t skip, uint64_t total, std::span<std::byte> out);

}  // namespace zox::input
