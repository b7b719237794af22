// Sizes that follow from width and depth, and the two ways of stating a resolution. Pure arithmetic,
// defined for every input.
#pragma once

#include <cstdint>

#include "format/Wrapping.h"

namespace bmp {

/// The longest side of a picture. Up to here a row of 32-bit pixels, and that row padded or widened a little,
/// is counted in bytes without leaving an int, on either side of the contract.
inline constexpr int kLongestSide = (1 << 28) - 1;

/// Whether pixels of that many bits exist in this family: 1, 4, 8, 16, 24 or 32.
constexpr bool IsDepth(int bitsPerPixel) {
  constexpr uint32_t kKnownDepths = 0x80808089;  // bit n-1 stands for depth n
  const uint32_t index = static_cast<uint32_t>(bitsPerPixel) - 1;
  return index < 32 && (kKnownDepths >> index & 1) != 0;
}

constexpr bool HasPalette(int bitsPerPixel) {
  return bitsPerPixel <= 8;
}

/// Palette entries of a depth of 8 bits or less.
constexpr uint32_t PaletteSize(int bitsPerPixel) {
  return 1U << bitsPerPixel;
}

/// Bytes the pixels of a row take, without padding.
constexpr int64_t PixelBytes(int width, int bitsPerPixel) {
  return (int64_t{width} * bitsPerPixel + 7) / 8;
}

/// Bytes from one stored row to the next: whole 32-bit words.
constexpr int64_t Stride(int width, int bitsPerPixel) {
  return (PixelBytes(width, bitsPerPixel) + 3) / 4 * 4;
}

/// Bytes of all rows; for sides up to INT_MAX this cannot overflow.
constexpr uint64_t PictureBytes(int width, int height, int bitsPerPixel) {
  return static_cast<uint64_t>(Stride(width, bitsPerPixel)) * static_cast<uint64_t>(height);
}

/// The stride for sizes that were not checked, as the filter's GetBytesPerLine answers it. Depth 2 is
/// computed, though no image has it; any other unknown depth gives 0.
constexpr int WrappedStride(int bitsPerPixel, int width) {
  const auto padded = [](int bytes) { return WrapAdd(bytes, 3) & ~3; };
  switch (bitsPerPixel) {
    case 1: return padded(WrapAdd(width, 7) / 8);
    case 2: return padded(WrapAdd(width, 3) / 4);
    case 4: return padded(WrapAdd(width, 1) / 2);
    case 8: return padded(width);
    case 16: return padded(WrapMultiply(2, width));
    case 24: return padded(WrapMultiply(3, width));
    case 32: return WrapMultiply(4, width);
    default: return 0;
  }
}

/// Bytes of a row in the file, of pixels or of a mask: whole 32-bit words.
constexpr uint32_t RowSize(int bitsPerPixel, int width) {
  return (static_cast<uint32_t>(bitsPerPixel) * static_cast<uint32_t>(width) + 31) / 8 & ~3U;
}

/// Bytes of pixel data when rows are padded to whole bytes only.
constexpr int PackedDataSize(int bitsPerPixel, int width, int height) {
  const uint32_t rowBits = static_cast<uint32_t>(bitsPerPixel) * static_cast<uint32_t>(width);
  return static_cast<int>(static_cast<uint32_t>(height) * ((rowBits + 7) >> 3));
}

/// Dots per inch of a resolution in pixels per metre; 0 says that none is stated.
constexpr int DotsPerInch(int32_t pixelsPerMetre) {
  return WrapAdd(WrapMultiply(pixelsPerMetre, 254), 5000) / 10000;
}

/// The resolution in pixels per metre, rounded to the nearest.
constexpr uint32_t PixelsPerMetre(int dotsPerInch) {
  return (static_cast<uint32_t>(dotsPerInch) * 10000 + 127) / 254;
}

static_assert(IsDepth(1) && IsDepth(32) && !IsDepth(2) && !IsDepth(0) && !IsDepth(-1));
static_assert(WrappedStride(1, 33) == 8 && WrappedStride(4, 3) == 4 && WrappedStride(24, 5) == 16 &&
              WrappedStride(32, 3) == 12);
static_assert(Stride(33, 1) == 8 && Stride(5, 24) == 16 && Stride(kLongestSide, 32) <= INT32_MAX);
static_assert(RowSize(1, 32) == 4 && RowSize(1, 48) == 8);
static_assert(PackedDataSize(1, 9, 3) == 6);
static_assert(PixelsPerMetre(96) == 3780 && PixelsPerMetre(72) == 2835 && PixelsPerMetre(300) == 11811 &&
              PixelsPerMetre(0) == 0);
static_assert(DotsPerInch(2835) == 72 && DotsPerInch(3780) == 96 && DotsPerInch(19) == 0);

}  // namespace bmp
