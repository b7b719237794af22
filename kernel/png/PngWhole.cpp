// All rows are filtered first, then handed to libdeflate, which finds matches faster than zlib because it has
// everything before it. What it takes is refused where that would leave others short.
#include "png/PngWhole.h"

#include <libdeflate.h>

#include <cstring>
#include <memory>

#include "png/PngFilter.h"

namespace vxkrn {
namespace {

constexpr uint64_t kSmallest = 512U << 10;  // bytes of filtered rows: below, there is no time to be saved
constexpr uint64_t kLargest = 24U << 20;    // above, memory that does not grow counts for more
constexpr uint64_t kCompressor = 9U << 20;  // bytes, about what libdeflate takes for itself at most

struct FreeCompressor {
  void operator()(libdeflate_compressor* compressor) const noexcept {
    libdeflate_free_compressor(compressor);
  }
};
using Compressor = std::unique_ptr<libdeflate_compressor, FreeCompressor>;

/// Noise has no matches worth having but many that look so: there it takes the slow search, which weighs all
/// of them, to come out below zlib, which leaves out the short ones. Everything else is fast and small at
/// once.
int LevelFor(uint64_t distance, uint64_t size) noexcept {
  constexpr int kFast = 7;
  constexpr int kWeighing = 10;
  return distance > size ? kWeighing : kFast;
}

std::size_t PixelBytesOf(const PngPicture& picture) noexcept {
  if (picture.paletteDepth != 0) return 0;
  return picture.hasAlpha ? 4 : 3;
}

std::size_t RowBytesOf(const PngPicture& picture) noexcept {
  const auto width = static_cast<std::size_t>(picture.width);
  if (picture.paletteDepth == 0) return width * PixelBytesOf(picture);
  return (width * static_cast<std::size_t>(picture.paletteDepth) + 7) / 8;
}

void PutRow(const PngPicture& picture, int row, std::size_t rowBytes, uint8_t* out) {
  const unsigned char* from = picture.row(picture.owner, row, picture.scratch);
  if (picture.paletteDepth != 0 || picture.hasAlpha) {
    std::memcpy(out, from, rowBytes);
    return;
  }
  for (const uint8_t* const end = out + rowBytes; out != end; out += 3, from += 4) {
    out[0] = from[0];
    out[1] = from[1];
    out[2] = from[2];
  }
}

/// @return false when there is no memory
bool FilterRows(const PngPicture& picture, PngFilter& filter, std::size_t rowBytes, uint8_t* filtered) {
  if (!filter.HasMemory()) return false;
  for (int row = 0; row < picture.height; ++row, filtered += 1 + rowBytes) {
    PutRow(picture, row, rowBytes, filter.Row());
    filter.Filter(filtered);
  }
  return true;
}

}  // namespace

PngPixels CompressWhole(const PngPicture& picture) {
  const std::size_t rowBytes = RowBytesOf(picture);
  const uint64_t size = (uint64_t{1} + rowBytes) * static_cast<uint64_t>(picture.height);
  if (size < kSmallest || size > kLargest) return {};
  const auto count = static_cast<std::size_t>(size);
  constexpr uint64_t kShare = 4;  // what is taken only saves time, so three times as much is left
  if (!memory::Fits(kShare * (2 * size + kCompressor))) return {};
  const memory::Bytes filtered = memory::MakeBytes(count, {"kernel/PngWhole", __LINE__});
  PngFilter filter(rowBytes, PixelBytesOf(picture));
  if (filtered == nullptr || !FilterRows(picture, filter, rowBytes, filtered.get())) return {};
  const Compressor compressor(libdeflate_alloc_compressor(LevelFor(filter.Distance(), size)));
  if (compressor == nullptr) return {};
  const std::size_t bound = libdeflate_zlib_compress_bound(compressor.get(), count);
  PngPixels pixels = {memory::MakeBytes(bound, {"kernel/PngWhole", __LINE__})};
  if (pixels.bytes == nullptr) return {};
  pixels.size = libdeflate_zlib_compress(compressor.get(), filtered.get(), count, pixels.bytes.get(), bound);
  return pixels;
}

}  // namespace vxkrn
