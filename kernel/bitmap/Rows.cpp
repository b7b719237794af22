// One loop a depth, without branches a pixel. Must not look at anything but one row.
#include "bitmap/Rows.h"

#include <algorithm>

namespace vxkrn {
namespace {

/// The nearest of the levels that `bits` bits have.
constexpr unsigned int Narrow(uint8_t level, unsigned int bits) noexcept {
  return (level * ((1U << bits) - 1) + 127) / 255;
}

}  // namespace

void UnpackIndices(const uint8_t* row, int bitsPerPixel, std::span<uint8_t> indices) noexcept {
  if (bitsPerPixel == 8) {
    std::copy_n(row, indices.size(), indices.begin());
    return;
  }
  const auto perByte = static_cast<std::size_t>(8 / bitsPerPixel);
  const unsigned int last = (1U << bitsPerPixel) - 1;
  for (std::size_t x = 0; x < indices.size(); ++x) {
    const std::size_t shift = 8 - static_cast<std::size_t>(bitsPerPixel) * (x % perByte + 1);
    indices[x] = static_cast<uint8_t>(static_cast<unsigned int>(row[x / perByte]) >> shift & last);
  }
}

void PackIndices(std::span<const uint8_t> indices, int bitsPerPixel, uint8_t* row) noexcept {
  const auto perByte = static_cast<std::size_t>(8 / bitsPerPixel);
  for (std::size_t x = 0; x < indices.size(); x += perByte) {
    unsigned int packed = 0;
    for (std::size_t i = 0; i < perByte; ++i) {
      packed = packed << bitsPerPixel | (x + i < indices.size() ? indices[x + i] : 0U);
    }
    *row++ = static_cast<uint8_t>(packed);
  }
}

unsigned int Pixel16(Rgba color, bool is565) noexcept {
  const unsigned int greenBits = is565 ? 6 : 5;
  return Narrow(color.red, 5) << (5 + greenBits) | Narrow(color.green, greenBits) << 5 |
         Narrow(color.blue, 5);
}

void Pack16(std::span<const Rgba> pixels, bool is565, uint8_t* row) noexcept {
  for (const Rgba color : pixels) {
    const unsigned int pixel = Pixel16(color, is565);
    *row++ = static_cast<uint8_t>(pixel);
    *row++ = static_cast<uint8_t>(pixel >> 8);
  }
}

void Pack24(std::span<const Rgba> pixels, uint8_t* row) noexcept {
  for (const Rgba color : pixels) {
    *row++ = color.blue;
    *row++ = color.green;
    *row++ = color.red;
  }
}

void Pack32(std::span<const Rgba> pixels, bool hasAlpha, uint8_t* row) noexcept {
  for (const Rgba color : pixels) {
    *row++ = color.blue;
    *row++ = color.green;
    *row++ = color.red;
    *row++ = hasAlpha ? color.alpha : 0;
  }
}

void ConvertRow16(unsigned char* row, int width, int order) noexcept {
  for (int x = 0; x < width; ++x, row += 2) {
    const unsigned int pixel = row[0] | (static_cast<unsigned int>(row[1]) << 8);
    const unsigned int blue = pixel & 31;
    // The green channel's sixth bit repeats its highest, so that white stays white.
    const unsigned int converted = order == ORDER_565 ? ((pixel & 0x7FE0) << 1) | ((pixel >> 4) & 0x20) | blue
                                                      : ((pixel >> 1) & 0x7FE0) | blue;
    row[0] = static_cast<unsigned char>(converted);
    row[1] = static_cast<unsigned char>(converted >> 8);
  }
}

}  // namespace vxkrn
