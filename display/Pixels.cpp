#include "Pixels.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace vxdis {
namespace {

constexpr unsigned int kBytesAPixel = 4;

/// What a block of pixels adds up to. Colours are weighted by alpha.
struct Sum {
  uint64_t red, green, blue, alpha;

  void Add(const unsigned char* pixel) noexcept {
    red += uint64_t{pixel[0]} * pixel[3];
    green += uint64_t{pixel[1]} * pixel[3];
    blue += uint64_t{pixel[2]} * pixel[3];
    alpha += pixel[3];
  }
  void PutMean(uint64_t count, unsigned char* pixel) const noexcept {
    const uint64_t weight = std::max<uint64_t>(alpha, 1);
    pixel[0] = static_cast<unsigned char>((red + weight / 2) / weight);
    pixel[1] = static_cast<unsigned char>((green + weight / 2) / weight);
    pixel[2] = static_cast<unsigned char>((blue + weight / 2) / weight);
    pixel[3] = static_cast<unsigned char>((alpha + count / 2) / count);
  }
};

constexpr int RoundedUp(int dividend, int divisor) noexcept {
  return dividend / divisor + (dividend % divisor != 0 ? 1 : 0);
}

int Allocate(int width, int height, Pixels* pixels) noexcept {
  pixels->width = width;
  pixels->height = height;
  const auto count = static_cast<unsigned int>(width) * static_cast<unsigned int>(height);
  return pixels->rgba.Allocate(count, kBytesAPixel) ? STATUS_OK : STATUS_NO_MEMORY;
}

class Reader {
 public:
  explicit Reader(_BITMAPHANDLE* bitmap) noexcept : bitmap_(bitmap) {}

  /// Reads row `row` from the top to `rgba`.
  [[nodiscard]] int Read(int row, unsigned char* rgba) const noexcept {
    const int stored = bitmap_->Orientation == ORIENT_BOTTOM_UP ? bitmap_->Height - 1 - row : row;
    const int bytes = VX_GetBitmapColors(bitmap_, rgba, stored);
    if (bytes == static_cast<int>(kBytesAPixel) * bitmap_->Width) return STATUS_OK;
    return bytes < STATUS_OK ? bytes : STATUS_READ_ERROR;
  }

 private:
  _BITMAPHANDLE* bitmap_;
};

int TakeAsTheyAre(_BITMAPHANDLE* bitmap, Pixels* pixels) noexcept {
  int status = Allocate(bitmap->Width, bitmap->Height, pixels);
  const Reader reader(bitmap);
  const std::size_t rowBytes = kBytesAPixel * static_cast<std::size_t>(bitmap->Width);
  for (int row = 0; row < bitmap->Height && status == STATUS_OK; ++row) {
    status = reader.Read(row, pixels->rgba.Get() + rowBytes * static_cast<std::size_t>(row));
  }
  return status;
}

int TakeMeans(_BITMAPHANDLE* bitmap, int factor, Pixels* pixels) noexcept {
  const int width = bitmap->Width;
  const int height = bitmap->Height;
  int status = Allocate(RoundedUp(width, factor), RoundedUp(height, factor), pixels);
  if (status != STATUS_OK) return status;
  const auto columns = static_cast<std::size_t>(pixels->width);
  Memory sumMemory;
  Memory row;
  if (!sumMemory.Allocate(static_cast<unsigned int>(columns), sizeof(Sum)) ||
      !row.Allocate(static_cast<unsigned int>(width), kBytesAPixel)) {
    return STATUS_NO_MEMORY;
  }
  Sum* sums = reinterpret_cast<Sum*>(static_cast<void*>(sumMemory.Get()));
  const Reader reader(bitmap);
  unsigned char* mean = pixels->rgba.Get();
  for (int top = 0; top < height; top += factor) {
    const int rows = std::min(factor, height - top);
    std::fill_n(sums, columns, Sum{});
    for (int i = 0; i < rows; ++i) {
      status = reader.Read(top + i, row.Get());
      if (status != STATUS_OK) return status;
      for (int x = 0; x < width; ++x)
        sums[x / factor].Add(row.Get() + std::size_t{kBytesAPixel} * static_cast<std::size_t>(x));
    }
    for (int left = 0; left < width; left += factor, mean += kBytesAPixel) {
      const int across = std::min(factor, width - left);
      sums[left / factor].PutMean(static_cast<uint64_t>(rows) * static_cast<uint64_t>(across), mean);
    }
  }
  return status;
}

}  // namespace

int TakePixels(_BITMAPHANDLE* bitmap, Pixels* pixels) noexcept {
  const int factor = RoundedUp(std::max(bitmap->Width, bitmap->Height), kMostPixels);
  int status = VX_IntAccessBitmap(bitmap, 0);
  if (status != STATUS_OK) return status;
  status = factor == 1 ? TakeAsTheyAre(bitmap, pixels) : TakeMeans(bitmap, factor, pixels);
  return VX_IntReleaseBitmap(bitmap, 1, status);
}

int Pad(const Pixels& pixels, int width, int height, Pixels* padded) noexcept {
  const int status = Allocate(width, height, padded);
  if (status != STATUS_OK) return status;
  const std::size_t rowBytes = kBytesAPixel * static_cast<std::size_t>(pixels.width);
  const std::size_t paddedBytes = kBytesAPixel * static_cast<std::size_t>(width);
  for (std::size_t row = 0; row < static_cast<std::size_t>(pixels.height); ++row) {
    std::memcpy(padded->rgba.Get() + paddedBytes * row, pixels.rgba.Get() + rowBytes * row, rowBytes);
  }
  return STATUS_OK;
}

}  // namespace vxdis
