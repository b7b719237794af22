// Bitmap records from the kernel's inside: geometry, direct rows, and ownership in C++. Knows neither files
// nor formats.
#pragma once

#include <cstddef>

#include "base/Contract.h"

namespace vxkrn {

/// Dots per inch where nothing names a resolution.
constexpr int kDefaultDpi = 96;

/// _BITMAPHANDLE.Flags, beside the contract's: the fourth byte of the 32-bit pixels is alpha.
constexpr unsigned int kBitmapHasAlpha = 0x2;

/// The least alpha of a pixel that is there, where pixels are either there or not.
constexpr int kLeastOpaque = 128;

inline bool HasAlpha(const _BITMAPHANDLE& bitmap) noexcept {
  return bitmap.BitsPerPixel == 32 && (bitmap.Flags & kBitmapHasAlpha) != 0;
}

using bmp::PictureBytes;
using bmp::PixelBytes;
using bmp::Stride;

/// What pixels hold that nobody has set yet. Blank ones cost no memory where they stay so; others cost no
/// time.
enum class FreshPixels { kBlank, kAny };
/// As VX_AllocateBitmap, which gives blank ones.
[[nodiscard]] int AllocateBitmap(_BITMAPHANDLE* bitmap, FreshPixels fresh) noexcept;

/// Stored row `row`, which must exist.
inline unsigned char* StoredRow(const _BITMAPHANDLE& bitmap, int row) noexcept {
  return bitmap.Pixels + static_cast<std::ptrdiff_t>(row) * bitmap.BytesPerLine;
}
/// The bits of the region that belong to stored row `row`; null without a region.
inline unsigned char* StoredRegionRow(const _BITMAPHANDLE& bitmap, int row) noexcept {
  if (bitmap.Region == nullptr) return nullptr;
  return bitmap.Region + static_cast<std::ptrdiff_t>(row) * bitmap.RegionBytesPerLine;
}

/// The stored number of a row counted from the top, and the other way round.
constexpr int FlipRow(int row, int height, int orientation) noexcept {
  return orientation == ORIENT_BOTTOM_UP ? height - 1 - row : row;
}

/// The first stored row of a band of `count` rows, of which the topmost is row `first` from the top.
constexpr int FirstStoredRow(int first, int count, int height, int orientation) noexcept {
  return orientation == ORIENT_BOTTOM_UP ? height - first - count : first;
}

/// A record that frees what is attached to it.
struct OwnedBitmap : _BITMAPHANDLE {
  OwnedBitmap() noexcept : _BITMAPHANDLE() {}
  ~OwnedBitmap() { VX_FreeBitmap(this); }
  OwnedBitmap(const OwnedBitmap&) = delete;
  OwnedBitmap& operator=(const OwnedBitmap&) = delete;
};

}  // namespace vxkrn
