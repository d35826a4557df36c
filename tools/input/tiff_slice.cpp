#include "tiff_slice.h"

#include <tiffio.h>

#include <algorithm>
#include <cstring>
#include <memory>

#include "file.h"
#include "text.h"

namespace zox::input {
namespace {

struct Close {
  void operator()(TIFF* file) const { TIFFClose(file); }
};
using Tiff = std::unique_ptr<TIFF, Close>;

// Without a listing of what the library finds odd: the reader's caller wants one sentence.
Tiff open(const std::string& path) {
  const File readable(path);
  TIFFSetWarningHandler(nullptr);
  TIFFSetErrorHandler(nullptr);
  Tiff file(TIFFOpen(path.c_str(), "rm"));
  if (!file) refuse(quoted(path) + " is no TIFF file, though its name says so.");
  return file;
}

template <class Number>
Number tag(const Tiff& file, uint32_t name, Number otherwise) {
  Number number = otherwise;
  return TIFFGetFieldDefaulted(file.get(), name, &number) == 1 ? number : otherwise;
}

Stored stored_type(const Tiff& file, const std::string& path) {
  const auto bits = tag<uint16_t>(file, TIFFTAG_BITSPERSAMPLE, 1);
  const auto format = tag<uint16_t>(file, TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT);
  struct Row {
    uint16_t format, bits;
    Stored type;
  };
  constexpr Row kTypes[] = {{SAMPLEFORMAT_UINT, 8, Stored::kU8},     {SAMPLEFORMAT_UINT, 16, Stored::kU16},
                            {SAMPLEFORMAT_UINT, 32, Stored::kU32},   {SAMPLEFORMAT_UINT, 64, Stored::kU64},
                            {SAMPLEFORMAT_INT, 8, Stored::kS8},      {SAMPLEFORMAT_INT, 16, Stored::kS16},
                            {SAMPLEFORMAT_INT, 32, Stored::kS32},    {SAMPLEFORMAT_INT, 64, Stored::kS64},
                            {SAMPLEFORMAT_IEEEFP, 32, Stored::kF32}, {SAMPLEFORMAT_IEEEFP, 64, Stored::kF64}};
  for (const Row& row : kTypes)
    if (row.format == format && row.bits == bits) return row.type;
  refuse(quoted(path) + " holds voxels of an unsupported type: " + std::to_string(bits) +
         " bits of TIFF's sample format " + std::to_string(format) + ".");
}

// What would make another picture than a slice of plain numbers whose first row is the top one.
void check_plain(const Tiff& file, const std::string& path) {
  const auto photometric = tag<uint16_t>(file, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
  const auto orientation = tag<uint16_t>(file, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
  if (tag<uint16_t>(file, TIFFTAG_SAMPLESPERPIXEL, 1) != 1 || photometric == PHOTOMETRIC_PALETTE)
    refuse(quoted(path) + " holds colours; only plain numbers can be shown.");
  if (photometric != PHOTOMETRIC_MINISBLACK)
    refuse(quoted(path) + " counts grey from white, or is no grey picture; only plain numbers can be shown.");
  if (orientation != ORIENTATION_TOPLEFT)
    refuse(quoted(path) + " is stored turned or mirrored (TIFF's orientation " + std::to_string(orientation) +
           "), which cannot be read.");
}

[[noreturn]] void refuse_damaged(const std::string& path) {
  refuse(quoted(path) + " is damaged, cut short or packed in a way that cannot be read.");
}

// Chunks of `rows` rows and `columns` columns, the last of a row or column perhaps reaching beyond the slice.
struct Chunks {
  uint32_t columns, rows;
  tmsize_t bytes;
};

Chunks chunks_of(const Tiff& file, const Slice& slice) {
  Chunks chunks{static_cast<uint32_t>(slice.columns), 0, 0};
  if (TIFFIsTiled(file.get())) {
    chunks.columns = tag<uint32_t>(file, TIFFTAG_TILEWIDTH, 0);
    chunks.rows = tag<uint32_t>(file, TIFFTAG_TILELENGTH, 0);
    chunks.bytes = TIFFTileSize(file.get());
  } else {
    chunks.rows =
        std::min(tag<uint32_t>(file, TIFFTAG_ROWSPERSTRIP, UINT32_MAX), static_cast<uint32_t>(slice.rows));
    chunks.bytes = TIFFStripSize(file.get());
  }
  const uint64_t wanted = uint64_t{chunks.columns} * chunks.rows * stored_bytes(slice.type);
  if (wanted == 0 || static_cast<uint64_t>(chunks.bytes) != wanted) refuse_damaged(slice.path);
  return chunks;
}

// The chunk that begins in this row and column; of a strip at the end, the rows that there are.
void read_chunk(const Tiff& file, const Slice& slice, const Chunks& chunks, uint32_t row, uint32_t column,
                std::byte* to) {
  TIFF* const tiff = file.get();
  if (TIFFIsTiled(tiff)) {
    const uint32_t number = TIFFComputeTile(tiff, column, row, 0, 0);
    if (TIFFReadEncodedTile(tiff, number, to, chunks.bytes) != chunks.bytes) refuse_damaged(slice.path);
    return;
  }
  const uint32_t rows = std::min(chunks.rows, static_cast<uint32_t>(slice.rows) - row);
  const auto bytes = static_cast<tmsize_t>(uint64_t{rows} * chunks.columns * stored_bytes(slice.type));
  if (TIFFReadEncodedStrip(tiff, TIFFComputeStrip(tiff, row, 0), to, bytes) != bytes)
    refuse_damaged(slice.path);
}

}  // namespace

Slice describe_tiff_slice(const std::string& path) {
  const Tiff file = open(path);
  Slice slice;
  slice.path = path;
  const auto columns = tag<uint32_t>(file, TIFFTAG_IMAGEWIDTH, 0);
  const auto rows = tag<uint32_t>(file, TIFFTAG_IMAGELENGTH, 0);
  if (columns < 1 || rows < 1 || columns > INT32_MAX || rows > INT32_MAX) refuse_damaged(path);
  slice.columns = static_cast<int32_t>(columns);
  slice.rows = static_cast<int32_t>(rows);
  check_plain(file, path);
  slice.type = stored_type(file, path);
  if (!TIFFLastDirectory(file.get()))
    refuse(quoted(path) +
           " holds several pictures, where a slice of a folder is one; a file that is a volume "
           "is named by itself.");
  return slice;
}

void read_tiff_rows(const Slice& slice, int32_t first, int32_t count, std::byte* out) {
  const Tiff file = open(slice.path);
  const Chunks chunks = chunks_of(file, slice);
  const size_t voxel = stored_bytes(slice.type), row_bytes = static_cast<size_t>(slice.columns) * voxel;
  const auto begin = static_cast<uint32_t>(first), end = static_cast<uint32_t>(first + count);
  const auto chunk = std::make_unique_for_overwrite<std::byte[]>(static_cast<size_t>(chunks.bytes));
  for (uint32_t top = begin / chunks.rows * chunks.rows; top < end; top += chunks.rows)
    for (uint32_t left = 0; left < static_cast<uint32_t>(slice.columns); left += chunks.columns) {
      read_chunk(file, slice, chunks, top, left, chunk.get());
      const uint32_t columns = std::min(chunks.columns, static_cast<uint32_t>(slice.columns) - left);
      for (uint32_t y = std::max(top, begin); y < std::min(top + chunks.rows, end); ++y)
        std::memcpy(out + (y - begin) * row_bytes + left * voxel,
                    chunk.get() + size_t{y - top} * chunks.columns * voxel, columns * voxel);
    }
}

}  // namespace zox::input
