// The mask of an icon or cursor being saved: the kernel makes it of the bitmap's region, in which a set bit
// is a pixel that shows; files say it the other way round.
#include "../Bmp.h"
#include "../Resources.h"

_BITMAPHANDLE* CreateMaskBitmap(_BITMAPHANDLE* bitmap) {
  bmp::Buffer<_BITMAPHANDLE> mask(1);
  if (!mask) return nullptr;
  if (VX_CreateMaskFromBitmapRgn(bitmap, mask.Get(), sizeof(_BITMAPHANDLE)) != STATUS_OK) return nullptr;
  if (VX_IntAccessBitmap(mask.Get(), 0) != STATUS_OK) {
    VX_FreeBitmap(mask.Get());
    return nullptr;
  }
  return mask.Take();
}

void FreeMaskBitmap(_BITMAPHANDLE* mask) {
  if (mask == nullptr) return;
  static_cast<void>(VX_IntReleaseBitmap(mask, 1, STATUS_OK));
  VX_FreeBitmap(mask);
  VX_LocalFree(mask, __LINE__, bmp::kFileTag);
}

void InvertBuffer(unsigned char* buffer, unsigned int count) {
  for (unsigned int i = 0; i < count; ++i) buffer[i] = static_cast<unsigned char>(~buffer[i]);
}
