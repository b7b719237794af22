// The region services: between 1-bit masks, where a set bit is transparent, and regions, where it is inside.
#include "bitmap/Region.h"

#include <cstring>

#include "base/Memory.h"
#include "bitmap/Bitmap.h"

namespace {

/// Bytes that hold a row of the plane, without padding.
int MaskBytes(int width) {
  return static_cast<int>(vxkrn::PixelBytes(width, 1));
}

/// The bits of a row's last byte that belong to pixels.
unsigned char LastByteBits(int width) {
  const int used = width % 8;
  return static_cast<unsigned char>(used == 0 ? 0xFF : 0xFF00 >> used);
}

/// A region plane for bitmap, its bytes not set yet; null without memory.
unsigned char* NewPlane(const _BITMAPHANDLE& bitmap, int bytesPerLine) {
  const auto bytes = static_cast<uint64_t>(bytesPerLine) * static_cast<uint64_t>(bitmap.Height);
  if (bytes > SIZE_MAX) return nullptr;
  return static_cast<unsigned char*>(
      vxkrn::memory::Allocate(static_cast<std::size_t>(bytes), {"kernel/Region", __LINE__}));
}

/// Makes `plane` bitmap's region in place of the one it had.
void AttachPlane(_BITMAPHANDLE* bitmap, unsigned char* plane, int bytesPerLine) {
  vxkrn::memory::Free(bitmap->Region);
  bitmap->Region = plane;
  bitmap->RegionBytesPerLine = bytesPerLine;
}

bool IsMaskFor(const _BITMAPHANDLE* bitmap, const _BITMAPHANDLE* mask) {
  return bitmap != nullptr && mask != nullptr && mask->Pixels != nullptr && mask->BitsPerPixel == 1 &&
         mask->Width == bitmap->Width && mask->Height == bitmap->Height;
}

/// Inverts the pixels of a row and clears its padding.
void InvertRow(unsigned char* destination, const unsigned char* source, int width, int bytesPerLine) {
  const int pixelBytes = MaskBytes(width);
  for (int i = 0; i < pixelBytes; ++i) destination[i] = static_cast<unsigned char>(~source[i]);
  destination[pixelBytes - 1] &= LastByteBits(width);
  std::memset(destination + pixelBytes, 0, static_cast<std::size_t>(bytesPerLine - pixelBytes));
}

}  // namespace

int VX_SetBitmapRgnFromMask(_BITMAPHANDLE* bitmap, int option, _BITMAPHANDLE* mask, int combine) {
  if (option != REGION_OPTION_NONE || combine != REGION_COMBINE_SET || !IsMaskFor(bitmap, mask))
    return STATUS_BAD_PARAMETER;
  const int bytesPerLine = mask->BytesPerLine;
  unsigned char* plane = NewPlane(*bitmap, bytesPerLine);
  if (plane == nullptr) return STATUS_NO_MEMORY;
  AttachPlane(bitmap, plane, bytesPerLine);
  for (int row = 0; row < bitmap->Height; ++row) {
    InvertRow(vxkrn::StoredRegionRow(*bitmap, row), vxkrn::StoredRow(*mask, row), mask->Width, bytesPerLine);
  }
  return STATUS_OK;
}

int VX_CreateMaskFromBitmapRgn(_BITMAPHANDLE* bitmap, _BITMAPHANDLE* mask, unsigned int recordSize) {
  if (bitmap == nullptr || mask == nullptr || bitmap == mask || recordSize != sizeof *mask) {
    return STATUS_BAD_PARAMETER;
  }
  int status = VX_InitBitmap(mask, recordSize, bitmap->Width, bitmap->Height, 1);
  if (status == STATUS_OK) status = VX_AllocateBitmap(mask, BITMAP_ALLOCATE_PIXELS);
  RGBQUAD blackAndWhite[2];
  VX_GetFixedPalette(blackAndWhite, 1);
  if (status == STATUS_OK) status = VX_SetBitmapNewPalette(mask, blackAndWhite, 2);
  if (status != STATUS_OK) {
    VX_FreeBitmap(mask);
    return status;
  }
  mask->Orientation = bitmap->Orientation;
  const int pixelBytes = MaskBytes(mask->Width);
  for (int row = 0; row < mask->Height; ++row) {
    unsigned char* destination = vxkrn::StoredRow(*mask, row);
    if (bitmap->Region != nullptr) {
      std::memcpy(destination, vxkrn::StoredRegionRow(*bitmap, row), static_cast<std::size_t>(pixelBytes));
    } else {
      std::memset(destination, 0xFF, static_cast<std::size_t>(pixelBytes));
      destination[pixelBytes - 1] = LastByteBits(mask->Width);
    }
  }
  return STATUS_OK;
}

namespace vxkrn {

int CopyRegionRows(const _BITMAPHANDLE& whole, int firstRow, _BITMAPHANDLE* band) noexcept {
  if (whole.Region == nullptr) return STATUS_OK;
  const int bytesPerLine = whole.RegionBytesPerLine;
  unsigned char* plane = NewPlane(*band, bytesPerLine);
  if (plane == nullptr) return STATUS_NO_MEMORY;
  AttachPlane(band, plane, bytesPerLine);
  std::memcpy(plane, StoredRegionRow(whole, firstRow),
              static_cast<std::size_t>(bytesPerLine) * static_cast<std::size_t>(band->Height));
  return STATUS_OK;
}

int SetRegionFromAlpha(_BITMAPHANDLE* bitmap) noexcept {
  const auto bytesPerLine = static_cast<int>(Stride(bitmap->Width, 1));
  unsigned char* plane = NewPlane(*bitmap, bytesPerLine);
  if (plane == nullptr) return STATUS_NO_MEMORY;
  std::memset(plane, 0, static_cast<std::size_t>(bytesPerLine) * static_cast<std::size_t>(bitmap->Height));
  AttachPlane(bitmap, plane, bytesPerLine);
  for (int row = 0; row < bitmap->Height; ++row) {
    unsigned char* pixel = StoredRow(*bitmap, row);
    unsigned char* bits = StoredRegionRow(*bitmap, row);
    for (int x = 0; x < bitmap->Width; ++x, pixel += 4) {
      if (pixel[3] >= kLeastOpaque) {
        bits[x / 8] = static_cast<unsigned char>(bits[x / 8] | 0x80 >> x % 8);
      } else {
        std::memset(pixel, 0, 4);
      }
    }
  }
  bitmap->Flags &= ~kBitmapHasAlpha;
  return STATUS_OK;
}

bool HasOutside(const _BITMAPHANDLE& bitmap) noexcept {
  if (bitmap.Region == nullptr) return false;
  const int pixelBytes = MaskBytes(bitmap.Width);
  for (int row = 0; row < bitmap.Height; ++row) {
    const unsigned char* bits = StoredRegionRow(bitmap, row);
    for (int i = 0; i + 1 < pixelBytes; ++i) {
      if (bits[i] != 0xFF) return true;
    }
    if (bits[pixelBytes - 1] != LastByteBits(bitmap.Width)) return true;
  }
  return false;
}

}  // namespace vxkrn
