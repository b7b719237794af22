// The mask of an icon or cursor being saved: the kernel makes it of the bitmap's region, in which a set bit
// is a pixel that shows; files say it the other way round.
#include "Write/IconMasks.h"

#include "Kernel.h"

namespace bmp {

_BITMAPHANDLE* MakeMask(_BITMAPHANDLE* bitmap) {
  Buffer<_BITMAPHANDLE> mask(1);
  if (!mask) return nullptr;
  if (VX_CreateMaskFromBitmapRgn(bitmap, mask.Get(), sizeof(_BITMAPHANDLE)) != STATUS_OK) return nullptr;
  if (VX_IntAccessBitmap(mask.Get(), 0) != STATUS_OK) {
    VX_FreeBitmap(mask.Get());
    return nullptr;
  }
  return mask.Take();
}

void FreeMask(_BITMAPHANDLE* mask) {
  if (mask == nullptr) return;
  static_cast<void>(VX_IntReleaseBitmap(mask, 1, STATUS_OK));
  VX_FreeBitmap(mask);
  VX_LocalFree(mask, __LINE__, kFileTag);
}

void Invert(uint8_t* bytes, uint32_t count) {
  for (uint32_t i = 0; i < count; ++i) bytes[i] = static_cast<uint8_t>(~bytes[i]);
}

}  // namespace bmp
