// One loop a depth, without branches a pixel. Must not look at anything but one row.
#include "bitmap/Rows.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace vxkrn {
namespace {

using Bytes = const unsigned char*;

void Put(uint8_t* rgba, Rgba color) noexcept {
  std::memcpy(rgba, &color, sizeof color);
}

template <int Depth>
void ExpandIndices(Bytes row, int width, const Rgba* colors, uint8_t* rgba) noexcept {
  constexpr int kPerByte = 8 / Depth;
  constexpr unsigned int kLast = (1U << Depth) - 1;
  const int whole = width / kPerByte;
  for (int byte = 0; byte < whole; ++byte) {
    const unsigned int indices = row[byte];
    for (int i = 0; i < kPerByte; ++i, rgba += 4) {
      Put(rgba, colors[(indices >> (8 - Depth - i * Depth)) & kLast]);
    }
  }
  for (int i = 0; i < width % kPerByte; ++i, rgba += 4) {
    Put(rgba, colors[(static_cast<unsigned int>(row[whole]) >> (8 - Depth - i * Depth)) & kLast]);
  }
}

static_assert(std::endian::native == std::endian::little, "pixels are read and written as words");

/// A channel of `Bits` bits as 8, rounded. Without a division, so that loops over it can be vectorised.
template <unsigned int Bits>
constexpr uint32_t Scale(uint32_t channel) noexcept {
  return Bits == 5 ? (channel * 527 + 23) >> 6 : (channel * 259 + 33) >> 6;
}

template <unsigned int Bits>
constexpr bool ScaleRounds() {
  constexpr uint32_t kLast = (1U << Bits) - 1;
  for (uint32_t i = 0; i <= kLast; ++i) {
    if (Scale<Bits>(i) != (i * 255 * 2 + kLast) / (kLast * 2)) return false;
  }
  return true;
}
static_assert(ScaleRounds<5>() && ScaleRounds<6>());

constexpr uint32_t kOpaque = 0xFF000000;

/// The colour of a pixel as the word that Rgba is in memory.
template <unsigned int GreenBits>
constexpr uint32_t Color16(uint32_t pixel) noexcept {
  constexpr uint32_t kGreenLast = (1U << GreenBits) - 1;
  const uint32_t red = Scale<5>((pixel >> (5 + GreenBits)) & 31);
  const uint32_t green = Scale<GreenBits>((pixel >> 5) & kGreenLast);
  return red | green << 8 | Scale<5>(pixel & 31) << 16 | kOpaque;
}

template <unsigned int GreenBits>
void Expand16(Bytes row, int width, uint8_t* rgba) noexcept {
  for (int x = 0; x < width; ++x, row += 2, rgba += 4) {
    const uint32_t pixel = row[0] | static_cast<uint32_t>(row[1]) << 8;
    const uint32_t color = Color16<GreenBits>(pixel);
    std::memcpy(rgba, &color, sizeof color);
  }
}

void Expand24(Bytes row, int width, uint8_t* rgba) noexcept {
  for (int x = 0; x < width; ++x, row += 3, rgba += 4) {
    rgba[0] = row[2];
    rgba[1] = row[1];
    rgba[2] = row[0];
    rgba[3] = 255;
  }
}

/// `fill` is set in every pixel: kOpaque, or 0 to keep the fourth byte.
void Expand32(Bytes row, int width, uint32_t fill, uint8_t* rgba) noexcept {
  for (int x = 0; x < width; ++x, row += 4, rgba += 4) {
    uint32_t pixel = 0;
    std::memcpy(&pixel, row, sizeof pixel);
    pixel = (pixel & 0xFF00FF00) | (pixel >> 16 & 0xFF) | (pixel & 0xFF) << 16 | fill;
    std::memcpy(rgba, &pixel, sizeof pixel);
  }
}

void ApplyRegion(Bytes inside, int width, uint8_t* rgba) noexcept {
  for (int x = 0; x < width; ++x) {
    const unsigned int bit = (static_cast<unsigned int>(inside[x / 8]) >> (7 - x % 8)) & 1;
    rgba[4 * static_cast<std::ptrdiff_t>(x) + 3] = static_cast<uint8_t>(bit * 255);
  }
}

void Expand(const _BITMAPHANDLE& bitmap, const ColorTable& colors, Bytes row, int width,
            uint8_t* rgba) noexcept {
  switch (bitmap.BitsPerPixel) {
    case 1: ExpandIndices<1>(row, width, colors.data(), rgba); break;
    case 4: ExpandIndices<4>(row, width, colors.data(), rgba); break;
    case 8: ExpandIndices<8>(row, width, colors.data(), rgba); break;
    case 16:
      if (bitmap.ColorOrder == ORDER_565) {
        Expand16<6>(row, width, rgba);
      } else {
        Expand16<5>(row, width, rgba);
      }
      break;
    case 24: Expand24(row, width, rgba); break;
    default: Expand32(row, width, HasAlpha(bitmap) ? 0 : kOpaque, rgba); break;
  }
}

/// The nearest of the levels that `bits` bits have.
constexpr unsigned int Narrow(uint8_t level, unsigned int bits) noexcept {
  return (level * ((1U << bits) - 1) + 127) / 255;
}

}  // namespace

ColorTable ColorsOf(const _BITMAPHANDLE& bitmap) noexcept {
  ColorTable colors;
  colors.fill(Rgba{0, 0, 0, 255});
  for (int i = 0; i < bitmap.ColorCount; ++i) {
    const RGBQUAD& color = bitmap.Palette[i];
    colors[static_cast<std::size_t>(i)] = {color.Red, color.Green, color.Blue, 255};
  }
  return colors;
}

void ReadRgba(const _BITMAPHANDLE& bitmap, const ColorTable& colors, int storedRow, uint8_t* rgba) noexcept {
  ReadRgba(bitmap, colors, storedRow, 0, bitmap.Width, rgba);
}

void ReadRgba(const _BITMAPHANDLE& bitmap, const ColorTable& colors, int storedRow, int first, int count,
              uint8_t* rgba) noexcept {
  Expand(bitmap, colors, StoredRow(bitmap, storedRow) + PixelBytes(first, bitmap.BitsPerPixel), count, rgba);
  const unsigned char* inside = StoredRegionRow(bitmap, storedRow);
  if (inside != nullptr && !HasAlpha(bitmap)) ApplyRegion(inside + first / 8, count, rgba);
}

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
  if (bitsPerPixel == 8) {
    std::copy(indices.begin(), indices.end(), row);
    return;
  }
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

Rgba ColorOfPixel16(unsigned int pixel, bool is565) noexcept {
  const uint32_t color = is565 ? Color16<6>(pixel) : Color16<5>(pixel);
  Rgba rgba = {};
  std::memcpy(&rgba, &color, sizeof rgba);
  return rgba;
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
