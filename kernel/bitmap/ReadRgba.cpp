// One loop a depth, without branches a pixel. Must not look at anything but one row.
#include "bitmap/ReadRgba.h"

#include <bit>
#include <cstring>

#include "bitmap/RowProvider.h"

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
    uint16_t pixel = 0;
    std::memcpy(&pixel, row, sizeof pixel);
    const uint32_t color = Color16<GreenBits>(pixel);
    std::memcpy(rgba, &color, sizeof color);
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

}  // namespace

// A word of four bytes holds a pixel and the first byte of the next one; turned round and moved down by a
// byte it is the pixel as it is wanted, but for its alpha. The last pixel has no next one.
void Expand24InWords(Bytes row, int width, uint8_t* rgba) noexcept {
  for (int x = 0; x + 1 < width; ++x, row += 3, rgba += 4) {
    uint32_t pixel = 0;
    std::memcpy(&pixel, row, sizeof pixel);
    pixel = __builtin_bswap32(pixel) >> 8 | kOpaque;
    std::memcpy(rgba, &pixel, sizeof pixel);
  }
  if (width > 0) Put(rgba, {row[2], row[1], row[0], 255});
}

#if defined(__x86_64__) || defined(__i386__)
namespace {

/// Four pixels a shuffle, of which 16 bytes are read and 12 are theirs: the last ones of a row are left to
/// words.
__attribute__((target("ssse3"))) void Expand24Shuffled(Bytes row, int width, uint8_t* rgba) noexcept {
  using Vector = uint8_t __attribute__((vector_size(16)));
  constexpr Vector kAlpha = {0, 0, 0, 255, 0, 0, 0, 255, 0, 0, 0, 255, 0, 0, 0, 255};
  constexpr int kReaches = 6;  // pixels that the 16 bytes begin
  int x = 0;
  for (; x + kReaches <= width; x += 4, row += 12, rgba += 16) {
    Vector pixels;
    std::memcpy(&pixels, row, sizeof pixels);
    pixels =
        __builtin_shufflevector(pixels, pixels, 2, 1, 0, 0, 5, 4, 3, 0, 8, 7, 6, 0, 11, 10, 9, 0) | kAlpha;
    std::memcpy(rgba, &pixels, sizeof pixels);
  }
  Expand24InWords(row, width - x, rgba);
}

}  // namespace

void Expand24(Bytes row, int width, uint8_t* rgba) noexcept {
  if (__builtin_cpu_supports("ssse3") != 0) return Expand24Shuffled(row, width, rgba);
  Expand24InWords(row, width, rgba);
}
#else
void Expand24(Bytes row, int width, uint8_t* rgba) noexcept {
  Expand24InWords(row, width, rgba);
}
#endif

namespace {

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

Rgba ColorOfPixel16(unsigned int pixel, bool is565) noexcept {
  const uint32_t color = is565 ? Color16<6>(pixel) : Color16<5>(pixel);
  Rgba rgba = {};
  std::memcpy(&rgba, &color, sizeof rgba);
  return rgba;
}

void ReadRgba(const _BITMAPHANDLE& bitmap, const ColorTable& colors, int storedRow, uint8_t* rgba) {
  ReadRgba(bitmap, colors, storedRow, 0, bitmap.Width, rgba);
}

void ReadRgba(const _BITMAPHANDLE& bitmap, const ColorTable& colors, int storedRow, int first, int count,
              uint8_t* rgba) {
  Expand(bitmap, colors, ReadRow(bitmap, storedRow) + PixelBytes(first, bitmap.BitsPerPixel), count, rgba);
  const unsigned char* inside = StoredRegionRow(bitmap, storedRow);
  if (inside != nullptr && !HasAlpha(bitmap)) ApplyRegion(inside + first / 8, count, rgba);
}

}  // namespace vxkrn
