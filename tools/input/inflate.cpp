#include "inflate.h"

#include <libdeflate.h>
#include <zlib.h>

#include <algorithm>
#include <memory>
#include <new>
#include <vector>

namespace zox::input {
namespace {

bool is_gzip(Bytes packed) {
  return packed.size() >= 2 && packed[0] == std::byte{0x1F} && packed[1] == std::byte{0x8B};
}

enum class Whole { kDone, kDamaged, kLonger };

// All members of the stream at once; kLonger when they hold more than `out` does.
Whole inflate_whole(Bytes packed, std::span<std::byte> out) {
  const std::unique_ptr<libdeflate_decompressor, decltype(&libdeflate_free_decompressor)> unpacker(
      libdeflate_alloc_decompressor(), &libdeflate_free_decompressor);
  if (!unpacker) throw std::bad_alloc();
  do {
    size_t taken = 0;
    size_t made = 0;
    const auto unpack = is_gzip(packed) ? libdeflate_gzip_decompress_ex : libdeflate_zlib_decompress_ex;
    switch (unpack(unpacker.get(), packed.data(), packed.size(), out.data(), out.size(), &taken, &made)) {
      case LIBDEFLATE_SUCCESS:
        break;
      case LIBDEFLATE_INSUFFICIENT_SPACE:
        return Whole::kLonger;
      default:
        return Whole::kDamaged;
    }
    packed = packed.subspan(taken);
    out = out.subspan(made);
  } while (is_gzip(packed));
  return out.empty() ? Whole::kDone : Whole::kDamaged;
}

// A stream piece by piece, member after member.
class Stream {
 public:
  explicit Stream(Bytes packed) : packed_(packed) {
    if (inflateInit2(&stream_, 15 + 32) != Z_OK) throw std::bad_alloc();
  }
  ~Stream() { inflateEnd(&stream_); }
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;

  // Fills `out` as far as there is anything, and says how far; `damaged` tells how it ended.
  size_t read(std::span<std::byte> out) {
    size_t made = 0;
    while (made < out.size() && !ended_) {
      feed();
      const size_t room = std::min<size_t>(out.size() - made, kMost);
      stream_.next_out = reinterpret_cast<Bytef*>(out.data() + made);
      stream_.avail_out = static_cast<uInt>(room);
      const int status = inflate(&stream_, Z_NO_FLUSH);
      made += room - stream_.avail_out;
      if (status == Z_STREAM_END)
        next_member();
      else if (status != Z_OK)
        ended_ = damaged_ = true;
    }
    return made;
  }
  bool damaged() const { return damaged_; }

 private:
  static constexpr size_t kMost = size_t{1} << 30;

  void feed() {
    if (stream_.avail_in != 0) return;
    const size_t piece = std::min(packed_.size(), kMost);
    stream_.next_in = reinterpret_cast<Bytef*>(const_cast<std::byte*>(packed_.data()));
    stream_.avail_in = static_cast<uInt>(piece);
    packed_ = packed_.subspan(piece);
  }

  void next_member() {
    feed();
    const Bytes rest(reinterpret_cast<const std::byte*>(stream_.next_in), stream_.avail_in);
    ended_ = !is_gzip(rest) || inflateReset(&stream_) != Z_OK;
  }

  Bytes packed_;
  z_stream stream_{};
  bool ended_ = false;
  bool damaged_ = false;
};

bool discard(Stream& stream, uint64_t bytes) {
  std::vector<std::byte> scratch(static_cast<size_t>(std::min<uint64_t>(bytes, 1 << 20)));
  while (bytes > 0) {
    const size_t piece = static_cast<size_t>(std::min<uint64_t>(bytes, scratch.size()));
    const size_t got = stream.read({scratch.data(), piece});
    if (got < piece) return false;
    bytes -= got;
  }
  return true;
}

}  // namespace

std::string inflate_head(Bytes packed, size_t bytes) {
  std::string head(bytes, '\0');
  Stream stream(packed);
  head.resize(stream.read(std::as_writable_bytes(std::span(head))));
  return head;
}

bool inflate_into(Bytes packed, uint64_t skip, uint64_t total, std::span<std::byte> out) {
  if (skip <= kSkipInPlace && total <= skip + out.size()) {
    const std::span<std::byte> all(out.data() - skip, static_cast<size_t>(skip) + out.size());
    const Whole whole = inflate_whole(packed, all);
    if (whole != Whole::kLonger) return whole == Whole::kDone;
  }
  Stream stream(packed);
  if (!discard(stream, skip) || stream.read(out) < out.size()) return false;
  discard(stream, UINT64_MAX);
  return !stream.damaged();
}

}  // namespace zox::input
