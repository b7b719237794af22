// Reads an icon's transparency mask into a 1-bit bitmap that the kernel turns into a region. The mask
// never reaches the row callback, and nothing of it outlives the call.
#include "Read/IconMask.h"

#include <algorithm>

#include "Kernel.h"
#include "format/Geometry.h"

namespace bmp {
namespace {

constexpr uint32_t kRecordSize = sizeof(_BITMAPHANDLE);
constexpr int kMaskBits = 1;
constexpr int kMaskColours = 2;

/// A bitmap record from the kernel's memory, with what the kernel attaches to it. The bitmap goes
/// before its record.
class MaskBitmap {
 public:
  MaskBitmap() : record_(1) {}
  ~MaskBitmap() { Release(); }
  MaskBitmap(const MaskBitmap&) = delete;
  MaskBitmap& operator=(const MaskBitmap&) = delete;

  /// Makes the bitmap, of the size of `like`. @return STATUS_OK, STATUS_NO_MEMORY or the kernel's status
  [[nodiscard]] int Make(const _BITMAPHANDLE& like) {
    if (!record_) return STATUS_NO_MEMORY;
    const int status = VX_InitBitmap(Get(), kRecordSize, like.Width, like.Height, kMaskBits);
    isInitialised_ = status == STATUS_OK;
    return isInitialised_ ? VX_AllocateBitmap(Get(), BITMAP_ALLOCATE_PIXELS) : status;
  }

  void Release() {
    if (isInitialised_) VX_FreeBitmap(Get());
    isInitialised_ = false;
    record_.Release();
  }

  [[nodiscard]] _BITMAPHANDLE* Get() const { return record_.Get(); }

 private:
  Buffer<_BITMAPHANDLE> record_;
  bool isInitialised_ = false;
};

void SetMaskPalette(_BITMAPHANDLE* mask) {
  RGBQUAD palette[kMaskColours]{};
  VX_GetFixedPalette(palette, kMaskBits);
  VX_SetBitmapNewPalette(mask, palette, kMaskColours);
}

/// Fills the mask's rows in stored order, bits as they are. A missing row is never tolerated.
int ReadMaskRows(_BITMAPHANDLE* mask, ReadBuffer& input, uint8_t* row, int fileStride) {
  for (int k = 0; k < mask->Height; ++k) {
    if (ReadBuffered(input, row, fileStride) < fileStride) return STATUS_READ_ERROR;
    VX_PutBitmapRow(mask, row, k, static_cast<uint32_t>(mask->BytesPerLine));
  }
  return STATUS_OK;
}

}  // namespace

int ReadIconMask(_BITMAPHANDLE& target, ReadBuffer& input) {
  MaskBitmap mask;
  if (const int status = mask.Make(target); status != STATUS_OK) return status;

  const uint32_t fileStride = RowSize(mask.Get()->BitsPerPixel, mask.Get()->Width);
  const uint32_t rowSize = std::max(fileStride, static_cast<uint32_t>(mask.Get()->BytesPerLine));
  Buffer row(rowSize);
  if (!row) return STATUS_NO_MEMORY;
  std::fill_n(row.Get(), rowSize, uint8_t{0});  // the bitmap's rows may be longer than the file's

  SetMaskPalette(mask.Get());
  if (VX_IntAccessBitmap(mask.Get(), BITMAP_ACCESS_ROWS) != STATUS_OK) return STATUS_NO_MEMORY;

  const int read = ReadMaskRows(mask.Get(), input, row.Get(), static_cast<int>(fileStride));
  const int released = VX_IntReleaseBitmap(mask.Get(), BITMAP_RELEASE_ROWS, read);
  if (read != STATUS_OK) return released;

  const int status = released == STATUS_OK ? VX_SetBitmapRgnFromMask(&target, REGION_OPTION_NONE, mask.Get(),
                                                                     REGION_COMBINE_SET)
                                           : released;
  mask.Release();  // before its row buffer, once all rows are in
  return status;
}

}  // namespace bmp
